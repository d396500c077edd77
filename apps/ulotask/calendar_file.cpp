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
#include <sys/stat.h>
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

namespace {

// Appends to the text, so that reading a large file or pipe does not copy it.
QByteArray readBytes(const std::string& name, std::size_t limit) {
  const ulo::Descriptor file = openFile(name);
  if (!file.isOpen())
    throw unreadable(name);
  constexpr qsizetype chunk = 65536;
  QByteArray bytes;
  struct stat status {};
  if (::fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode))
    bytes.reserve(std::min(static_cast<qsizetype>(status.st_size), static_cast<qsizetype>(limit)) +
                  chunk);
  while (true) {
    const qsizetype before = bytes.size();
    bytes.resize(before + chunk);
    const ssize_t count = ::read(file.get(), bytes.data() + before, chunk);
    bytes.resize(before + (count > 0 ? count : 0));
    if (count < 0 && errno != EINTR)
      throw unreadable(name);
    if (count == 0)
      return bytes;
    if (static_cast<std::size_t>(bytes.size()) > limit)
      throw Failure(Exit::tooLarge,
                    shownName(name) + ": larger than " + std::to_string(limit) + " bytes");
  }
}

}  // namespace

std::string readFile(const std::string& name, std::size_t limit) {
  return readBytes(name, limit).toStdString();
}

namespace {

std::string_view viewOf(const QByteArray& bytes) {
  return {bytes.constData(), static_cast<std::size_t>(bytes.size())};
}

void refuse(const std::string& name, const ulo::TextReport& report) {
  for (const Refusal& refusal : refusals) {
    if (refusal.problem == report.problem) {
      const std::string place =
          report.line > 0 ? " (line " + std::to_string(report.line) + ")" : "";
      throw Failure(refusal.code, shownName(name) + refusal.reason + place);
    }
  }
}

Failure unreadTodos(const std::string& name, std::size_t read, std::size_t all) {
  return {Exit::failed, shownName(name) + ": could read only " + std::to_string(read) + " of " +
                            counted(all, "to-do") + vcalendarReason()};
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

QByteArray readText(const std::string& name) {
  QByteArray text = readBytes(name, largestCalendar);
  if (text.isEmpty())
    throw Failure(Exit::notCalendar, shownName(name) + ": empty");
  return text;
}

}  // namespace

const char* nameOf(CalendarVersion version) {
  return version == CalendarVersion::vcalendar ? "vCalendar 1.0" : "iCalendar 2.0";
}

Calendar::Calendar(std::string name, CalendarVersion version, const QByteArray& text)
    : name_(std::move(name)), version_(version), text_(text) {
  if (version_ == CalendarVersion::icalendar) {
    icalendar_ = std::make_unique<ulo::IcalTodos>(text_);
    count_ = icalendar_->count();
    refuse(name_, icalendar_->report());
    return;
  }
  // The text ends at the first zero byte.
  const std::string_view bytes = viewOf(text_);
  vcalendar_ = std::make_unique<ulo::TodoSlices>(bytes.substr(0, bytes.find('\0')));
  const ulo::TextReport& report = vcalendar_->report().text;
  count_ = report.todos;
  refuse(name_, report);
  if (!ulo::vObjectLibraryFailure().empty())
    throw unreadTodos(name_, 0, count_);
}

void Calendar::forEachUuid(const std::function<void(const QString& uuid)>& visit) const {
  for (std::size_t i = 0; icalendar_ != nullptr && i < count_; ++i)
    visit(icalendar_->uuid(i));
}

void Calendar::forEachTodo(
    const std::function<void(ZTASK_ENG_Task& task)>& ofVcalendar,
    const std::function<void(const TASK_ENG_Ical::Todo& todo)>& ofIcalendar) {
  if (icalendar_ != nullptr) {
    for (TASK_ENG_Ical::Todo todo; icalendar_->next(todo);)
      ofIcalendar(todo);
    refuse(name_, icalendar_->report());
    return;
  }
  std::size_t read = 0;
  for (std::vector<std::unique_ptr<ZTASK_ENG_Task>> tasks; vcalendar_->next(tasks);) {
    for (const std::unique_ptr<ZTASK_ENG_Task>& task : tasks)
      ofVcalendar(*task);
    read += tasks.size();
  }
  if (read != count_)
    throw unreadTodos(name_, read, count_);
}

std::vector<std::string> Calendar::notices() const {
  std::vector<std::string> notices;
  const std::string source = shownName(name_) + ": ";
  if (icalendar_ != nullptr) {
    const TASK_ENG_Ical::Report& report = icalendar_->report();
    for (const TASK_ENG_Ical::Problem& problem : report.problems)
      notices.push_back(source + describe(problem));
    if (report.problemCount > report.problems.size())
      notices.push_back(source +
                        counted(report.problemCount - report.problems.size(), "more problem"));
    return notices;
  }
  for (const ulo::LargeProperty& property : vcalendar_->report().text.tooLarge)
    notices.push_back(source + "a " + property.name + " of more than " +
                      std::to_string(ulo::propertyLimit) + " bytes is left out (line " +
                      std::to_string(property.line) + ")");
  return notices;
}

CalendarFile openCalendar(const std::string& name) {
  CalendarFile file{name, {}};
  for (const ulo::TextOfVersion& part : ulo::splitVersions(readText(name)))
    file.calendars.emplace_back(name, part.version, part.text);
  return file;
}

QByteArray readIcalTodo(const std::string& name) {
  QByteArray text = readText(name);
  const TASK_ENG_Ical calendar(text);
  refuse(name, calendar.report());
  if (calendar.count() != 1)
    throw Failure(Exit::usage, shownName(name) + ": contains " +
                                   counted(static_cast<std::size_t>(calendar.count()), "to-do") +
                                   "; one is expected");
  return text;
}

namespace {

std::string textOf(ulo::TodosWritten written) {
  if (written.report.failure != ulo::WriteFailure::none)
    throw Failure(Exit::notWritten,
                  "the tasks cannot be written as a vCalendar text" + vcalendarReason());
  return std::move(written.text);
}

}  // namespace

std::string VcalendarWriter::begin() {
  constexpr std::string_view last = "END:VCALENDAR";
  begin_ = textOf(ulo::writeTodos({}));
  const std::size_t end = std::min(begin_.find(last), begin_.size());
  end_ = begin_.substr(end);
  begin_.resize(end);
  return begin_;
}

std::string VcalendarWriter::add(const QValueList<ZTASK_ENG_Task>& tasks) {
  QList<ZTASK_ENG_Task> list;
  for (const ZTASK_ENG_Task& task : tasks)
    list.append(const_cast<ZTASK_ENG_Task*>(&task));  // only read
  pages_.add(list);
  return pages_.count() > pagesAtOnce ? takePage() : std::string();
}

std::string VcalendarWriter::end() {
  std::string text;
  while (pages_.count() > 0)
    text += takePage();
  return text + end_;
}

std::string VcalendarWriter::takePage() {
  std::string text = textOf(pages_.take());
  if (!text.starts_with(begin_) || !text.ends_with(end_))
    throw Failure(Exit::notWritten, "the tasks cannot be written as a vCalendar text");
  text.resize(text.size() - end_.size());
  text.erase(0, begin_.size());
  return text;
}

namespace {

Failure notWritten(const std::string& name, const std::string& reason) {
  return {Exit::notWritten, name + " can't be written: " + reason};
}

}  // namespace

FileWriter::FileWriter(std::string name) : name_(std::move(name)) {}
FileWriter::FileWriter(FileWriter&& other) noexcept = default;
FileWriter::~FileWriter() = default;

void FileWriter::open() {
  const QFileInfo existing(argumentText(name_, "file name"));
  refuseStoreFile(name_);
  QIODevice::OpenMode mode = QIODevice::WriteOnly;
  if (existing.exists() && !existing.isFile() && !existing.isDir()) {
    // A device or a pipe is written, not replaced.
    file_ = std::make_unique<QFile>(existing.filePath());
    mode |= QIODevice::Unbuffered;
  } else {
    target_ = targetOf(name_);
    file_ = std::make_unique<QSaveFile>(argumentText(target_, "file name"));
  }
  if (!file_->open(mode))
    throw notWritten(name_, file_->errorString().toStdString());
}

void FileWriter::write(std::string_view bytes) {
  if (file_ == nullptr)
    open();
  const auto size = static_cast<qint64>(bytes.size());
  if (file_->write(bytes.data(), size) != size)
    throw notWritten(name_, file_->errorString().toStdString());
}

void FileWriter::flush() {
  if (file_ == nullptr)
    open();
  if (!file_->flush())
    throw notWritten(name_, file_->errorString().toStdString());
  // Some file systems report only now that the disk is full.
  if (!target_.empty() && ::fsync(file_->handle()) != 0)
    throw notWritten(name_, std::strerror(errno));
}

void FileWriter::commit() {
  flush();
  auto* const replacement = qobject_cast<QSaveFile*>(file_.get());
  if (replacement == nullptr)
    return;
  if (!replacement->commit())
    throw notWritten(name_, file_->errorString().toStdString());
  syncDirectoryOf(target_);
}

void replaceFiles(const std::vector<std::string>& names, const std::string& bytes) {
  std::vector<FileWriter> files;
  for (const std::string& name : names) {
    files.emplace_back(name);
    files.back().write(bytes);
    files.back().flush();
  }
  for (FileWriter& file : files)
    file.commit();
}

}  // namespace ulotask
