#pragma once

#include <fcntl.h>
#include <unistd.h>

namespace ulo {

// Occupies the standard descriptors that the caller of the program has closed: a file that the
// program opens would otherwise get the number of one, and receive its output. Using them still
// fails. Called before the program opens a file.
inline void occupyStandardDescriptors() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    const bool isInput = descriptor == STDIN_FILENO;
    if (fcntl(descriptor, F_GETFD) < 0)
      static_cast<void>(open("/dev/null", isInput ? O_WRONLY : O_RDONLY));
  }
}

}  // namespace ulo
