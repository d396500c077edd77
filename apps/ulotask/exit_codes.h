// The exit codes of the program. --help prints the table of their meanings.
#pragma once

#include <stdexcept>
#include <string>

namespace ulotask {

enum class Exit : int {
  ok = 0,
  failed = 1,
  usage = 2,
  notFound = 3,
  unreadable = 4,
  notCalendar = 5,
  noTodo = 6,
  incomplete = 7,
  tooLarge = 8,
  storeFull = 9,
  storeClosed = 10,
  storeUnsound = 11,
  notWritten = 12,
  badScript = 13,
  malformed = 14,
  exists = 15,
  refused = 16,
  inUse = 17,
  fileExists = 18,
  notStore = 19,
};

struct ExitMeaning {
  Exit code;
  const char* meaning;
};

inline constexpr ExitMeaning exitMeanings[] = {
    {Exit::ok, "done"},
    {Exit::failed, "the store or a library failed; the log says why"},
    {Exit::usage, "the command line is wrong"},
    {Exit::notFound, "no task has this UID, or no category this name"},
    {Exit::unreadable, "a file can't be read"},
    {Exit::notCalendar, "a file is not a calendar file"},
    {Exit::noTodo, "a calendar file holds no to-do"},
    {Exit::incomplete, "a calendar file is truncated"},
    {Exit::tooLarge, "a file is larger than import accepts"},
    {Exit::storeFull, "the store is full"},
    {Exit::storeClosed, "the store can't be opened"},
    {Exit::storeUnsound, "db check found something wrong"},
    {Exit::notWritten, "the output can't be written, or would go into the data directory"},
    {Exit::badScript, "a script or statement is wrong"},
    {Exit::malformed, "a calendar file is not well formed, or exceeds a limit"},
    {Exit::exists, "a category has this name already"},
    {Exit::refused, "the code of the lock is wrong, or it is too early to try again"},
    {Exit::inUse, "another program has the store open"},
    {Exit::fileExists, "a file exists already"},
    {Exit::notStore, "a file is not a sound store, or nothing can be read from it"},
};

// Ends the program with `code` after printing `message`, which names what failed and why.
class Failure : public std::runtime_error {
public:
  Failure(Exit code, const std::string& message) : std::runtime_error(message), code_(code) {}
  [[nodiscard]] Exit code() const { return code_; }

private:
  Exit code_;
};

}  // namespace ulotask
