// Preloaded into a process: writing to files whose names begin with $ULO_TEST_FULL_OUTPUT fails as
// on a full disk, at the call that $ULO_TEST_FULL_AT names: "write" or "fsync".

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <string>
#include <unistd.h>

namespace {

bool fails(int descriptor, const char* call) {
  const char* prefix = std::getenv("ULO_TEST_FULL_OUTPUT");
  const char* at = std::getenv("ULO_TEST_FULL_AT");
  if (prefix == nullptr || at == nullptr || std::strcmp(at, call) != 0)
    return false;
  char name[PATH_MAX] = {};
  const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
  return readlink(link.c_str(), name, sizeof name - 1) > 0 &&
         std::strncmp(name, prefix, std::strlen(prefix)) == 0;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) ssize_t write(int descriptor, const void* bytes,
                                                                size_t size) {
  using Write = ssize_t (*)(int, const void*, size_t);
  static const Write next = reinterpret_cast<Write>(dlsym(RTLD_NEXT, "write"));
  if (!fails(descriptor, "write"))
    return next(descriptor, bytes, size);
  errno = ENOSPC;
  return -1;
}

extern "C" __attribute__((visibility("default"))) int fsync(int descriptor) {
  using Sync = int (*)(int);
  static const Sync next = reinterpret_cast<Sync>(dlsym(RTLD_NEXT, "fsync"));
  if (!fails(descriptor, "fsync"))
    return next(descriptor);
  errno = ENOSPC;
  return -1;
}
