// Linked into tests that run in qemu, and preloaded into programs that they start. Version 7.2 of
// qemu knows descriptors of processes (P_PIDFD) in waitid but not in clone. Qt asks only waitid and
// then starts no process at all. If waitid does not know them either, Qt uses fork.

#include <cerrno>
#include <cstdarg>
#include <dlfcn.h>
#include <sys/syscall.h>
#include <sys/wait.h>

extern "C" __attribute__((visibility("default"))) long syscall(long number, ...) {
  using Syscall = long (*)(long, ...);
  static const auto next = reinterpret_cast<Syscall>(dlsym(RTLD_NEXT, "syscall"));
  long arguments[6];
  va_list list;
  va_start(list, number);
  for (long& argument : arguments)
    argument = va_arg(list, long);
  va_end(list);
  if (number == SYS_waitid && arguments[0] == P_PIDFD) {
    errno = EINVAL;
    return -1;
  }
  return next(number, arguments[0], arguments[1], arguments[2], arguments[3], arguments[4],
              arguments[5]);
}
