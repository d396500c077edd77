#include "calendar_file.h"

#include "arguments.h"
#include "exit_codes.h"
#include "store_files.h"
#include "text.h"
#include "todo_reader.h"
#include "todo_writer.h"
#include "ulo/descriptor.h"
#include "vcal_guard.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <string_view>
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
    {ulo::TextProblem::notCalendar, Exit::notCalendar, ": not a calendar file"},
    {ulo::TextProblem::noTodo, Exit::noTodo, ": holds no to-do"},
    {ulo::TextProblem::truncated, Exit::incomplete, ": truncated"},
    {ulo::TextProblem::malformed, Exit::malformed, ": not well formed"},
};

Failure unreadable(const std::string& name) {
  return {Exit::unreadable, shownName(name) + ": cannot be read: " + std::strerror(errno)};
}

}  // namespace

std::string vcalendarReason() {
  const std::string failure = ulo::vObjectLibraryFailure();
  return failure.empty() ? "; the log says why" : ": " + failure;
}

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

namespace {

Calendar readVcalendar(const std::string& name, std::string_view text,
                       std::vector<std::string>& notices) {
  // The text ends at the first zero byte.
  text = text.substr(0, text.find('\0'));
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
                                    counted(report.todos, "to-do") + vcalendarReason());
  for (const ulo::LargeProperty& property : report.tooLarge)
    notices.push_back(shownName(name) + ": a " + property.name + " of more than " +
                      std::to_string(ulo::propertyLimit) + " bytes is left out (line " +
                      std::to_string(property.line) + ")");
  return {CalendarVersion::vcalendar, std::move(read.tasks), {}};
}

std::string describe(const TASK_ENG_Ical::Problem& problem) {
  return problem.text.toStdString() +
         (problem.line > 0 ? " (line " + std::to_string(problem.line) + ")" : "");
}

void refuse(const std::string& name, const TASK_ENG_Ical::Report& report) {
  const std::string reason =
      report.problems.empty() ? std::string() : ": " + describe(report.problems.front());
  switch (report.failure) {
  case TASK_ENG_Ical::none:
    return;
  case TASK_ENG_Ical::notCalendar:
    throw Failure(Exit::notCalendar, shownName(name) + ": not an iCalendar file" + reason);
  case TASK_ENG_Ical::truncated:
    throw Failure(Exit::incomplete, shownName(name) + ": truncated" + reason);
  case TASK_ENG_Ical::tooLarge:
    throw Failure(Exit::malformed, shownName(name) + ": exceeds a limit" + reason);
  case TASK_ENG_Ical::noTodo:
    throw Failure(Exit::noTodo, shownName(name) + ": holds no to-do");
  }
}

Calendar readIcalendar(const std::string& name, const QByteArray& text,
                       std::vector<std::string>& notices) {
  TASK_ENG_Ical::Report report;
  std::vector<TASK_ENG_Ical::Todo> todos = TASK_ENG_Ical::read(text, &report);
  refuse(name, report);
  for (const TASK_ENG_Ical::Problem& problem : report.problems)
    notices.push_back(shownName(name) + ": " + describe(problem));
  if (report.problemCount > report.problems.size())
    notices.push_back(shownName(name) + ": " +
                      counted(report.problemCount - report.problems.size(), "more problem"));
  return {CalendarVersion::icalendar, {}, std::move(todos)};
}

bool isLineStart(std::string_view text, std::size_t at) {
  return at == 0 || text[at - 1] == '\n' || text[at - 1] == '\r';
}

// Returns where the calendars of a text begin.
std::vector<std::size_t> calendarStarts(std::string_view text) {
  constexpr std::string_view begin = "BEGIN:VCALENDAR";
  const auto sameLetter = [](char a, char b) { return (a >= 'a' && a <= 'z' ? a - 32 : a) == b; };
  std::vector<std::size_t> starts;
  for (auto at = text.begin();;) {
    at = std::search(at, text.end(), begin.begin(), begin.end(), sameLetter);
    if (at == text.end())
      return starts;
    const auto position = static_cast<std::size_t>(at - text.begin());
    if (isLineStart(text, position))
      starts.push_back(position);
    at += static_cast<std::ptrdiff_t>(begin.size());
  }
}

// Removes everything but the line ends, so that the lines that follow keep their numbers.
void blank(std::string& text, std::size_t begin, std::size_t end) {
  const auto first = text.begin() + static_cast<std::ptrdiff_t>(begin);
  const auto last = text.begin() + static_cast<std::ptrdiff_t>(end);
  text.erase(std::remove_if(first, last, [](char c) { return c != '\n' && c != '\r'; }), last);
}

struct TextOfVersion {
  CalendarVersion version;
  std::string text;
};

// Splits a text that contains calendars of both versions.
std::vector<TextOfVersion> splitVersions(std::string text) {
  const auto versionOf = [](std::string_view part) {
    return TASK_ENG_Ical::isIcalendar(
               QByteArray::fromRawData(part.data(), static_cast<qsizetype>(part.size())))
               ? CalendarVersion::icalendar
               : CalendarVersion::vcalendar;
  };
  const std::vector<std::size_t> starts = calendarStarts(text);
  std::vector<CalendarVersion> versions;
  for (const std::size_t start : starts)
    versions.push_back(versionOf(std::string_view(text).substr(start)));
  const CalendarVersion first = versions.empty() ? versionOf(text) : versions.front();
  if (std::all_of(versions.begin(), versions.end(),
                  [=](CalendarVersion version) { return version == first; }))
    return {{first, std::move(text)}};
  const CalendarVersion other =
      first == CalendarVersion::vcalendar ? CalendarVersion::icalendar : CalendarVersion::vcalendar;
  std::vector<TextOfVersion> parts = {{first, text}, {other, std::move(text)}};
  for (TextOfVersion& part : parts) {
    // From the end, because the places of the other calendars must stay valid.
    for (std::size_t i = starts.size(); i-- > 0;) {
      if (versions[i] != part.version)
        blank(part.text, i == 0 ? 0 : starts[i],
              i + 1 < starts.size() ? starts[i + 1] : part.text.size());
    }
  }
  return parts;
}

std::string readText(const std::string& name) {
  std::string text = readFile(name, largestCalendar);
  if (text.empty())
    throw Failure(Exit::notCalendar, shownName(name) + ": empty");
  return text;
}

}  // namespace

const char* nameOf(CalendarVersion version) {
  return version == CalendarVersion::vcalendar ? "vCalendar 1.0" : "iCalendar 2.0";
}

CalendarFile readCalendar(const std::string& name) {
  CalendarFile file{name, {}, {}};
  for (const TextOfVersion& part : splitVersions(readText(name))) {
    file.calendars.push_back(
        part.version == CalendarVersion::vcalendar
            ? readVcalendar(name, part.text, file.notices)
            : readIcalendar(name, QByteArray::fromStdString(part.text), file.notices));
  }
  return file;
}

QByteArray readIcalTodo(const std::string& name) {
  const QByteArray text = QByteArray::fromStdString(readText(name));
  const TASK_ENG_Ical calendar(text);
  refuse(name, calendar.report());
  if (calendar.count() != 1)
    throw Failure(Exit::usage, shownName(name) + ": contains " +
                                   counted(static_cast<std::size_t>(calendar.count()), "to-do") +
                                   "; one is expected");
  return text;
}

std::string calendarText(const QList<ZTASK_ENG_Task>& tasks) {
  ulo::TodosWritten written = ulo::writeTodos(tasks);
  if (written.report.failure != ulo::WriteFailure::none)
    throw Failure(Exit::notWritten,
                  "the tasks cannot be written as a vCalendar text" + vcalendarReason());
  return std::move(written.text);
}

namespace {

void requireWritten(bool success, const std::string& name, const std::string& reason) {
  if (!success)
    throw Failure(Exit::notWritten, name + " can't be written: " + reason);
}

// A file that replaces another one. Without commit(), the old one stays.
class NewFile {
public:
  // All bytes have reached the disk, or a Failure is thrown.
  NewFile(std::string name, const QByteArray& data)
      : name_(std::move(name)), target_(targetOf(name_)),
        file_(argumentText(target_, "file name")) {
    const bool written =
        file_.open(QIODevice::WriteOnly) && file_.write(data) == data.size() && file_.flush();
    requireWritten(written, name_, file_.errorString().toStdString());
    // Some file systems report only now that the disk is full.
    const bool synced = ::fsync(file_.handle()) == 0;
    requireWritten(synced, name_, std::strerror(errno));
  }

  void commit() {
    requireWritten(file_.commit(), name_, file_.errorString().toStdString());
    syncDirectoryOf(target_);
  }

private:
  std::string name_;
  std::string target_;
  QSaveFile file_;
};

}  // namespace

void writeFile(const std::string& name, const std::string& bytes) {
  const QString path = argumentText(name, "file name");
  const QByteArray data = QByteArray::fromStdString(bytes);
  const QFileInfo existing(path);
  refuseStoreFile(name);
  if (existing.exists() && !existing.isFile() && !existing.isDir()) {
    // A device or a pipe is written, not replaced.
    QFile file(path);
    const bool written =
        file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && file.write(data) == data.size();
    requireWritten(written, name, file.errorString().toStdString());
    return;
  }
  NewFile(name, data).commit();
}

void replaceFiles(const std::vector<std::string>& names, const std::string& bytes) {
  const QByteArray data = QByteArray::fromStdString(bytes);
  std::vector<std::unique_ptr<NewFile>> files;
  for (const std::string& name : names) {
    refuseStoreFile(name);
    files.push_back(std::make_unique<NewFile>(name, data));
  }
  for (const std::unique_ptr<NewFile>& file : files)
    file->commit();
}

}  // namespace ulotask
