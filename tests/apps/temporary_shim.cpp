// Preloaded into a process: makes operations on the temporary files of an exchange fail, as
// $ULO_TEST_TEMPORARY says: "full" (writing fails), "unwritable" (creating fails), "foreign"
// (removing fails, as for files of another user).

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>

#define EXPORTED extern "C" __attribute__((visibility("default")))

namespace {

bool isExchanged(std::string_view name) {
  return name.starts_with("/tmp/vtodo") || (name.starts_with("/tmp/") && name.ends_with(".vtodo"));
}

bool happens(const char* what, std::string_view name) {
  const char* wanted = std::getenv("ULO_TEST_TEMPORARY");
  return wanted != nullptr && std::strcmp(wanted, what) == 0 && isExchanged(name);
}

bool isFull(int fd) {
  char link[64];
  char name[256];
  std::snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
  const ssize_t size = readlink(link, name, sizeof name);
  return size > 0 && happens("full", {name, static_cast<std::size_t>(size)});
}

template <typename Function> Function next(const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

int openFile(const char* function, const char* name, int flags, mode_t mode) {
  if ((flags & O_CREAT) != 0 && happens("unwritable", name)) {
    errno = EACCES;
    return -1;
  }
  return next<int (*)(const char*, int, ...)>(function)(name, flags, mode);
}

int makeFile(const char* function, char* name) {
  if (happens("unwritable", name)) {
    errno = EACCES;
    return -1;
  }
  return next<int (*)(char*)>(function)(name);
}

mode_t modeOf(int flags, va_list more) {
  return (flags & O_CREAT) != 0 ? va_arg(more, mode_t) : 0;
}

}  // namespace

EXPORTED int open(const char* name, int flags, ...) {
  va_list more;
  va_start(more, flags);
  const mode_t mode = modeOf(flags, more);
  va_end(more);
  return openFile("open", name, flags, mode);
}

EXPORTED int open64(const char* name, int flags, ...) {
  va_list more;
  va_start(more, flags);
  const mode_t mode = modeOf(flags, more);
  va_end(more);
  return openFile("open64", name, flags, mode);
}

EXPORTED int mkstemp(char* name) {
  return makeFile("mkstemp", name);
}

EXPORTED int mkstemp64(char* name) {
  return makeFile("mkstemp64", name);
}

EXPORTED ssize_t write(int fd, const void* bytes, std::size_t size) {
  if (isFull(fd)) {
    errno = ENOSPC;
    return -1;
  }
  return next<ssize_t (*)(int, const void*, std::size_t)>("write")(fd, bytes, size);
}

EXPORTED std::size_t fwrite(const void* bytes, std::size_t size, std::size_t count, FILE* stream) {
  if (isFull(fileno(stream))) {
    errno = ENOSPC;
    return 0;
  }
  return next<std::size_t (*)(const void*, std::size_t, std::size_t, FILE*)>("fwrite")(
      bytes, size, count, stream);
}

EXPORTED int unlink(const char* name) {
  if (happens("foreign", name)) {
    errno = EPERM;
    return -1;
  }
  return next<int (*)(const char*)>("unlink")(name);
}
