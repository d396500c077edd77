#include "temporary_files.h"

#include "file_lock.h"
#include "module_log.h"
#include "ulo/descriptor.h"

#include <QFile>
#include <QFileInfo>
#include <QList>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ulo {
namespace {

using Note = TemporaryFiles::Note;

// Longest wait for other programs.
constexpr std::chrono::milliseconds patience{1000};

void logFailure(const char* what, const char* path, const char* why) {
  ULO_LOG_ERROR("The temporary file %s can't be %s: %s", path, what, why);
}

// Returns a record of the file at `path`, with the time `time`. Returns nothing and sets errno
// unless it is a regular file.
std::optional<Note> noteOf(const QByteArray& path, std::int64_t time) {
  struct statx status {};
  if (statx(AT_FDCWD, path.constData(), AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS | STATX_BTIME,
            &status) != 0)
    return {};
  if (!S_ISREG(status.stx_mode)) {
    errno = EINVAL;
    return {};
  }
  constexpr std::int64_t nanoseconds = 1'000'000'000;
  const bool hasBirth = (status.stx_mask & STATX_BTIME) != 0;
  return Note{
      time, std::uint64_t{status.stx_dev_major} << 32U | status.stx_dev_minor, status.stx_ino,
      hasBirth ? status.stx_btime.tv_sec * nanoseconds + status.stx_btime.tv_nsec : 0, path};
}

bool isSameFile(const Note& one, const Note& other) {
  return one.device == other.device && one.inode == other.inode && one.birth == other.birth;
}

// Deletes the recorded file. Returns false and sets errno only if it still exists and cannot be
// deleted.
bool removed(const Note& note) {
  const std::optional<Note> found = noteOf(note.path, note.time);
  if (!found || !isSameFile(*found, note))
    return true;
  return unlink(note.path.constData()) == 0 || errno == ENOENT;
}

QByteArray lineOf(const Note& note) {
  return QByteArray::number(static_cast<qlonglong>(note.time)) + ' ' +
         QByteArray::number(static_cast<qulonglong>(note.device)) + ' ' +
         QByteArray::number(static_cast<qulonglong>(note.inode)) + ' ' +
         QByteArray::number(static_cast<qlonglong>(note.birth)) + ' ' +
         note.path.toPercentEncoding("/") + '\n';
}

// Returns nothing for a malformed line.
std::optional<Note> noteFrom(const QByteArray& line) {
  const QList<QByteArray> fields = line.split(' ');
  if (fields.size() != 5)
    return {};
  bool isNumber[4] = {};
  const Note note{fields[0].toLongLong(&isNumber[0]), fields[1].toULongLong(&isNumber[1]),
                  fields[2].toULongLong(&isNumber[2]), fields[3].toLongLong(&isNumber[3]),
                  QByteArray::fromPercentEncoding(fields[4])};
  for (const bool is : isNumber) {
    if (!is)
      return {};
  }
  if (note.time < 0 || !note.path.startsWith('/') || note.path.contains('\0'))
    return {};
  return note;
}

}  // namespace

// The record file, locked against other programs while the object exists.
class TemporaryFiles::NoteFile {
public:
  // `flags` are additional flags for open().
  NoteFile(const std::string& directory, int flags)
      : path_(directory + '/' + fileName),
        file_(::open(path_.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | flags, 0600)) {
    struct stat status {};
    if (file_.isOpen() && (fstat(file_.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
                           status.st_size > largest)) {
      file_.reset();
      errno = EINVAL;
    }
    isLocked_ = file_.isOpen() && lockWithin(file_.get(), patience);
  }

  [[nodiscard]] bool isOpen() const { return file_.isOpen(); }
  [[nodiscard]] bool isLocked() const { return isLocked_; }

  [[nodiscard]] std::vector<Note> read() const {
    QByteArray bytes(largest, '\0');
    const ssize_t count = pread(file_.get(), bytes.data(), static_cast<std::size_t>(largest), 0);
    bytes.truncate(count < 0 ? 0 : count);
    std::vector<Note> notes;
    for (const QByteArray& line : bytes.split('\n')) {
      if (std::optional<Note> note = noteFrom(line))
        notes.push_back(std::move(*note));
    }
    return notes;
  }

  // Written in place, so that it remains the file that others wait for.
  bool write(const std::vector<Note>& notes) {
    QByteArray bytes;
    for (const Note& note : notes)
      bytes += lineOf(note);
    const bool written = pwrite(file_.get(), bytes.constData(),
                                static_cast<std::size_t>(bytes.size()), 0) == bytes.size() &&
                         ftruncate(file_.get(), bytes.size()) == 0;
    if (!written)
      logFailure("written", path_.c_str(), std::strerror(errno));
    return written;
  }

  // Needs no lock, but a program that writes at the same time may lose the record.
  bool append(const Note& note) {
    const QByteArray line = lineOf(note);
    return lseek(file_.get(), 0, SEEK_END) >= 0 &&
           ::write(file_.get(), line.constData(), static_cast<std::size_t>(line.size())) ==
               line.size();
  }

private:
  std::string path_;
  Descriptor file_;
  bool isLocked_ = false;
};

std::optional<Note> TemporaryFiles::note(const QString& path) {
  const QByteArray absolute = QFile::encodeName(QFileInfo(path).absoluteFilePath());
  std::optional<Note> note = path.isEmpty() ? std::nullopt : noteOf(absolute, now_);
  if (!note) {
    logFailure("noted", absolute.constData(),
               path.isEmpty() ? "it has no name" : std::strerror(errno));
    return {};
  }
  bool done = !directory_.empty() && makeUserDirectory(directory_);
  if (done) {
    NoteFile file(directory_, O_CREAT);
    if (file.isLocked()) {
      std::vector<Note> notes = file.read();
      std::erase_if(notes, [&](const Note& other) { return other.path == absolute; });
      notes.push_back(*note);
      done = file.write(notes);
    } else {
      done = file.isOpen() && file.append(*note);
    }
  }
  if (!done) {
    logFailure("noted", absolute.constData(), "the file of notes can't be written");
    return {};
  }
  return note;
}

void TemporaryFiles::remove(const Note& note) {
  if (!removed(note)) {
    logFailure("removed", note.path.constData(), std::strerror(errno));
    return;
  }
  NoteFile file(directory_, 0);
  // A record that remains is removed when it is old.
  if (!file.isLocked())
    return;
  std::vector<Note> notes = file.read();
  if (std::erase_if(notes, [&](const Note& other) {
        return other.path == note.path && isSameFile(other, note);
      }) > 0)
    static_cast<void>(file.write(notes));
}

void TemporaryFiles::removeOld() {
  NoteFile file(directory_, 0);
  if (!file.isLocked())
    return;
  std::vector<Note> notes = file.read();
  bool changed = false;
  constexpr std::int64_t kept = std::chrono::seconds(keptFor).count();
  const auto isDone = [&](const Note& note) {
    const std::optional<Note> found = noteOf(note.path, note.time);
    const bool isGone = !found ? errno == ENOENT : !isSameFile(*found, note);
    if (!isGone && now_ - note.time < kept)
      return false;
    if (isGone || removed(note))
      return true;
    logFailure("removed", note.path.constData(), std::strerror(errno));
    return false;
  };
  for (Note& note : notes) {
    if (note.time > now_) {
      note.time = now_;
      changed = true;
    }
  }
  changed |= std::erase_if(notes, isDone) > 0;
  if (changed)
    static_cast<void>(file.write(notes));
}

}  // namespace ulo
