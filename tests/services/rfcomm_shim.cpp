// Preloaded into obexd on machines without a radio. Redirects its RFCOMM connections, to any device
// and channel, to the local socket that $ULO_TEST_RFCOMM names, and makes local sockets look like
// RFCOMM sockets. Reports the user of the tests as logged in on a seat, because new versions of
// obexd serve no other user.

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <sys/socket.h>
#include <sys/un.h>

#define EXPORTED extern "C" __attribute__((visibility("default")))

namespace {

// From the kernel's Bluetooth interface.
constexpr int rfcommLevel = 18;
constexpr int bluetoothLevel = 274;
struct RfcommAddress {
  sa_family_t family;
  std::uint8_t device[6];
  std::uint8_t channel;
};

template <typename Function> Function next(const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

bool isBluetooth(int level) {
  return level == rfcommLevel || level == bluetoothLevel;
}

// A caller whose buffer is the size of an RFCOMM address expects an RFCOMM socket.
int nameSocket(const char* function, int fd, sockaddr* address, socklen_t* size) {
  if (*size != sizeof(RfcommAddress))
    return next<int (*)(int, sockaddr*, socklen_t*)>(function)(fd, address, size);
  const RfcommAddress somewhere{AF_BLUETOOTH, {1, 0, 0, 0, 0, 0}, 9};
  std::memcpy(address, &somewhere, sizeof somewhere);
  return 0;
}

}  // namespace

EXPORTED int socket(int domain, int type, int protocol) noexcept {
  const auto make = next<int (*)(int, int, int)>("socket");
  return domain == AF_BLUETOOTH ? make(AF_UNIX, type, 0) : make(domain, type, protocol);
}

EXPORTED int bind(int fd, const sockaddr* address, socklen_t size) noexcept {
  if (address->sa_family == AF_BLUETOOTH)
    return 0;
  return next<int (*)(int, const sockaddr*, socklen_t)>("bind")(fd, address, size);
}

EXPORTED int connect(int fd, const sockaddr* address, socklen_t size) {
  const auto go = next<int (*)(int, const sockaddr*, socklen_t)>("connect");
  const char* there = std::getenv("ULO_TEST_RFCOMM");
  if (address->sa_family != AF_BLUETOOTH || there == nullptr)
    return go(fd, address, size);
  sockaddr_un local{};
  local.sun_family = AF_UNIX;
  std::strncpy(local.sun_path, there, sizeof local.sun_path - 1);
  return go(fd, reinterpret_cast<const sockaddr*>(&local), sizeof local);
}

EXPORTED int getsockopt(int fd, int level, int option, void* value, socklen_t* size) noexcept {
  if (isBluetooth(level)) {
    std::memset(value, 0, *size);
    return 0;
  }
  const int result =
      next<int (*)(int, int, int, void*, socklen_t*)>("getsockopt")(fd, level, option, value, size);
  if (result == 0 && level == SOL_SOCKET && option == SO_DOMAIN && *size == sizeof(int)) {
    const int bluetooth = AF_BLUETOOTH;
    std::memcpy(value, &bluetooth, sizeof bluetooth);
  }
  return result;
}

EXPORTED int setsockopt(int fd, int level, int option, const void* value, socklen_t size) noexcept {
  if (isBluetooth(level))
    return 0;
  return next<int (*)(int, int, int, const void*, socklen_t)>("setsockopt")(fd, level, option,
                                                                            value, size);
}

EXPORTED int getsockname(int fd, sockaddr* address, socklen_t* size) noexcept {
  return nameSocket("getsockname", fd, address, size);
}

EXPORTED int getpeername(int fd, sockaddr* address, socklen_t* size) noexcept {
  return nameSocket("getpeername", fd, address, size);
}

EXPORTED int sd_uid_get_state(uid_t /*user*/, char** state) {
  *state = strdup("active");
  return 0;
}

EXPORTED int sd_uid_get_seats(uid_t /*user*/, int /*require_active*/, char*** seats) {
  if (seats != nullptr) {
    *seats = static_cast<char**>(std::calloc(2, sizeof(char*)));
    (*seats)[0] = strdup("seat0");
  }
  return 1;
}
