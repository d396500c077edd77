#include "app_lock.h"

#include "file_lock.h"
#include "lock_functions.h"
#include "module_log.h"
#include "ulo/descriptor.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ulo {

using std::chrono::milliseconds;

struct AppLock::Record {
  std::string hash;
  int failures = 0;  // since the last right code
  LockTime last;     // when the last of them was entered
};

namespace {

constexpr std::size_t largestFile = 4096;  // a valid one has about 250 bytes
constexpr double largestTime = 1e15;       // in milliseconds; a JSON number holds it exactly
constexpr int mostFailures = 1'000'000;
constexpr char noLibrary[] = "the library for codes can't be used";

// How long to wait for another process that locks the directory.
constexpr milliseconds patience{2000};

void logFailure(const char* what, const std::string& path, const char* why) {
  ULO_LOG_ERROR("The application lock %s can't be %s: %s", path.c_str(), what, why);
}

// Returns the directory, locked against other processes, or a closed descriptor, which is logged.
Descriptor lockedDirectory(const std::string& directory) {
  Descriptor opened(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!opened.isOpen() || !lockWithin(opened.get(), patience)) {
    logFailure("changed", directory, std::strerror(errno));
    opened.reset();
  }
  return opened;
}

// Returns the bytes of a regular file of at most largestFile bytes. Otherwise sets `reason` to an
// errno value.
std::optional<QByteArray> fileBytes(const std::string& path, int& reason) {
  const Descriptor file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  struct stat status {};
  if (!file.isOpen() || fstat(file.get(), &status) != 0) {
    reason = errno;
    return {};
  }
  QByteArray bytes(largestFile + 1, '\0');
  const ssize_t count =
      S_ISREG(status.st_mode) ? ::read(file.get(), bytes.data(), largestFile + 1) : -1;
  if (count < 0 || count > static_cast<ssize_t>(largestFile)) {
    reason = EBADMSG;
    return {};
  }
  bytes.truncate(count);
  return bytes;
}

// Returns true for an integer from 0 to `largest`.
bool isCount(const QJsonValue& value, double largest) {
  const double number = value.toDouble(-1);
  return number >= 0 && number <= largest && number == std::floor(number);
}

milliseconds waitAfter(int failures) {
  const int over = failures - AppLock::freeAttempts;
  if (over <= 0)
    return milliseconds(0);
  constexpr int mostDoublings = 20;
  return std::min<milliseconds>(AppLock::longestWait,
                                AppLock::firstWait * (1 << std::min(over - 1, mostDoublings)));
}

}  // namespace

AppLock::State AppLock::read(Record& record) const {
  if (directory_.empty()) {
    logFailure("read", fileName, "there is no data directory");
    return State::damaged;
  }
  int reason = 0;
  const std::optional<QByteArray> bytes = fileBytes(path(), reason);
  if (!bytes && reason == ENOENT)
    return State::open;
  if (!bytes) {
    logFailure("read", path(), reason == EBADMSG ? "it is damaged" : std::strerror(reason));
    return State::damaged;
  }
  const LockFunctions* functions = lockFunctions();
  if (functions == nullptr) {
    logFailure("read", path(), noLibrary);
    return State::damaged;
  }
  const QJsonObject object = QJsonDocument::fromJson(*bytes).object();
  record.hash = object["hash"].toString().toStdString();
  if (!functions->isHash(record.hash.c_str()) || !isCount(object["failures"], mostFailures) ||
      !object["boot"].isString() || !isCount(object["last"], largestTime)) {
    logFailure("read", path(), "it is damaged");
    return State::damaged;
  }
  record.failures = object["failures"].toInt();
  record.last.boot = object["boot"].toString().toStdString();
  record.last.sinceBoot = milliseconds(object["last"].toInteger());
  return State::locked;
}

bool AppLock::write(const Record& record) const {
  const QJsonObject object{{"hash", QString::fromStdString(record.hash)},
                           {"failures", record.failures},
                           {"boot", QString::fromStdString(record.last.boot)},
                           {"last", static_cast<qint64>(record.last.sinceBoot.count())}};
  QSaveFile file(QFile::decodeName(path().c_str()));
  // Flush explicitly: a commit alone treats a buffer that did not fit on the disk as written.
  const bool written = file.open(QIODevice::WriteOnly) &&
                       file.setPermissions(QFile::ReadOwner | QFile::WriteOwner) &&
                       file.write(QJsonDocument(object).toJson()) > 0 && file.flush() &&
                       file.commit();
  if (!written)
    logFailure("written", path(), file.errorString().toUtf8().constData());
  return written;
}

milliseconds AppLock::waitOf(const Record& record) const {
  const LockTime now = clock_();
  // After a restart the last wrong code counts as entered at system start.
  const bool sameRun = now.boot == record.last.boot && now.sinceBoot >= record.last.sinceBoot;
  const milliseconds passed = sameRun ? now.sinceBoot - record.last.sinceBoot : now.sinceBoot;
  return std::max(milliseconds(0), waitAfter(record.failures) - passed);
}

AppLock::State AppLock::state() const {
  Record record;
  return read(record);
}

milliseconds AppLock::wait() const {
  Record record;
  return read(record) == State::locked ? waitOf(record) : milliseconds(0);
}

// Counts the attempt as wrong and sets `hash` to the hash to compare with; otherwise returns the
// result.
std::optional<AppLock::Result> AppLock::beginAttempt(std::string& hash) {
  const Descriptor lock = lockedDirectory(directory_);
  if (!lock.isOpen())
    return Result{Answer::failed, milliseconds(0)};
  Record record;
  const State found = read(record);
  if (found != State::locked)
    return Result{found == State::open ? Answer::right : Answer::failed, milliseconds(0)};
  if (const milliseconds wait = waitOf(record); wait.count() > 0)
    return Result{Answer::tooEarly, wait};
  record.failures = std::min(record.failures + 1, mostFailures);
  record.last = clock_();
  if (!write(record))
    return Result{Answer::failed, milliseconds(0)};
  hash = record.hash;
  return {};
}

milliseconds AppLock::endAttempt(bool right) {
  if (!right)
    return wait();
  const Descriptor lock = lockedDirectory(directory_);
  Record record;
  if (lock.isOpen() && read(record) == State::locked) {
    record.failures = 0;
    // If this fails, earlier wrong codes still count, which is harmless.
    static_cast<void>(write(record));
  }
  return milliseconds(0);
}

AppLock::Result AppLock::check(const LockCode& code) {
  std::string hash;
  if (const std::optional<Result> answer = beginAttempt(hash))
    return *answer;
  // Open, because the lock has been read.
  const bool right = lockFunctions()->matches(hash.c_str(), code.data(), code.size());
  if (!right && errno != EINVAL) {
    logFailure("checked", path(), std::strerror(errno));
    return {Answer::failed, endAttempt(false)};
  }
  return {right ? Answer::right : Answer::wrong, endAttempt(right)};
}

bool AppLock::set(const LockCode& code) {
  Record record;
  LockHash hash{};
  const LockFunctions* functions = lockFunctions();
  if (functions == nullptr) {
    logFailure("set", fileName, noLibrary);
    return false;
  }
  if (directory_.empty() || !functions->hash(code.data(), code.size(), hash)) {
    logFailure("set", fileName, "there is no data directory, or too little memory");
    return false;
  }
  record.hash = hash.data();
  const Descriptor lock = lockedDirectory(directory_);
  return lock.isOpen() && write(record);
}

bool AppLock::clear() {
  const Descriptor lock = lockedDirectory(directory_);
  if (!lock.isOpen())
    return false;
  if (unlink(path().c_str()) != 0 && errno != ENOENT) {
    logFailure("removed", path(), std::strerror(errno));
    return false;
  }
  return true;
}

}  // namespace ulo
