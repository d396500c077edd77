// Preloaded into a process under attack. Numbers the calls that change files below the directory
// $ULO_COMPANY_WATCH in the order in which the process makes them, and interferes with them as set
// in the environment:
//
//   ULO_COMPANY_KILL_BEFORE=N, ULO_COMPANY_KILL_AFTER=N
//       SIGKILL before or after call N (the first one is 1).
//   ULO_COMPANY_FAIL=N and ULO_COMPANY_ERROR=E
//       call N fails with error number E; E "short" makes a write store half of its bytes instead.
//       With ULO_COMPANY_FAIL_ON=1 each later call of the same kind fails too.
//   ULO_COMPANY_ROOM=BYTES and ULO_COMPANY_ERROR=E
//       files may grow by this many bytes in total, counted in whole blocks; then writes fail with
//       E.
//   ULO_COMPANY_FAIL_ALLOCATION=N
//       allocation N fails, counted from the first use of the directory. Allocations made by the
//       vObject library, libical and ICU don't count. Not available under the address sanitizer.
//   ULO_COMPANY_GATE=FD
//       the first use of the directory writes a byte to FD and blocks until FD reaches its end.
//   ULO_COMPANY_JITTER=SEED
//       locks and changing calls are delayed by up to a millisecond.
//   ULO_COMPANY_TRACE=FILE
//       at exit, the process writes to FILE one letter for the kind of each counted call, a line
//       feed, and the number of allocations.

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dlfcn.h>
#include <fcntl.h>
#include <string_view>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#define EXPORTED extern "C" __attribute__((visibility("default")))

namespace {

enum class Kind : char {
  open = 'o',
  write = 'w',
  truncate = 't',
  allocate = 'a',
  sync = 's',
  name = 'n',
  remove = 'u',
  directory = 'd',
};

constexpr std::int64_t blockSize = 4096;
constexpr int shortWrite = -1;  // in place of an error number

std::int64_t numberIn(const char* variable, std::int64_t missing) {
  const char* text = std::getenv(variable);
  return text == nullptr ? missing : std::atoll(text);
}

struct Orders {
  const char* watch = std::getenv("ULO_COMPANY_WATCH");
  std::int64_t killBefore = numberIn("ULO_COMPANY_KILL_BEFORE", 0);
  std::int64_t killAfter = numberIn("ULO_COMPANY_KILL_AFTER", 0);
  std::int64_t fail = numberIn("ULO_COMPANY_FAIL", 0);
  bool failOn = numberIn("ULO_COMPANY_FAIL_ON", 0) != 0;
  std::int64_t room = numberIn("ULO_COMPANY_ROOM", -1);
  std::int64_t failAllocation = numberIn("ULO_COMPANY_FAIL_ALLOCATION", 0);
  int gate = static_cast<int>(numberIn("ULO_COMPANY_GATE", -1));
  std::int64_t jitter = numberIn("ULO_COMPANY_JITTER", -1);
  const char* trace = std::getenv("ULO_COMPANY_TRACE");
  int error = errorNumber();

private:
  static int errorNumber() {
    const char* text = std::getenv("ULO_COMPANY_ERROR");
    if (text == nullptr)
      return ENOSPC;
    return std::strcmp(text, "short") == 0 ? shortWrite : std::atoi(text);
  }
};

const Orders& orders() {
  static const Orders read;
  return read;
}

constexpr std::size_t longestTrace = 65536;
char trace[longestTrace];
std::atomic<std::int64_t> calls = 0;
std::atomic<std::int64_t> allocations = 0;
std::atomic<std::int64_t> roomUsed = 0;
std::atomic<char> failedKind = 0;
std::atomic<bool> isInUse = false;

template <typename Function> Function next(const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

[[noreturn]] void killProcess() {
  syscall(SYS_kill, getpid(), SIGKILL);
  for (;;)
    pause();
}

bool isWatched(std::string_view path) {
  const char* watch = orders().watch;
  if (watch == nullptr || !path.starts_with(watch))
    return false;
  const std::size_t length = std::strlen(watch);
  return path.size() == length || path[length] == '/';
}

bool isWatched(const char* path) {
  return path != nullptr && isWatched(std::string_view(path));
}

bool isWatched(int fd) {
  if (orders().watch == nullptr)
    return false;
  char link[64];
  char path[4096];
  std::snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
  const ssize_t size = syscall(SYS_readlink, link, path, sizeof path);
  return size > 0 && isWatched(std::string_view(path, static_cast<std::size_t>(size)));
}

void delay() {
  if (orders().jitter < 0)
    return;
  static std::atomic<std::uint64_t> state =
      static_cast<std::uint64_t>(orders().jitter) * 2654435761U + 88172645463325252U;
  std::uint64_t x = state;
  x ^= x << 13U;
  x ^= x >> 7U;
  x ^= x << 17U;
  state = x;
  constexpr long longestDelay = 1'000'000;  // nanoseconds
  const timespec time{0, static_cast<long>(x % longestDelay)};
  nanosleep(&time, nullptr);
}

// Called at each use of the directory. The first one starts counting allocations and waits at the
// gate.
void use() {
  if (isInUse.exchange(true))
    return;
  if (orders().gate < 0)
    return;
  char byte = 0;
  syscall(SYS_write, orders().gate, &byte, 1);
  while (syscall(SYS_read, orders().gate, &byte, 1) < 0 && errno == EINTR)
    continue;
}

// A call that changes a file.
class Call {
public:
  explicit Call(Kind kind) : number_(++calls) {
    use();
    delay();
    if (static_cast<std::size_t>(number_) <= longestTrace)
      trace[number_ - 1] = static_cast<char>(kind);
    if (number_ == orders().killBefore)
      killProcess();
    const bool isChosen = number_ == orders().fail;
    if (isChosen)
      failedKind = static_cast<char>(kind);
    if (isChosen || (orders().failOn && failedKind == static_cast<char>(kind)))
      error_ = orders().error;
    if (error_ == shortWrite && kind != Kind::write)
      error_ = 0;
  }
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;
  ~Call() {
    if (number_ == orders().killAfter)
      killProcess();
  }
  [[nodiscard]] bool isShort() const { return error_ == shortWrite; }
  [[nodiscard]] bool fails() const { return error_ > 0; }

  template <typename Result, typename Work> Result make(Result failed, Work work) {
    if (!fails())
      return work();
    errno = error_;
    return failed;
  }

private:
  std::int64_t number_;
  int error_ = 0;
};

std::int64_t blocks(std::int64_t bytes) {
  return (bytes + blockSize - 1) / blockSize;
}

std::int64_t sizeOf(int fd) {
  struct stat64 status {};
  return fstat64(fd, &status) == 0 ? status.st_size : 0;
}

// Returns how many of `count` bytes at `offset` still fit, and reserves the space for them.
std::size_t bytesWithRoom(int fd, std::int64_t offset, std::size_t count) {
  if (orders().room < 0)
    return count;
  const std::int64_t size = sizeOf(fd);
  const std::int64_t from = offset > size ? offset : size;  // holes take no space
  const std::int64_t end = offset + static_cast<std::int64_t>(count);
  if (end <= from)
    return count;
  const std::int64_t left = orders().room - roomUsed;
  const std::int64_t ownedBlocks = blocks(size);
  std::int64_t firstNew = from / blockSize;
  if (firstNew < ownedBlocks)
    firstNew = ownedBlocks;
  const std::int64_t wanted = blocks(end) - firstNew;
  if (wanted <= 0)
    return count;
  const std::int64_t granted = wanted * blockSize <= left ? wanted : left / blockSize;
  roomUsed += granted * blockSize;
  if (granted == wanted)
    return count;
  const std::int64_t reached = (firstNew + granted) * blockSize;
  return reached > offset ? static_cast<std::size_t>(reached - offset) : 0;
}

void giveBack(std::int64_t sizeBefore, std::int64_t sizeAfter) {
  if (orders().room >= 0)
    roomUsed -= (blocks(sizeBefore) - blocks(sizeAfter)) * blockSize;
}

// Performs a write of `count` bytes at `offset`. `work` writes the number of bytes passed to it.
template <typename Work>
ssize_t writeSome(int fd, std::int64_t offset, std::size_t count, const Work& work) {
  Call call(Kind::write);
  return call.make<ssize_t>(-1, [&]() -> ssize_t {
    std::size_t most = call.isShort() && count > 1 ? count / 2 : count;
    most = bytesWithRoom(fd, offset, most);
    if (most == 0 && count > 0) {
      errno = orders().error > 0 ? orders().error : ENOSPC;
      return -1;
    }
    return work(most);
  });
}

std::int64_t position(int fd) {
  const int flags = static_cast<int>(syscall(SYS_fcntl, fd, F_GETFL));
  return (flags & O_APPEND) != 0 ? sizeOf(fd) : lseek64(fd, 0, SEEK_CUR);
}

template <typename Work> int openWatched(const char* path, int flags, const Work& work) {
  if (!isWatched(path))
    return work();
  use();
  if ((flags & O_CREAT) == 0)
    return work();
  return Call(Kind::open).make<int>(-1, work);
}

template <typename Work> int changeName(Kind kind, const char* path, const Work& work) {
  if (!isWatched(path))
    return work();
  return Call(kind).make<int>(-1, work);
}

template <typename Work> int removeName(const char* path, const Work& work) {
  if (!isWatched(path))
    return work();
  return Call(Kind::remove).make<int>(-1, [&] {
    struct stat64 status {};
    const bool isLast =
        stat64(path, &status) == 0 && S_ISREG(status.st_mode) && status.st_nlink == 1;
    const int result = work();
    if (result == 0 && isLast)
      giveBack(status.st_size, 0);
    return result;
  });
}

template <typename Work> int changeFile(Kind kind, int fd, const Work& work) {
  if (!isWatched(fd))
    return work();
  return Call(kind).make<int>(-1, [&] {
    const std::int64_t before = sizeOf(fd);
    const int result = work();
    // A file that grows without being written has no blocks yet.
    if (result == 0 && kind == Kind::truncate && sizeOf(fd) < before)
      giveBack(before, sizeOf(fd));
    return result;
  });
}

mode_t modeOf(int flags, va_list more) {
  return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(more, mode_t) : 0;
}

void writeTrace() {
  if (orders().trace == nullptr)
    return;
  const auto fd = static_cast<int>(
      syscall(SYS_open, orders().trace, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  if (fd < 0)
    return;
  char numbers[64];
  const int length =
      std::snprintf(numbers, sizeof numbers, "\n%lld\n", static_cast<long long>(allocations));
  const std::int64_t traced = calls < std::int64_t{longestTrace} ? calls.load() : longestTrace;
  syscall(SYS_write, fd, trace, static_cast<std::size_t>(traced));
  syscall(SYS_write, fd, numbers, length);
  syscall(SYS_close, fd);
}

struct AtEnd {
  ~AtEnd() { writeTrace(); }
};
const AtEnd atEnd;

}  // namespace

#define ULO_OPEN(function)                                                                         \
  EXPORTED int function(const char* path, int flags, ...) {                                        \
    va_list more;                                                                                  \
    va_start(more, flags);                                                                         \
    const mode_t mode = modeOf(flags, more);                                                       \
    va_end(more);                                                                                  \
    return openWatched(path, flags, [&] {                                                          \
      return next<int (*)(const char*, int, ...)>(#function)(path, flags, mode);                   \
    });                                                                                            \
  }
ULO_OPEN(open)
ULO_OPEN(open64)
#undef ULO_OPEN

#define ULO_OPENAT(function)                                                                       \
  EXPORTED int function(int directory, const char* path, int flags, ...) {                         \
    va_list more;                                                                                  \
    va_start(more, flags);                                                                         \
    const mode_t mode = modeOf(flags, more);                                                       \
    va_end(more);                                                                                  \
    return openWatched(path, flags, [&] {                                                          \
      return next<int (*)(int, const char*, int, ...)>(#function)(directory, path, flags, mode);   \
    });                                                                                            \
  }
ULO_OPENAT(openat)
ULO_OPENAT(openat64)
#undef ULO_OPENAT

EXPORTED ssize_t write(int fd, const void* bytes, std::size_t count) {
  const auto work = [&](std::size_t most) {
    return next<ssize_t (*)(int, const void*, std::size_t)>("write")(fd, bytes, most);
  };
  return isWatched(fd) ? writeSome(fd, position(fd), count, work) : work(count);
}

#define ULO_PWRITE(function, Offset)                                                               \
  EXPORTED ssize_t function(int fd, const void* bytes, std::size_t count, Offset offset) {         \
    const auto work = [&](std::size_t most) {                                                      \
      return next<ssize_t (*)(int, const void*, std::size_t, Offset)>(#function)(fd, bytes, most,  \
                                                                                 offset);          \
    };                                                                                             \
    return isWatched(fd) ? writeSome(fd, offset, count, work) : work(count);                       \
  }
ULO_PWRITE(pwrite, off_t)
ULO_PWRITE(pwrite64, off64_t)
#undef ULO_PWRITE

EXPORTED ssize_t writev(int fd, const iovec* parts, int count) {
  const auto all = next<ssize_t (*)(int, const iovec*, int)>("writev");
  if (!isWatched(fd) || count == 0)
    return all(fd, parts, count);
  // Writes only the first part, as a kernel may do.
  return writeSome(fd, position(fd), parts[0].iov_len, [&](std::size_t most) {
    const iovec first{parts[0].iov_base, most};
    return all(fd, &first, 1);
  });
}

#define ULO_SENDFILE(function, Offset)                                                             \
  EXPORTED ssize_t function(int out, int in, Offset* offset, std::size_t count) noexcept {         \
    const auto work = [&](std::size_t most) {                                                      \
      return next<ssize_t (*)(int, int, Offset*, std::size_t)>(#function)(out, in, offset, most);  \
    };                                                                                             \
    return isWatched(out) ? writeSome(out, position(out), count, work) : work(count);              \
  }
ULO_SENDFILE(sendfile, off_t)
ULO_SENDFILE(sendfile64, off64_t)
#undef ULO_SENDFILE

#define ULO_TRUNCATE(function, Offset)                                                             \
  EXPORTED int function(int fd, Offset size) noexcept {                                            \
    return changeFile(Kind::truncate, fd,                                                          \
                      [&] { return next<int (*)(int, Offset)>(#function)(fd, size); });            \
  }
ULO_TRUNCATE(ftruncate, off_t)
ULO_TRUNCATE(ftruncate64, off64_t)
#undef ULO_TRUNCATE

// Reserved blocks count as written.
#define ULO_ALLOCATE(function, parameters, arguments, failed)                                      \
  EXPORTED int function parameters {                                                               \
    const auto work = [&] { return next<int(*) parameters>(#function) arguments; };                \
    if (!isWatched(fd))                                                                            \
      return work();                                                                               \
    Call call(Kind::allocate);                                                                     \
    const auto wanted = static_cast<std::size_t>(size);                                            \
    if (call.fails() || bytesWithRoom(fd, offset, wanted) < wanted) {                              \
      errno = orders().error > 0 ? orders().error : ENOSPC;                                        \
      return failed;                                                                               \
    }                                                                                              \
    return work();                                                                                 \
  }
ULO_ALLOCATE(fallocate, (int fd, int mode, off_t offset, off_t size), (fd, mode, offset, size), -1)
ULO_ALLOCATE(fallocate64, (int fd, int mode, off64_t offset, off64_t size),
             (fd, mode, offset, size), -1)
ULO_ALLOCATE(posix_fallocate, (int fd, off_t offset, off_t size), (fd, offset, size), errno)
ULO_ALLOCATE(posix_fallocate64, (int fd, off64_t offset, off64_t size), (fd, offset, size), errno)
#undef ULO_ALLOCATE

EXPORTED int fsync(int fd) {
  return changeFile(Kind::sync, fd, [&] { return next<int (*)(int)>("fsync")(fd); });
}

EXPORTED int fdatasync(int fd) {
  return changeFile(Kind::sync, fd, [&] { return next<int (*)(int)>("fdatasync")(fd); });
}

EXPORTED int rename(const char* from, const char* to) noexcept {
  return changeName(Kind::name, to,
                    [&] { return next<int (*)(const char*, const char*)>("rename")(from, to); });
}

EXPORTED int renameat(int fromDirectory, const char* from, int toDirectory,
                      const char* to) noexcept {
  return changeName(Kind::name, to, [&] {
    return next<int (*)(int, const char*, int, const char*)>("renameat")(fromDirectory, from,
                                                                         toDirectory, to);
  });
}

EXPORTED int renameat2(int fromDirectory, const char* from, int toDirectory, const char* to,
                       unsigned int flags) noexcept {
  return changeName(Kind::name, to, [&] {
    return next<int (*)(int, const char*, int, const char*, unsigned int)>("renameat2")(
        fromDirectory, from, toDirectory, to, flags);
  });
}

EXPORTED int link(const char* from, const char* to) noexcept {
  return changeName(Kind::name, to,
                    [&] { return next<int (*)(const char*, const char*)>("link")(from, to); });
}

EXPORTED int linkat(int fromDirectory, const char* from, int toDirectory, const char* to,
                    int flags) noexcept {
  return changeName(Kind::name, to, [&] {
    return next<int (*)(int, const char*, int, const char*, int)>("linkat")(fromDirectory, from,
                                                                            toDirectory, to, flags);
  });
}

EXPORTED int unlink(const char* path) noexcept {
  return removeName(path, [&] { return next<int (*)(const char*)>("unlink")(path); });
}

EXPORTED int unlinkat(int directory, const char* path, int flags) noexcept {
  return removeName(path, [&] {
    return next<int (*)(int, const char*, int)>("unlinkat")(directory, path, flags);
  });
}

EXPORTED int remove(const char* path) noexcept {
  return removeName(path, [&] { return next<int (*)(const char*)>("remove")(path); });
}

EXPORTED int mkdir(const char* path, mode_t mode) noexcept {
  return changeName(Kind::directory, path,
                    [&] { return next<int (*)(const char*, mode_t)>("mkdir")(path, mode); });
}

EXPORTED int mknod(const char* path, mode_t mode, dev_t device) noexcept {
  return changeName(Kind::open, path, [&] {
    return next<int (*)(const char*, mode_t, dev_t)>("mknod")(path, mode, device);
  });
}

// Delaying locks changes the order in which programs get them.
#define ULO_FCNTL(function)                                                                        \
  EXPORTED int function(int fd, int command, ...) {                                                \
    va_list more;                                                                                  \
    va_start(more, command);                                                                       \
    void* argument = va_arg(more, void*);                                                          \
    va_end(more);                                                                                  \
    if ((command == F_SETLK || command == F_OFD_SETLK) && orders().jitter >= 0 && isWatched(fd))   \
      delay();                                                                                     \
    return next<int (*)(int, int, ...)>(#function)(fd, command, argument);                         \
  }
ULO_FCNTL(fcntl)
ULO_FCNTL(fcntl64)
// The name on 32-bit systems of programs whose times have 64 bits.
ULO_FCNTL(__fcntl_time64)
#undef ULO_FCNTL

#ifndef __SANITIZE_ADDRESS__

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
}

namespace {

// The vObject library, libical and libical's ICU do not check all of their allocations.
bool isExempt(const void* caller) {
  Dl_info info{};
  return dladdr(caller, &info) != 0 && info.dli_fname != nullptr &&
         (std::strstr(info.dli_fname, "/libical") != nullptr ||
          std::strstr(info.dli_fname, "/libicu") != nullptr);
}

bool allocationFails(const void* caller) {
  if (!isInUse || orders().watch == nullptr ||
      (orders().failAllocation == 0 && orders().trace == nullptr) || isExempt(caller))
    return false;
  if (++allocations != orders().failAllocation)
    return false;
  errno = ENOMEM;
  return true;
}

}  // namespace

EXPORTED void* malloc(std::size_t size) {
  return allocationFails(__builtin_return_address(0)) ? nullptr : __libc_malloc(size);
}

EXPORTED void* calloc(std::size_t count, std::size_t size) {
  return allocationFails(__builtin_return_address(0)) ? nullptr : __libc_calloc(count, size);
}

EXPORTED void* realloc(void* memory, std::size_t size) {
  return allocationFails(__builtin_return_address(0)) ? nullptr : __libc_realloc(memory, size);
}

#endif
