#pragma once

#include <cerrno>
#include <system_error>

#include <sys/wait.h>
#include <unistd.h>

// Runs `work` in a child process, with its result as the exit code. Throws if the process cannot be
// created, so that the returned id is always that of one process: kill(-1) would kill all
// processes.
template <typename Work> pid_t startProcess(Work work) {
  const pid_t child = fork();
  if (child < 0)
    throw std::system_error(errno, std::generic_category(), "cannot create a process");
  if (child == 0)
    _exit(work());
  return child;
}

// Returns the exit code, or 128 plus the signal that ended the process.
inline int waitFor(pid_t child) {
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

template <typename Work> int inOtherProcess(Work work) {
  return waitFor(startProcess(work));
}
