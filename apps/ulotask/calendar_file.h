// Calendar texts in files and pipes: vCalendar 1.0 and iCalendar 2.0.
#pragma once

#include "TASK_ENG_Ical.h"
#include "ZTASK_ENG_Task.h"

#include <QByteArray>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace ulotask {

// The largest text that is read: far more than the task list of a handset, and small enough to be
// held in memory.
inline constexpr std::size_t largestCalendar = 64UL * 1024 * 1024;

// Returns the bytes of a file, or of standard input for "-". Throws a Failure if it cannot be read
// or is larger than `limit` bytes.
std::string readFile(const std::string& name, std::size_t limit);

enum class CalendarVersion { vcalendar, icalendar };

// The name and version of a format: "vCalendar 1.0".
const char* nameOf(CalendarVersion version);

// The to-dos of a file that are written in one of the two versions.
struct Calendar {
  CalendarVersion version = CalendarVersion::vcalendar;
  std::vector<std::unique_ptr<ZTASK_ENG_Task>> tasks;  // of vCalendar 1.0
  std::vector<TASK_ENG_Ical::Todo> todos;              // of iCalendar 2.0
};

struct CalendarFile {
  std::string name;
  std::vector<Calendar> calendars;   // one; one for each version if the file has both
  std::vector<std::string> notices;  // parts that were left out or read incompletely
};

// Reads the to-dos of a file, or of standard input for "-". The content decides which version it
// is. Throws a Failure if there are none or the text is not complete.
CalendarFile readCalendar(const std::string& name);

// Returns the bytes of a file that contains iCalendar 2.0 with one to-do. Throws a Failure if it
// contains anything else.
QByteArray readIcalTodo(const std::string& name);

// Returns the tasks as one vCalendar text. Throws a Failure if it cannot be written.
std::string calendarText(const QList<ZTASK_ENG_Task>& tasks);

// Writes the bytes to a file. An existing file is replaced after all bytes have reached the disk;
// if that fails, it is left unchanged. A file of the data directory is refused (see store_files.h).
void writeFile(const std::string& name, const std::string& bytes);

// Replaces each of the files with these bytes, or none: nothing is replaced until all bytes have
// reached the disk. Throws a Failure. Like writeFile, refuses files of the data directory.
void replaceFiles(const std::vector<std::string>& names, const std::string& bytes);

// The end of a message that vCalendar text can be neither read nor written: the vObject library if
// it is missing, otherwise a reference to the log.
std::string vcalendarReason();

// The name of a file in messages.
std::string shownName(const std::string& name);

}  // namespace ulotask
