#include "outbound_file.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

bool OutboundFile::make() {
  const QByteArray name = QFile::encodeName(name_);
  unlink(name.constData());
  made_.reset(open(name.constData(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
  return made_.isOpen() || errno != EEXIST;
}

bool OutboundFile::isOwn() const {
  struct stat named {};
  if (lstat(QFile::encodeName(name_).constData(), &named) != 0)
    return errno == ENOENT;
  struct stat made {};
  return made_.isOpen() && fstat(made_.get(), &made) == 0 && made.st_dev == named.st_dev &&
         made.st_ino == named.st_ino;
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
