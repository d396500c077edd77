// vCalendar texts in files and pipes.
#pragma once

#include "ZTASK_ENG_Task.h"

#include <cstddef>
#include <string>
#include <vector>

namespace ulotask {

// The largest text that is read: far more than a handset's whole task list, little enough to be
// held in memory.
inline constexpr std::size_t largestCalendar = 64UL * 1024 * 1024;

// The bytes of a file, or of standard input for "-". A Failure when it can't be read or holds
// more than `limit` bytes.
std::string readFile(const std::string& name, std::size_t limit);

// Puts the to-dos of a file, or of standard input for "-", into `tasks`. A Failure that names the
// file and the reason when there are none or the text isn't whole; `tasks` is empty then. Returns a
// sentence for each property that is too large and left out.
std::vector<std::string> readCalendar(const std::string& name, QList<ZTASK_ENG_Task>& tasks);

// Returns the tasks as one vCalendar text. A Failure if it cannot be written.
std::string calendarText(const QList<ZTASK_ENG_Task>& tasks);

// Writes the bytes to a file. An existing file is replaced after all bytes have reached the disk;
// if that fails, it is left unchanged. A file of the data directory is refused (see store_files.h).
void writeFile(const std::string& name, const std::string& bytes);

// How messages name a file.
std::string shownName(const std::string& name);

}  // namespace ulotask
