// Calendar texts in files and pipes: vCalendar 1.0 and iCalendar 2.0.
#pragma once

#include "TASK_ENG_Ical.h"
#include "ZTASK_ENG_Task.h"
#include "calendar_versions.h"
#include "ical_todos.h"
#include "todo_reader.h"
#include "todo_writer.h"

#include <QByteArray>
#include <QFileDevice>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ulotask {

// The largest text that is read: far more than the task list of a handset, and small enough to be
// held in memory.
inline constexpr std::size_t largestCalendar = 64UL * 1024 * 1024;

// Returns the bytes of a file, or of standard input for "-". Throws a Failure if it cannot be read
// or is larger than `limit` bytes.
std::string readFile(const std::string& name, std::size_t limit);

using ulo::CalendarVersion;

// The name and version of a format: "vCalendar 1.0".
const char* nameOf(CalendarVersion version);

// The to-dos of a file that are written in one of the two versions. Holds the text, and reads the
// to-dos one after the other.
class Calendar {
public:
  // Throws a Failure, which begins with `name`, if the text has no to-do or is not complete.
  Calendar(std::string name, CalendarVersion version, const QByteArray& text);

  [[nodiscard]] CalendarVersion version() const { return version_; }
  [[nodiscard]] std::size_t count() const { return count_; }
  // Calls `visit` with the uuid of each to-do of iCalendar 2.0, in their order.
  void forEachUuid(const std::function<void(const QString& uuid)>& visit) const;
  // Reads the to-dos and passes each to the function for its version. Throws a Failure if one
  // cannot be read. Called at most once.
  void forEachTodo(const std::function<void(ZTASK_ENG_Task& task)>& ofVcalendar,
                   const std::function<void(const TASK_ENG_Ical::Todo& todo)>& ofIcalendar);
  // Describes parts that were left out or read incompletely. Complete after forEachTodo().
  [[nodiscard]] std::vector<std::string> notices() const;

private:
  std::string name_;
  CalendarVersion version_;
  QByteArray text_;
  std::size_t count_ = 0;
  std::unique_ptr<ulo::TodoSlices> vcalendar_;
  std::unique_ptr<ulo::IcalTodos> icalendar_;
};

struct CalendarFile {
  std::string name;
  std::vector<Calendar> calendars;  // one; one for each version if the file has both
};

// Opens a file, or standard input for "-". The content decides which version it is. Throws a
// Failure if it cannot be read, has no to-do or is not complete.
CalendarFile openCalendar(const std::string& name);

// Returns the bytes of a file that contains iCalendar 2.0 with one to-do. Throws a Failure if it
// contains anything else.
QByteArray readIcalTodo(const std::string& name);

// Writes one vCalendar text in parts. Each function throws a Failure if the text cannot be written.
class VcalendarWriter {
public:
  // Returns the text in front of the to-dos.
  std::string begin();
  // Adds the to-dos of these tasks. Returns the next part of the text, which may be that of tasks
  // added before, or empty.
  std::string add(const QValueList<ZTASK_ENG_Task>& tasks);
  // Returns the rest of the text.
  std::string end();

private:
  std::string takePage();

  // The vObject library writes this many pages while the next one is read.
  static constexpr std::size_t pagesAtOnce = 2;
  std::string begin_;
  std::string end_;
  ulo::TodoPages pages_;
};

// A file that is written in parts. An existing file is replaced by commit() after all bytes have
// reached the disk; without it, and if a function throws a Failure, the file is left unchanged. A
// device or a pipe is written at once. A file of the data directory is refused (see store_files.h).
class FileWriter {
public:
  // Opens nothing yet.
  explicit FileWriter(std::string name);
  FileWriter(FileWriter&& other) noexcept;
  ~FileWriter();

  void write(std::string_view bytes);
  // Waits until all bytes have reached the disk. The file is not yet replaced.
  void flush();
  void commit();

private:
  void open();

  std::string name_;
  std::string target_;
  std::unique_ptr<QFileDevice> file_;
};

// Replaces each of the files with these bytes, or none: nothing is replaced until all bytes have
// reached the disk. Throws a Failure. Like FileWriter, refuses files of the data directory.
void replaceFiles(const std::vector<std::string>& names, const std::string& bytes);

// The end of a message that vCalendar text can be neither read nor written: the vObject library if
// it is missing, otherwise a reference to the log.
std::string vcalendarReason();

// The name of a file in messages.
std::string shownName(const std::string& name);

}  // namespace ulotask
