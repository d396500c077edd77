// Runs the program as its users do: as a process with its own store, log and home directory.
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

  // Standard output as JSON. Fails the test if it is not JSON.
  [[nodiscard]] QJsonArray array() const;
  [[nodiscard]] QJsonObject object() const;
};

// `ulotask arguments...`, running until it is ended, at the latest by the destructor.
class Running {
public:
  Running(QProcess& process, const QStringList& arguments);
  Running(const Running&) = delete;
  Running& operator=(const Running&) = delete;
  ~Running();

  // The next line; empty if there is none.
  std::string line();
  // Sends a signal and returns the exit code. Fails the test and sends nothing if the program is
  // not running.
  int endBy(int signal);
  int code();

private:
  QProcess& process_;
};

// The text that is typed after the terminal has received `prompt`.
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
  // The same on a terminal of this width; `out` is what the terminal received.
  Outcome onTerminal(const Arguments& arguments, int columns, const std::vector<Typed>& typed = {});
  // The same for a line of the shell.
  Outcome shellOnTerminal(const std::string& line, int columns,
                          const std::vector<Typed>& typed = {});
  // Runs a line of the shell in which $ULOTASK is the program.
  Outcome shell(const std::string& line);

  // Sets the environment in which the program runs.
  void prepare(QProcess& process) const;

  // Runs the program, and expects success and no output on standard error.
  Outcome succeed(const Arguments& arguments, const std::string& input = {});
  // Adds a task. Returns its UID.
  std::string add(const Arguments& arguments);

  // The UIDs in the JSON that the program prints.
  std::vector<int> uids(Arguments arguments);
  // Runs SQL on the store's file, or on another database beside it, without the engine.
  void sql(const std::string& text, const std::string& file = "tasks.db");

  // Creates a file with these bytes.
  std::string file(const std::string& name, const std::string& bytes);
  [[nodiscard]] std::string path(const std::string& name) const {
    return (directory_.path() / name).string();
  }

  // Limits the store's database to this number of pages from now on.
  void limitStore(int pages);
  // Makes the program's clocks of the time since boot advance by this step on every reading, from
  // now on. Each program starts at the same time.
  void stepClock(int milliseconds);

  // Hides the library of this name from the program, from now on.
  void hideLibrary(const std::string& name);
  // Makes operations on temporary files of an exchange fail from now on: "full", "unwritable" or
  // "foreign".
  void breakTemporaryFiles(const std::string& how);

  // The environment of the program besides PATH and the variables of ctest.
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

// A vCalendar text with this content and the line ends that phones write.
std::string calendar(const std::string& content);
// A to-do with these lines.
std::string todo(const std::string& lines);

std::string readWhole(const std::string& path);
