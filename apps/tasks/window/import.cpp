#include "window/import.h"

#include "take_in.h"
#include "todo_reader.h"
#include "ulo/descriptor.h"

#include <QElapsedTimer>
#include <QFile>

#include <cerrno>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tasks {

namespace {

// Returns the bytes of a file; none if it is too large, is not a regular file, or cannot be read.
std::optional<QByteArray> readFile(const QString& path) {
  const ulo::Descriptor file(
      open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  struct stat status {};
  if (!file.isOpen() || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
      status.st_size > largestImport)
    return {};
  // The size that the system reports may be out of date, or 0 as in /proc.
  constexpr qsizetype chunk = 65536;
  QByteArray bytes;
  bytes.reserve(status.st_size + chunk);
  while (bytes.size() <= largestImport) {
    const qsizetype before = bytes.size();
    bytes.resize(before + chunk);
    const ssize_t count = read(file.get(), bytes.data() + before, chunk);
    bytes.truncate(before + std::max<ssize_t>(count, 0));
    if (count == 0)
      return bytes;
    if (count < 0 && errno != EINTR)
      return {};
  }
  return {};
}

// Appends the to-dos of the file; nothing if it cannot be read.
void appendTodos(const QString& path, std::vector<ZTASK_ENG_Task>& tasks) {
  const std::optional<QByteArray> bytes = readFile(path);
  if (!bytes)
    return;
  // The text ends at the first zero byte.
  const std::string_view text(bytes->constData());
  const ulo::TodosRead read = ulo::readTodos(text);
  for (const std::unique_ptr<ZTASK_ENG_Task>& task : read.tasks)
    tasks.push_back(std::move(*task));
}

}  // namespace

Import::Import(ZTASK_ENG_Model& store, QObject* parent) : QObject(parent), store_(store) {
  work_.setInterval(0);
  connect(&work_, &QTimer::timeout, this, &Import::storeSome);
}

Import::~Import() = default;

void Import::add(const QStringList& paths) {
  isUnderWay_ = true;
  for (const QString& path : paths) {
    const std::size_t before = waiting_.size();
    appendTodos(path, waiting_);
    if (waiting_.size() == before)
      result_.unread.append(path);
  }
  work_.start();
}

void Import::finish() {
  while (storeNext()) {
  }
}

void Import::storeSome() {
  constexpr qint64 slice = 6;  // milliseconds
  QElapsedTimer timer;
  timer.start();
  while (storeNext())
    if (timer.hasExpired(slice)) {
      Q_EMIT progressed(result_.imported, static_cast<unsigned int>(waiting_.size()));
      return;
    }
}

// Returns false if nothing is left to store.
bool Import::storeNext() {
  if (!isUnderWay_)
    return false;
  if (next_ == waiting_.size()) {
    end();
    return false;
  }
  ZTASK_ENG_Task& task = waiting_[next_++];
  const int code = ulo::takeIn(store_, task);
  if (code == TASK_ENG_OK) {
    ++result_.imported;
    result_.lastUid = task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID);
    return true;
  }
  result_.storeFull = code == TASK_ENG_MEMORY_FULL;
  result_.failed = !result_.storeFull;
  end();
  return false;
}

void Import::end() {
  work_.stop();
  isUnderWay_ = false;
  waiting_.clear();
  next_ = 0;
  const ImportResult result = std::exchange(result_, {});
  Q_EMIT ended(result);
}

}  // namespace tasks
