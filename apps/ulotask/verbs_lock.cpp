#include "app_lock.h"
#include "code_input.h"
#include "exit_codes.h"
#include "session.h"
#include "text.h"
#include "verbs.h"

#include <string>

namespace ulotask {
namespace {

using std::chrono::milliseconds;

std::string seconds(milliseconds wait) {
  const auto whole = std::chrono::ceil<std::chrono::seconds>(wait).count();
  return counted(static_cast<std::size_t>(whole), "second");
}

void requireLock(bool done, const char* what) {
  if (!done)
    throw Failure(Exit::failed, std::string("the lock can't be ") + what + "; the log says why");
}

ulo::AppLock::State stateOf(const ulo::AppLock& lock) {
  const ulo::AppLock::State state = lock.state();
  requireLock(state != ulo::AppLock::State::damaged, "read");
  return state;
}

// Asks for the present code. Fails with Exit::refused if the answer is wrong.
void requireCode(ulo::AppLock& lock) {
  const auto tooEarly = [](milliseconds wait) {
    return Failure(Exit::refused, "too many wrong codes; next try in " + seconds(wait));
  };
  if (const milliseconds wait = lock.wait(); wait.count() > 0)
    throw tooEarly(wait);
  const auto result = lock.check(*readCode("Present code"));
  switch (result.answer) {
  case ulo::AppLock::Answer::right:
    return;
  case ulo::AppLock::Answer::tooEarly:
    throw tooEarly(result.wait);
  case ulo::AppLock::Answer::failed:
    requireLock(false, "checked");
    break;
  case ulo::AppLock::Answer::wrong:
    break;
  }
  throw Failure(Exit::refused, result.wait.count() == 0
                                   ? "the code is wrong"
                                   : "the code is wrong; next try in " + seconds(result.wait));
}

void setLock(Session& session) {
  ulo::AppLock lock;
  if (stateOf(lock) == ulo::AppLock::State::locked)
    requireCode(lock);
  const auto code = readCode("New code");
  if (code->characters() < ulo::LockCode::fewest)
    throw Failure(Exit::usage, "the code has fewer than " + std::to_string(ulo::LockCode::fewest) +
                                   " characters");
  if (isTyped() && !(*readCode("New code again") == *code))
    throw Failure(Exit::usage, "the codes differ");
  requireLock(lock.set(*code), "set");
  session.output.line("The lock is set.");
}

void clearLock(Session& session) {
  ulo::AppLock lock;
  if (stateOf(lock) == ulo::AppLock::State::open) {
    session.output.line("There is no lock.");
    return;
  }
  requireCode(lock);
  requireLock(lock.clear(), "cleared");
  session.output.line("The lock is cleared.");
}

void showLock(Session& session) {
  const ulo::AppLock lock;
  const milliseconds wait = lock.wait();
  if (stateOf(lock) == ulo::AppLock::State::open)
    session.output.line("There is no lock.");
  else if (wait.count() == 0)
    session.output.line("The lock is set.");
  else
    session.output.line("The lock is set; next try in " + seconds(wait) + ".");
}

}  // namespace

void addLockVerbs(Verb& program, Session& session) {
  Verb group = program.addGroup("lock", "Lock the task application with a code");

  Verb verb = group.addVerb("set", "Set the lock, or change its code");
  verb.footer(
      "Asks for the code on a terminal; elsewhere it is the first line of standard "
      "input.\nIf the lock is set, asks for the present code first. A code has " +
      std::to_string(ulo::LockCode::fewest) + " to " + std::to_string(ulo::LockCode::most) +
      "\ncharacters. After three wrong codes, each further one makes the next wait longer.\n"
      "Example:\n"
      "  ulotask lock set");
  verb.run([&session] { setLock(session); });

  verb = group.addVerb("clear", "Remove the lock");
  verb.footer("Asks for the present code as set does.\n"
              "Example:\n"
              "  ulotask lock clear");
  verb.run([&session] { clearLock(session); });

  verb = group.addVerb("status", "Show whether the lock is set");
  verb.footer("Example:\n"
              "  ulotask lock status");
  verb.run([&session] { showLock(session); });
}

}  // namespace ulotask
