#include "outbound_file.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

bool isSameFile(const struct stat& left, const struct stat& right) {
  return left.st_dev == right.st_dev && left.st_ino == right.st_ino;
}

}  // namespace

OutboundFile::~OutboundFile() {
  if (name_ != wanted_)
    remove();
}

bool OutboundFile::make() {
  // Each further attempt follows one by another process for the same name.
  constexpr int mostAttempts = 100;
  for (int i = 0; i < mostAttempts; ++i) {
    switch (create()) {
    case Attempt::made:
      return true;
    case Attempt::again:
      break;
    case Attempt::inUse:
      return makeOther();
    case Attempt::blocked:
      return false;
    }
  }
  return makeOther();
}

OutboundFile::Attempt OutboundFile::create() {
  ulo::Descriptor file(
      open(encodedName_.constData(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
  if (!file.isOpen())
    return errno == EEXIST ? clear() : Attempt::made;
  const bool isLocked = flock(file.get(), LOCK_EX | LOCK_NB) == 0;
  if (!isLocked && errno != EWOULDBLOCK) {
    // The file system has no locks.
    unlink(encodedName_.constData());
    return Attempt::inUse;
  }
  // Another process may have seen the file before it was locked, and removes it as a remnant.
  if (!isLocked || !hasName(file.get()))
    return Attempt::again;
  made_ = std::move(file);
  return Attempt::made;
}

// Removes the remnant of an earlier request. A file is removed only by the process that has locked
// it.
OutboundFile::Attempt OutboundFile::clear() const {
  struct stat named {};
  if (lstat(encodedName_.constData(), &named) != 0)
    return Attempt::again;
  if (named.st_uid != geteuid())
    return Attempt::inUse;
  if (S_ISREG(named.st_mode)) {
    const ulo::Descriptor file(
        open(encodedName_.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!file.isOpen() && errno == ENOENT)
      return Attempt::again;
    if (!file.isOpen() || flock(file.get(), LOCK_EX | LOCK_NB) != 0)
      return Attempt::inUse;
    if (!hasName(file.get()))
      return Attempt::again;
    return unlink(encodedName_.constData()) == 0 ? Attempt::again : Attempt::blocked;
  }
  return unlink(encodedName_.constData()) == 0 ? Attempt::again : Attempt::blocked;
}

bool OutboundFile::makeOther() {
  QByteArray name = QFile::encodeName(wanted_) + ".XXXXXX";
  made_.reset(mkostemp(name.data(), O_CLOEXEC));
  if (made_.isOpen()) {
    encodedName_ = name;
    name_ = QFile::decodeName(name);
  }
  return made_.isOpen();
}

QString OutboundFile::nameForWriting() const {
  const QString link = QStringLiteral("/proc/self/fd/%1").arg(made_.get());
  // If there is no file, opening the link fails, and the caller sees the error.
  return made_.isOpen() && !QFile::exists(QStringLiteral("/proc/self/fd")) ? name_ : link;
}

bool OutboundFile::hasName(int descriptor) const {
  struct stat named {};
  struct stat opened {};
  return lstat(encodedName_.constData(), &named) == 0 && fstat(descriptor, &opened) == 0 &&
         isSameFile(named, opened);
}

bool OutboundFile::isSame(int descriptor) const {
  struct stat opened {};
  struct stat made {};
  return fstat(descriptor, &opened) == 0 && fstat(made_.get(), &made) == 0 &&
         isSameFile(opened, made);
}

void OutboundFile::remove() noexcept {
  if (hasName(made_.get()))
    unlink(encodedName_.constData());
}

bool OutboundFile::isWhole() const {
  constexpr std::string_view ending = "END:VCALENDAR";
  constexpr off_t mostLineEnds = 4;  // bytes
  struct stat made {};
  if (fstat(made_.get(), &made) != 0)
    return false;
  char bytes[ending.size() + mostLineEnds];
  const off_t from = std::max<off_t>(made.st_size - static_cast<off_t>(sizeof bytes), 0);
  const ssize_t got = pread(made_.get(), bytes, sizeof bytes, from);
  std::string_view last(bytes, static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
  last = last.substr(0, last.find_last_not_of("\r\n") + 1);
  return last.ends_with(ending);
}
