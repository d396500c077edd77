#include "import.h"

#include "ZVtodoParser.h"
#include "descriptor.h"
#include "foreign_text.h"

#include <QFile>

#include <cerrno>
#include <memory>
#include <optional>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tasks {

namespace {

constexpr int statusNone = -1;
constexpr int statusNeedsAction = 1;

using Calendar = QList<ZTASK_ENG_Task>;

// The bytes of a file; none for one that is too large, no regular file, or can't be read.
std::optional<QByteArray> readFile(const QString& path) {
  const ulo::Descriptor file(
      open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  struct stat status {};
  if (!file.isOpen() || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
      status.st_size > largestImport)
    return {};
  // What the system tells as the size may be out of date, or 0 as in /proc.
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

void cutTo(ZTASK_ENG_Task& task, ZTASK_ENG_Task::TASK_FIELD_T field, int limit) {
  if (const QString text = task.getString(field); text.size() > limit)
    task.setString(field, ulo::wholeLetters(text, limit));
}

int storeTask(ZTASK_ENG_Model& store, ZTASK_ENG_Task& task) {
  cutTo(task, ZTASK_ENG_Task::TASK_FIELD_SUMMARY, ZTASK_ENG_Task::summaryLimit);
  cutTo(task, ZTASK_ENG_Task::TASK_FIELD_NOTE, ZTASK_ENG_Task::noteLimit);
  if (task.getStatusValue() == statusNone)
    task.setStatus(statusNeedsAction);
  task.setDateTime(ZTASK_ENG_Task::TASK_FIELD_REVISION, QDateTime::currentDateTime());
  return store.addTask(task);
}

void storeAll(ZTASK_ENG_Model& store, const Calendar& calendar, ImportResult& result) {
  for (uint i = 0; i < calendar.count() && !result.storeFull && !result.failed; ++i) {
    ZTASK_ENG_Task& task = *calendar.at(i);
    const int code = storeTask(store, task);
    result.storeFull = code == TASK_ENG_MEMORY_FULL;
    result.failed = code != TASK_ENG_OK && !result.storeFull;
    if (code == TASK_ENG_OK) {
      ++result.imported;
      result.lastUid = task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID);
    }
  }
}

}  // namespace

ImportResult importFiles(ZTASK_ENG_Model& store, const QStringList& paths) {
  ImportResult result;
  std::vector<std::unique_ptr<Calendar>> calendars;
  for (const QString& path : paths) {
    auto calendar = std::make_unique<Calendar>();
    calendar->setAutoDelete(true);
    if (const std::optional<QByteArray> bytes = readFile(path))
      ZVtodoParser().readVtodo(QCString(bytes->constData()), *calendar);
    if (calendar->isEmpty())
      result.unread.append(path);
    else
      calendars.push_back(std::move(calendar));
  }
  for (const std::unique_ptr<Calendar>& calendar : calendars)
    storeAll(store, *calendar, result);
  return result;
}

}  // namespace tasks
