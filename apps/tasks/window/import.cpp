#include "window/import.h"

#include "calendar_versions.h"
#include "take_in.h"
#include "todo_reader.h"
#include "ulo/descriptor.h"
#include "vcal_guard.h"
#include "write_transaction.h"

#include <QElapsedTimer>
#include <QFile>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
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

unsigned int& countOf(ulo::Taken how, ImportResult& result) {
  switch (how) {
  case ulo::Taken::added:
    return result.imported;
  case ulo::Taken::updated:
    return result.updated;
  case ulo::Taken::unchanged:
  case ulo::Taken::older:
  case ulo::Taken::repeated:
    break;
  }
  return result.present;
}

}  // namespace

Import::Import(ZTASK_ENG_Model& store, QObject* parent) : QObject(parent), store_(store) {
  work_.setInterval(0);
  connect(&work_, &QTimer::timeout, this, &Import::storeSome);
}

Import::~Import() = default;

// Nothing if the file cannot be read.
void Import::appendTodos(const QString& path) {
  const std::optional<QByteArray> bytes = readFile(path);
  if (!bytes)
    return;
  for (const ulo::TextOfVersion& part : ulo::splitVersions(*bytes)) {
    if (part.version == ulo::CalendarVersion::vcalendar) {
      appendVcalendar(part.text);
      continue;
    }
    for (TASK_ENG_Ical::Todo& todo : TASK_ENG_Ical::read(part.text))
      waiting_.emplace_back(std::move(todo));
  }
}

// The text ends at the first zero byte.
void Import::appendVcalendar(const QByteArray& text) {
  const ulo::TodosRead read = ulo::readTodos(text.constData());
  if (read.report.failure == ulo::ReadFailure::library && !result_.libraryMissing) {
    const std::string failure = ulo::vObjectLibraryFailure();
    if (!failure.empty())
      std::fprintf(stderr, "ulo-tasks: %s\n", failure.c_str());
    result_.libraryMissing = !failure.empty();
  }
  for (const std::unique_ptr<ZTASK_ENG_Task>& task : read.tasks)
    waiting_.emplace_back(std::move(*task));
}

void Import::add(const QStringList& paths) {
  isUnderWay_ = true;
  for (const QString& path : paths) {
    const std::size_t before = waiting_.size();
    appendTodos(path);
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
    // The last slice is reported by ended().
    if (next_ < waiting_.size() && timer.hasExpired(slice)) {
      Q_EMIT progressed(static_cast<unsigned int>(next_),
                        static_cast<unsigned int>(waiting_.size()));
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
  const std::size_t count = std::min(most_, waiting_.size() - next_);
  ImportResult stored = result_;
  const int code = store(count, stored);
  if (code == TASK_ENG_OK) {
    result_ = stored;
    next_ += count;
    return true;
  }
  if (count > 1) {
    // Stores those that precede the one that fails.
    most_ = 1;
    return true;
  }
  result_.storeFull = code == TASK_ENG_MEMORY_FULL;
  result_.failed = !result_.storeFull;
  end();
  return false;
}

int Import::store(std::size_t count, ImportResult& result) {
  ulo::WriteTransaction transaction;
  if (!transaction)
    return ulo::storeCode(transaction.result());
  const auto begin = waiting_.begin() + static_cast<std::ptrdiff_t>(next_);
  const auto last = begin + static_cast<std::ptrdiff_t>(count);
  std::vector<QString> uuids;
  for (auto todo = begin; todo != last; ++todo) {
    if (const auto* ical = std::get_if<TASK_ENG_Ical::Todo>(&*todo))
      uuids.push_back(ical->task.getString(ZTASK_ENG_Task::TASK_FIELD_UUID));
  }
  ulo::IcalIntake intake(store_);
  if (const int code = uuids.empty() ? TASK_ENG_OK : intake.find(uuids); code != TASK_ENG_OK)
    return code;
  for (auto todo = begin; todo != last; ++todo) {
    ulo::TakenIn taken;
    int code = TASK_ENG_OK;
    if (const auto* ical = std::get_if<TASK_ENG_Ical::Todo>(&*todo)) {
      code = intake.take(*ical, taken);
    } else {
      ZTASK_ENG_Task task = std::get<ZTASK_ENG_Task>(*todo);
      code = ulo::takeIn(store_, task);
      taken.uid = task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID);
    }
    if (code != TASK_ENG_OK)
      return code;
    // Another to-do of the files, which follows, is the task.
    if (taken.how == ulo::Taken::repeated)
      continue;
    ++countOf(taken.how, result);
    result.lastUid = taken.uid;
  }
  return ulo::storeCode(transaction.commit());
}

void Import::end() {
  work_.stop();
  isUnderWay_ = false;
  waiting_.clear();
  next_ = 0;
  most_ = mostAtOnce;
  const ImportResult result = std::exchange(result_, {});
  Q_EMIT ended(result);
}

}  // namespace tasks
