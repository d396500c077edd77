#include "calendar_file.h"

#include "arguments.h"
#include "exit_codes.h"
#include "store_files.h"
#include "text.h"
#include "todo_reader.h"
#include "todo_writer.h"
#include "ulo/descriptor.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <unistd.h>
#include <utility>

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
  // The text ends at the first zero byte.
  text.resize(std::min(text.size(), text.find('\0')));

  ulo::TodosRead read = ulo::readTodos(text);
  const ulo::TextReport& report = read.report.text;
  for (const Refusal& refusal : refusals) {
    if (refusal.problem == report.problem) {
      const std::string place =
          report.line > 0 ? " (line " + std::to_string(report.line) + ")" : "";
      throw Failure(refusal.code, shownName(name) + refusal.reason + place);
    }
  }
  if (read.tasks.size() != report.todos)
    throw Failure(Exit::failed, shownName(name) + ": could read only " +
                                    std::to_string(read.tasks.size()) + " of " +
                                    counted(report.todos, "to-do") + "; the log says why");
  tasks.clear();
  for (std::unique_ptr<ZTASK_ENG_Task>& task : read.tasks)
    tasks.append(task.release());
  std::vector<std::string> notices;
  for (const ulo::LargeProperty& property : report.tooLarge)
    notices.push_back(shownName(name) + ": a " + property.name + " of more than " +
                      std::to_string(ulo::propertyLimit) + " bytes is left out (line " +
                      std::to_string(property.line) + ")");
  return notices;
}

std::string calendarText(const QList<ZTASK_ENG_Task>& tasks) {
  ulo::TodosWritten written = ulo::writeTodos(tasks);
  if (written.report.failure != ulo::WriteFailure::none)
    throw Failure(Exit::notWritten, "the tasks cannot be written as a vCalendar text; the log says "
                                    "why");
  return std::move(written.text);
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
