// Runs the program as its users do: a process with a store, a log and a home of its own.
#pragma once

#include "temporary_directory.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QProcess>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

struct Outcome {
  int code = -1;
  std::string out;
  std::string err;

  // What standard output holds as JSON; fails the test when it is none.
  [[nodiscard]] QJsonArray array() const;
  [[nodiscard]] QJsonObject object() const;
};

// `ulotask arguments...`, which goes on until it is ended; with the object at the latest.
class Running {
public:
  Running(QProcess& process, const QStringList& arguments);
  Running(const Running&) = delete;
  Running& operator=(const Running&) = delete;
  ~Running();

  // The next line; empty when none comes.
  std::string line();
  // Sends a signal and returns the exit code. Fails the test and sends nothing if the program is
  // not running.
  int endBy(int signal);
  int code();

private:
  QProcess& process_;
};

// What is typed once the terminal was sent `prompt`.
struct Typed {
  std::string prompt;
  std::string text;
};

class UlotaskTest : public testing::Test {
  TemporaryDirectory directory_;  // first: the environment names it

protected:
  using Arguments = std::vector<std::string>;

  // Runs `ulotask arguments...` with `input` on standard input.
  Outcome ulotask(const Arguments& arguments, const std::string& input = {});
  // The same on a terminal of so many columns; `out` is what the terminal was sent.
  // Texts are typed one after another. Throws if no pseudo-terminal is available.
  Outcome onTerminal(const Arguments& arguments, int columns, const std::vector<Typed>& typed = {});
  // The same for a line of the shell.
  Outcome shellOnTerminal(const std::string& line, int columns,
                          const std::vector<Typed>& typed = {});
  // Runs a line of the shell in which $ULOTASK is the program.
  Outcome shell(const std::string& line);

  // Gives a process the environment that the program is run in.
  void prepare(QProcess& process) const;

  // Runs the program and expects that it succeeds and says nothing on standard error.
  Outcome succeed(const Arguments& arguments, const std::string& input = {});
  // Adds a task; gives its UID.
  std::string add(const Arguments& arguments);

  // The UIDs in the JSON that the program prints.
  std::vector<int> uids(Arguments arguments);
  // Runs SQL on the store's file, or another database beside it, behind the engine's back.
  void sql(const std::string& text, const std::string& file = "tasks.db");

  // A file of the test's own with these bytes.
  std::string file(const std::string& name, const std::string& bytes);
  [[nodiscard]] std::string path(const std::string& name) const {
    return (directory_.path() / name).string();
  }

  // From here on the store's database may grow to so many pages.
  void limitStore(int pages);
  // From here on the program's monotonic clock goes on by so much whenever it is read.
  void stepClock(int milliseconds);

  // From here on the program finds no library of this name.
  void hideLibrary(const std::string& name);
  // From here on temporary files of an exchange fail: "full", "unwritable" or "foreign".
  void breakTemporaryFiles(const std::string& how);

  // What the program finds in its environment besides PATH and what ctest sets.
  std::map<std::string, std::string> environment_ = {
      {"HOME", path("home")},
      {"ULO_DATA_DIR", path("data")},
      {"XDG_STATE_HOME", path("state")},
      {"XDG_DATA_HOME", path("share")},
  };

private:
  Outcome start(const std::string& program, const Arguments& arguments, const std::string& input);
  Outcome startOnTerminal(const std::string& program, const Arguments& arguments, int columns,
                          const std::vector<Typed>& typed = {});
  void preload(const std::string& library);
};

// A vCalendar text around `content`, its lines ended as phones end them.
std::string calendar(const std::string& content);
// A to-do of these lines.
std::string todo(const std::string& lines);

std::string readWhole(const std::string& path);
