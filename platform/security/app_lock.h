// The application lock, which asks for a code before an application opens.
#pragma once

#include "lock_code.h"
#include "lock_time.h"
#include "ulo/data_directory.h"

#include <functional>
#include <optional>

namespace ulo {

// One lock guards all of the user's applications. It is kept in the file "lock.json" in the data
// directory, readable only by the user, which holds a hash of the code (argon2id) and the number of
// wrong codes since the last right one.
//
// Three wrong codes are free. Each further one delays the next attempt: by 2 seconds, 4, 8 and so
// on, up to 15 minutes. The delay is measured in time since system start, so changing the clock
// does not shorten it; if the system is restarted, the delay starts again at that moment. An
// attempt is counted as wrong as soon as its check begins: killing the program does not refund it.
//
// Read and write errors are logged and never grant access.
class AppLock {
public:
  enum class State { open, locked, damaged };
  enum class Answer {
    right,  // also if there is no lock
    wrong,
    tooEarly,  // the code was not checked
    failed,    // unknown: the file is damaged or cannot be written, or memory is exhausted
  };
  struct Result {
    Answer answer;
    std::chrono::milliseconds wait;  // until the next code is accepted for checking
  };
  using Clock = std::function<LockTime()>;

  static constexpr char fileName[] = "lock.json";
  static constexpr int freeAttempts = 3;
  static constexpr std::chrono::seconds firstWait{2};
  static constexpr std::chrono::seconds longestWait{15 * 60};

  // Uses the lock in `directory`. If `directory` is empty because there is no data directory, the
  // lock counts as damaged.
  explicit AppLock(std::string directory = dataDirectory(), Clock clock = lockTime)
      : directory_(std::move(directory)), clock_(std::move(clock)) {}

  [[nodiscard]] State state() const;
  // Time until the next attempt is possible; 0 if there is no lock.
  [[nodiscard]] std::chrono::milliseconds wait() const;
  // Takes about a tenth of a second.
  [[nodiscard]] Result check(const LockCode& code);

  // Both return false and leave the lock unchanged on failure. Neither asks for the current code;
  // that is the caller's responsibility.
  [[nodiscard]] bool set(const LockCode& code);
  [[nodiscard]] bool clear();

private:
  struct Record;

  [[nodiscard]] std::string path() const { return directory_ + '/' + fileName; }
  [[nodiscard]] State read(Record& record) const;
  [[nodiscard]] bool write(const Record& record) const;
  [[nodiscard]] std::chrono::milliseconds waitOf(const Record& record) const;
  [[nodiscard]] std::optional<Result> beginAttempt(std::string& hash);
  [[nodiscard]] std::chrono::milliseconds endAttempt(bool right);

  std::string directory_;
  Clock clock_;
};

}  // namespace ulo
