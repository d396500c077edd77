// The lock that asks for a code before an application opens.
#pragma once

#include "data_directory.h"
#include "lock_code.h"
#include "lock_time.h"

#include <functional>
#include <optional>

namespace ulo {

// One lock for all applications of the user, in the file "lock.json" of the data directory, which
// only the user can read. It keeps a hash of the code (argon2id) and how often a wrong one was
// given since the last right one.
//
// Three wrong codes are free. Each one after them makes the next code wait: 2 seconds, 4, 8 and so
// on, 15 minutes at most. The waiting counts in time since the system's start, so no change of the
// clock shortens it; when the system was started meanwhile, it begins anew with that. A code
// counts as wrong from the moment on in which its check begins: nobody saves it by ending the
// program.
//
// What can't be read or written is logged and never lets anybody in.
class AppLock {
public:
  enum class State { open, locked, damaged };
  enum class Answer {
    right,  // also when there is no lock
    wrong,
    tooEarly,  // not looked at
    failed,    // can't be said: the file is damaged or can't be written, no memory
  };
  struct Result {
    Answer answer;
    std::chrono::milliseconds wait;  // until the next code is looked at
  };
  using Clock = std::function<LockTime()>;

  static constexpr char fileName[] = "lock.json";
  static constexpr int freeAttempts = 3;
  static constexpr std::chrono::seconds firstWait{2};
  static constexpr std::chrono::seconds longestWait{15 * 60};

  // In the data directory; `directory` is empty where there is none, and the lock is damaged then.
  explicit AppLock(std::string directory = dataDirectory(), Clock clock = lockTime)
      : directory_(std::move(directory)), clock_(std::move(clock)) {}

  [[nodiscard]] State state() const;
  // Until the next code is looked at; 0 when there is no lock.
  [[nodiscard]] std::chrono::milliseconds wait() const;
  // Takes about a tenth of a second.
  [[nodiscard]] Result check(const LockCode& code);

  // Both leave the lock as it was when they answer false. Asking for the code that it has is up to
  // the caller.
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
