// The adaptor's calls to the system, which the linker redirects, and to the bus.

#include "sync_adaptor.h"

#include "QCopChannel.h"
#include "ulo/export.h"

#include <cerrno>
#include <cstdarg>
#include <new>
#include <utility>

Platform* platform = nullptr;

namespace {

// Called before each file is opened.
bool openFails(int flags) {
  if (platform == nullptr || flags != O_RDONLY)
    return false;
  if (platform->beforeFileIsReopened)
    std::exchange(platform->beforeFileIsReopened, {})();
  return platform->openForReadingFails;
}

}  // namespace

extern "C" {
// Programs with large files on 32-bit systems call the names with 64.
#define ULO_MKSTEMP(function)                                                                      \
  int __real_##function(char* name);                                                               \
  ULO_EXPORT int __wrap_##function(char* name);                                                    \
  int __wrap_##function(char* name) {                                                              \
    return platform != nullptr && platform->mkstempFails ? -1 : __real_##function(name);           \
  }
ULO_MKSTEMP(mkstemp)
ULO_MKSTEMP(mkstemp64)
#undef ULO_MKSTEMP

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

#define ULO_OPEN(function)                                                                         \
  int __real_##function(const char* name, int flags, mode_t mode);                                 \
  ULO_EXPORT int __wrap_##function(const char* name, int flags, ...);                              \
  int __wrap_##function(const char* name, int flags, ...) {                                        \
    va_list more;                                                                                  \
    va_start(more, flags);                                                                         \
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(more, mode_t) : 0;                         \
    va_end(more);                                                                                  \
    return openFails(flags) ? -1 : __real_##function(name, flags, mode);                           \
  }
ULO_OPEN(open)
ULO_OPEN(open64)
#undef ULO_OPEN

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
  if (platform->busLacksMemory)
    throw std::bad_alloc();
  platform->sent.push_back(channel.toStdString() + ' ' + message.toStdString() +
                           (data.isEmpty() ? "" : " with data"));
  return true;
}
