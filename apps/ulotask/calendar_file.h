// vCalendar texts in files and pipes.
#pragma once

#include "ZTASK_ENG_Task.h"

#include <cstddef>
#include <string>
#include <vector>

namespace ulotask {

// The largest text that is read: far more than the task list of a handset, and small enough to be
// held in memory.
inline constexpr std::size_t largestCalendar = 64UL * 1024 * 1024;

// Returns the bytes of a file, or of standard input for "-". Throws a Failure if it cannot be read
// or is larger than `limit` bytes.
std::string readFile(const std::string& name, std::size_t limit);

// Appends the to-dos of a file, or of standard input for "-", to `tasks`. Throws a Failure, and
// leaves `tasks` empty, if there are none or the text is not complete. Returns a sentence for each
// property that was left out because it is too large.
std::vector<std::string> readCalendar(const std::string& name, QList<ZTASK_ENG_Task>& tasks);

// Returns the tasks as one vCalendar text. Throws a Failure if it cannot be written.
std::string calendarText(const QList<ZTASK_ENG_Task>& tasks);

// Writes the bytes to a file. An existing file is replaced after all bytes have reached the disk;
// if that fails, it is left unchanged. A file of the data directory is refused (see store_files.h).
void writeFile(const std::string& name, const std::string& bytes);

// The name of a file in messages.
std::string shownName(const std::string& name);

}  // namespace ulotask
