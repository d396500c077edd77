#include "calendar_file.h"

#include "ZVtodoParser.h"
#include "arguments.h"
#include "descriptor.h"
#include "exit_codes.h"
#include "scratch_directory.h"
#include "store_files.h"
#include "text.h"
#include "vcal_guard.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace ulotask {
namespace {

constexpr const char* standardInput = "-";

ulo::Descriptor openFile(const std::string& name) {
  return ulo::Descriptor(name == standardInput ? ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                                               : ::open(name.c_str(), O_RDONLY | O_CLOEXEC));
}

// The failures of a text from which nothing can be read.
struct Refusal {
  ulo::TextProblem problem;
  Exit code;
  const char* reason;
};
constexpr Refusal refusals[] = {
    {ulo::TextProblem::unreadable, Exit::unreadable, ": cannot be read"},
    {ulo::TextProblem::notCalendar, Exit::notCalendar, ": not a vCalendar file"},
    {ulo::TextProblem::noTodo, Exit::noTodo, ": holds no to-do"},
    {ulo::TextProblem::truncated, Exit::incomplete, ": truncated"},
    {ulo::TextProblem::malformed, Exit::malformed, ": not well formed"},
};

Failure unreadable(const std::string& name) {
  return {Exit::unreadable, shownName(name) + ": cannot be read: " + std::strerror(errno)};
}

}  // namespace

std::string shownName(const std::string& name) {
  return name == standardInput ? "standard input" : name;
}

std::string readFile(const std::string& name, std::size_t limit) {
  const ulo::Descriptor file = openFile(name);
  if (!file.isOpen())
    throw unreadable(name);
  constexpr std::size_t chunk = 65536;
  std::string bytes;
  while (true) {
    const std::size_t before = bytes.size();
    bytes.resize(before + chunk);
    const ssize_t count = ::read(file.get(), bytes.data() + before, chunk);
    bytes.resize(before + static_cast<std::size_t>(count > 0 ? count : 0));
    if (count < 0 && errno != EINTR)
      throw unreadable(name);
    if (count == 0)
      return bytes;
    if (bytes.size() > limit)
      throw Failure(Exit::tooLarge,
                    shownName(name) + ": larger than " + std::to_string(limit) + " bytes");
  }
}

std::vector<std::string> readCalendar(const std::string& name, QList<ZTASK_ENG_Task>& tasks) {
  std::string text = readFile(name, largestCalendar);
  if (text.empty())
    throw Failure(Exit::notCalendar, shownName(name) + ": empty");
  // The reader expects a zero-terminated text.
  text.resize(std::min(text.size(), text.find('\0')));

  const ulo::TextReport report = ulo::examineText(text);
  for (const Refusal& refusal : refusals) {
    if (refusal.problem == report.problem) {
      const std::string place =
          report.line > 0 ? " (line " + std::to_string(report.line) + ")" : "";
      throw Failure(refusal.code, shownName(name) + refusal.reason + place);
    }
  }
  ZVtodoParser().readVtodo(QCString(text.c_str()), tasks);
  if (tasks.count() != report.todos) {
    const std::size_t read = tasks.count();
    tasks.clear();
    throw Failure(Exit::failed, shownName(name) + ": could read only " + std::to_string(read) +
                                    " of " + counted(report.todos, "to-do") + "; the log says why");
  }
  std::vector<std::string> notices;
  for (const ulo::LargeProperty& property : report.tooLarge)
    notices.push_back(shownName(name) + ": a " + property.name + " of more than " +
                      std::to_string(ulo::propertyLimit) + " bytes is left out (line " +
                      std::to_string(property.line) + ")");
  return notices;
}

std::string calendarText(QList<ZTASK_ENG_Task>& tasks) {
  const ScratchDirectory directory;
  if (directory.path().empty())
    throw Failure(Exit::notWritten, "cannot create a temporary directory: " + directory.error());
  const QString name = QFile::decodeName((directory.path() + "/tasks.vcs").c_str());
  ZVtodoParser().writeVtodo(name, tasks);
  QFile file(name);
  const QByteArray text = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
  // The writer returns no result; a complete text ends like this.
  if (!text.trimmed().endsWith("END:VCALENDAR"))
    throw Failure(Exit::notWritten, "the tasks cannot be written as a vCalendar text; the log says "
                                    "why");
  return text.toStdString();
}

void writeFile(const std::string& name, const std::string& bytes) {
  const QString path = argumentText(name, "file name");
  const QByteArray data = QByteArray::fromStdString(bytes);
  const QFileInfo existing(path);
  const auto require = [&](bool success, const std::string& reason) {
    if (!success)
      throw Failure(Exit::notWritten, name + " can't be written: " + reason);
  };
  refuseStoreFile(name);
  if (existing.exists() && !existing.isFile() && !existing.isDir()) {
    // A device or a pipe is written, not replaced.
    QFile file(path);
    const bool written =
        file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && file.write(data) == data.size();
    require(written, file.errorString().toStdString());
    return;
  }
  const std::string target = targetOf(name);
  QSaveFile file(argumentText(target, "file name"));
  const bool written =
      file.open(QIODevice::WriteOnly) && file.write(data) == data.size() && file.flush();
  require(written, file.errorString().toStdString());
  // Some file systems report only now that the disk is full.
  const bool synced = ::fsync(file.handle()) == 0;
  require(synced, std::strerror(errno));
  require(file.commit(), file.errorString().toStdString());
  syncDirectoryOf(target);
}

}  // namespace ulotask
