// The adaptor's calls to the system, which the linker redirects, and to the bus.

#include "sync_adaptor.h"

#include "QCopChannel.h"
#include "ulo/export.h"

#include <cerrno>
#include <cstdarg>
#include <utility>

Platform* platform = nullptr;

extern "C" {
int __real_mkstemp(char* name);
ULO_EXPORT int __wrap_mkstemp(char* name);
int __wrap_mkstemp(char* name) {
  return platform != nullptr && platform->mkstempFails ? -1 : __real_mkstemp(name);
}

int __real_unlink(const char* name);
ULO_EXPORT int __wrap_unlink(const char* name);
int __wrap_unlink(const char* name) {
  if (platform == nullptr || !platform->unlinkFails)
    return __real_unlink(name);
  errno = EPERM;
  return -1;
}

void* __real_calloc(std::size_t count, std::size_t size);
ULO_EXPORT void* __wrap_calloc(std::size_t count, std::size_t size);
void* __wrap_calloc(std::size_t count, std::size_t size) {
  return platform != nullptr && platform->callocFails ? nullptr : __real_calloc(count, size);
}

int __real_open(const char* name, int flags, mode_t mode);
ULO_EXPORT int __wrap_open(const char* name, int flags, ...);
int __wrap_open(const char* name, int flags, ...) {
  va_list more;
  va_start(more, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(more, mode_t) : 0;
  va_end(more);
  if (platform != nullptr && platform->beforeFileIsReopened && flags == O_RDONLY)
    std::exchange(platform->beforeFileIsReopened, {})();
  return platform != nullptr && platform->openForReadingFails && flags == O_RDONLY
             ? -1
             : __real_open(name, flags, mode);
}

uid_t __real_geteuid();
ULO_EXPORT uid_t __wrap_geteuid();
uid_t __wrap_geteuid() {
  return __real_geteuid() + (platform != nullptr && platform->filesAreOfAnotherUser ? 1 : 0);
}

void* __real_dlopen(const char* name, int flags);
ULO_EXPORT void* __wrap_dlopen(const char* name, int flags);
void* __wrap_dlopen(const char* name, int flags) {
  if (platform != nullptr && platform->beforeParserIsLoaded)
    std::exchange(platform->beforeParserIsLoaded, {})();
  return __real_dlopen(name, flags);
}
}

// Takes the place of the platform library's function.
bool QCopChannel::send(const QCString& channel, const QCString& message, const QByteArray& data) {
  platform->sent.push_back(channel.toStdString() + ' ' + message.toStdString() +
                           (data.isEmpty() ? "" : " with data"));
  return true;
}
