// Tests for the log function, the ports and the sinks.

#include "aplog.h"
#include "log_capture.h"
#include "module_log.h"
#include "other_process.h"
#include "temporary_directory.h"
#include "ulo/log_sink.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

void (*logFunctionOfOtherSource())(int, const char*, ...);

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::MatchesRegex;
using testing::Not;
using testing::SizeIs;

std::string contentOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  std::ostringstream all;
  all << stream.rdbuf();
  return all.str();
}

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

// Returns "program. one" for "2006-03-05T12:00:00.123+01:00 program[17] one", and other lines
// unchanged.
std::string withoutTime(const std::string& line) {
  const std::string time = "0000-00-00T00:00:00.000+00:00 ";
  for (std::size_t i = 0; i < time.size(); ++i) {
    const char c = i < line.size() ? line[i] : '\0';
    if (!(isDigit(time[i]) ? isDigit(c) : c == time[i] || (time[i] == '+' && c == '-')))
      return line;
  }
  const std::size_t bracket = line.find('[');
  const std::size_t end = line.find("] ");
  if (bracket == std::string::npos || end == std::string::npos || end < bracket + 2 ||
      !std::all_of(line.begin() + static_cast<long>(bracket) + 1,
                   line.begin() + static_cast<long>(end), isDigit))
    return line;
  return line.substr(time.size(), bracket - time.size()) + ". " + line.substr(end + 2);
}

// Returns the lines of a log, without times and with a dot in place of the process. A last line
// without an end is included and marked.
std::vector<std::string> messagesOf(const std::string& log) {
  std::vector<std::string> result;
  std::istringstream stream(log);
  for (std::string line; std::getline(stream, line);) {
    if (stream.eof())
      line += "(no line end)";
    result.push_back(withoutTime(line));
  }
  return result;
}

// Runs `work` in a separate process and returns what it writes to a file descriptor.
template <typename Work> std::string outputOf(int descriptor, Work work) {
  const TemporaryDirectory directory;
  const fs::path file = directory.path() / "output";
  std::fflush(nullptr);
  EXPECT_EQ(inOtherProcess([&] {
              const int output = open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
              dup2(output, descriptor);
              work();
              return 0;
            }),
            0);
  return contentOf(file);
}

// The log function

TEST(ModuleLog, WritesMessageUnchanged) {
  LogCapture log;
  moduleLog(logError, "a %d", 1);
  moduleLog(logError, "%s\n", "b");
  EXPECT_EQ(log.text(), "a 1b\n");
}

TEST(ModuleLog, WritesUpToLevelSeven) {
  LogCapture log;
  for (int level = -1; level <= 9; ++level)
    moduleLog(level, "%d,", level);
  EXPECT_EQ(log.text(), "-1,0,1,2,3,4,5,6,7,");
  EXPECT_EQ(logError, 3);
  EXPECT_EQ(logDump, 7);
  EXPECT_EQ(logTrace, 8);
}

TEST(ModuleLog, ErrorsNameSourcePathInTree) {
  LogCapture log;
  const int line = __LINE__ + 1;
  ULO_LOG_ERROR("Open db failed! [ret=%d]", 7);
  ULO_LOG_ERROR("plain");
  EXPECT_EQ(log.text(), "(tests/platform/log_test.cpp:" + std::to_string(line) +
                            ")Open db failed! [ret=7](tests/platform/log_test.cpp:" +
                            std::to_string(line + 1) + ")plain");
}

TEST(ModuleLog, WritesToStandardOutputImmediatelyWithoutSink) {
  EXPECT_EQ(outputOf(STDOUT_FILENO,
                     [] {
                       libaplog_to_module_ptr = nullptr;
                       moduleLog(logError, "one %d", 1);
                       moduleLog(logTrace, "never");
                       moduleLog(logDump, "two");
                       // The process exits without flushing.
                     }),
            "one 1two");
}

TEST(ModuleLog, EachSourceHasItsOwnCopy) {
  const auto other = logFunctionOfOtherSource();
  EXPECT_NE(other, static_cast<void (*)(int, const char*, ...)>(moduleLog));
  LogCapture log;
  other(logError, "from %s", "there");
  EXPECT_EQ(log.text(), "from there");
}

TEST(ModuleLog, MessagesOfThreadsDoNotMix) {
  LogCapture log;
  std::vector<std::thread> threads;
  threads.reserve(4);
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([i] {
      for (int n = 0; n < 500; ++n)
        moduleLog(logError, "<%d %s %d>", i, "and more of it", n);
    });
  for (std::thread& thread : threads)
    thread.join();
  const std::string text = log.text();
  std::set<std::string> messages;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = text.find('>', at);
    ASSERT_NE(end, std::string::npos);
    const std::string message = text.substr(at, end + 1 - at);
    EXPECT_THAT(message, MatchesRegex("<[0-3] and more of it [0-9]+>"));
    EXPECT_TRUE(messages.insert(message).second) << message;
    at = end + 1;
  }
  EXPECT_THAT(messages, SizeIs(2000));
}

// Ports

TEST(LogPorts, HaveDistinctHandles) {
  EXPECT_EQ(ulo_log_open_ports(), 0);
  std::set<int> handles;
  for (int i = 0; i < 5; ++i)
    handles.insert(_aplog_port_open_orig("task_eng_port", 0));
  EXPECT_THAT(handles, SizeIs(5));
  EXPECT_EQ(handles.count(0), 0U);
  EXPECT_EQ(ulo_log_open_ports(), 5);
  for (const int handle : handles)
    _aplog_port_close_orig(handle);
  EXPECT_EQ(ulo_log_open_ports(), 0);
}

TEST(LogPorts, ClosingUnknownPortDoesNothing) {
  const int port = _aplog_port_open_orig(nullptr, 0);
  _aplog_port_close_orig(0);
  _aplog_port_close_orig(-1);
  _aplog_port_close_orig(port + 1);
  EXPECT_EQ(ulo_log_open_ports(), 1);
  _aplog_port_close_orig(port);
  _aplog_port_close_orig(port);
  EXPECT_EQ(ulo_log_open_ports(), 0);
  const int next = _aplog_port_open_orig("task_ui_port", 0);
  EXPECT_NE(next, port);  // closing an old handle again cannot close a new port
  _aplog_port_close_orig(next);
}

// Sinks. Each is opened in a separate process because it exists for the rest of the process.

class LogSink : public testing::Test {
protected:
  // Returns the exit code, 0 if opening the sink had the expected result.
  template <typename Work> static int withSink(const std::string& setting, bool opens, Work work) {
    return inOtherProcess([&] {
      setenv("ULO_LOG", setting.c_str(), 1);
      if (ulo::openLogSink("program") != opens)
        return 1;
      work();
      return 0;
    });
  }
  [[nodiscard]] fs::path file(const char* name = "the.log") const {
    return directory_.path() / name;
  }

  TemporaryDirectory directory_;
};

TEST_F(LogSink, StandardError) {
  const std::string log = outputOf(STDERR_FILENO, [] {
    setenv("ULO_LOG", "stderr", 1);
    ulo::openLogSink("program");
    moduleLog(logError, "one");
    moduleLog(logTrace, "never");
    moduleLog(logDump, "two\n");
    moduleLog(logError, "%s", "");
  });
  EXPECT_THAT(messagesOf(log), ElementsAre("program. one", "program. two"));
}

TEST_F(LogSink, None) {
  const auto work = [] {
    setenv("ULO_LOG", "none", 1);
    if (!ulo::openLogSink("program") || libaplog_to_module_ptr == nullptr)
      std::abort();
    moduleLog(logError, "one");
  };
  EXPECT_EQ(outputOf(STDERR_FILENO, work), "");
  EXPECT_EQ(outputOf(STDOUT_FILENO, work), "");
}

TEST_F(LogSink, SystemLogOpens) {
  EXPECT_EQ(withSink("syslog", true, [] { moduleLog(logError, "a test's %s", "message\n"); }), 0);
}

TEST_F(LogSink, File) {
  EXPECT_EQ(withSink(file(), true, [] { moduleLog(logError, "one"); }), 0);
  EXPECT_EQ(withSink(file(), true, [] { moduleLog(logError, "two"); }), 0);
  EXPECT_THAT(messagesOf(contentOf(file())), ElementsAre("program. one", "program. two"));
  EXPECT_EQ(fs::status(file()).permissions(), fs::perms(0600));
}

TEST_F(LogSink, NamesProcess) {
  pid_t process = 0;
  process = startProcess([&] {
    setenv("ULO_LOG", file().c_str(), 1);
    ulo::openLogSink("program");
    moduleLog(logError, "one");
    // A child writes to the same sink with its own process id.
    return inOtherProcess([] {
      moduleLog(logError, "two");
      return 0;
    });
  });
  EXPECT_EQ(waitFor(process), 0);
  const std::string log = contentOf(file());
  const std::string own = " program[" + std::to_string(process) + "] ";
  EXPECT_THAT(log, testing::HasSubstr(own + "one\n"));
  EXPECT_THAT(log, Not(testing::HasSubstr(own + "two\n")));
  EXPECT_THAT(messagesOf(log), ElementsAre("program. one", "program. two"));
}

TEST_F(LogSink, OffsetHasSignHoursAndMinutes) {
  EXPECT_EQ(inOtherProcess([&] {
              setenv("ULO_LOG", file().c_str(), 1);
              ulo::openLogSink("program");
              for (const char* zone : {"TST3:30", "UTC0", "TST-12:45"}) {
                setenv("TZ", zone, 1);
                moduleLog(logError, "%s", zone);
              }
              const std::string stamp = R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3})";
              const std::regex lines(stamp + R"(-03:30 program\[\d+\] TST3:30\n)" + stamp +
                                     R"(Z program\[\d+\] UTC0\n)" + stamp +
                                     R"(\+12:45 program\[\d+\] TST-12:45\n)");
              return std::regex_match(contentOf(file()), lines) ? 0 : 1;
            }),
            0);
}

TEST_F(LogSink, TimeFollowsClockFromSecondToSecond) {
  EXPECT_EQ(inOtherProcess([&] {
              setenv("ULO_LOG", file().c_str(), 1);
              ulo::openLogSink("program");
              const auto seconds = [] {
                timespec now{};
                clock_gettime(CLOCK_REALTIME, &now);
                return now.tv_sec;
              };
              moduleLog(logError, "one");
              for (const std::time_t logged = seconds(); seconds() <= logged;)
                usleep(10000);
              moduleLog(logError, "two");
              constexpr std::size_t toSeconds = 19;  // 2006-03-05T12:00:00
              const std::string lines = contentOf(file());
              const std::string second = lines.substr(lines.find('\n') + 1);
              return second.substr(0, toSeconds) > lines.substr(0, toSeconds) ? 0 : 1;
            }),
            0);
}

TEST_F(LogSink, TimeIsLocalWithOffset) {
  EXPECT_EQ(inOtherProcess([&] {
              setenv("TZ", "TST-5:30", 1);
              tzset();
              setenv("ULO_LOG", file().c_str(), 1);
              ulo::openLogSink("program");
              // Not std::time: its clock lags behind the one that the sink uses.
              using Clock = std::chrono::system_clock;
              const std::time_t before = Clock::to_time_t(Clock::now());
              moduleLog(logError, "one");
              const std::time_t after = Clock::to_time_t(Clock::now());
              const std::string line = contentOf(file());
              for (std::time_t second = before; second <= after; ++second) {
                tm local{};
                localtime_r(&second, &local);
                char expected[32];
                std::strftime(expected, sizeof expected, "%Y-%m-%dT%H:%M:%S.", &local);
                if (line.rfind(expected, 0) == 0 && line.substr(23, 7) == "+05:30 ")
                  return 0;
              }
              return 1;
            }),
            0);
}

TEST_F(LogSink, DefaultFileIsInStateDirectory) {
  for (const char* setting : {"", static_cast<const char*>(nullptr)}) {
    const fs::path state = directory_.path() / (setting == nullptr ? "unset" : "empty") / "state";
    EXPECT_EQ(inOtherProcess([&] {
                setting == nullptr ? unsetenv("ULO_LOG") : setenv("ULO_LOG", setting, 1);
                setenv("XDG_STATE_HOME", state.c_str(), 1);
                if (!ulo::openLogSink("program"))
                  return 1;
                moduleLog(logError, "one");
                return 0;
              }),
              0);
    const fs::path file = state / "ulo" / "program.log";
    EXPECT_THAT(messagesOf(contentOf(file)), ElementsAre("program. one"));
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0600));
    EXPECT_EQ(fs::status(state / "ulo").permissions(), fs::perms(0700));
  }
}

TEST_F(LogSink, DefaultFileIsInHome) {
  for (const char* state : {"", static_cast<const char*>(nullptr)}) {
    const fs::path home = directory_.path() / (state == nullptr ? "unset" : "empty");
    EXPECT_EQ(inOtherProcess([&] {
                unsetenv("ULO_LOG");
                state == nullptr ? unsetenv("XDG_STATE_HOME") : setenv("XDG_STATE_HOME", state, 1);
                setenv("HOME", home.c_str(), 1);
                if (!ulo::openLogSink("program"))
                  return 1;
                moduleLog(logError, "one");
                return 0;
              }),
              0);
    EXPECT_THAT(messagesOf(contentOf(home / ".local/state/ulo/program.log")),
                ElementsAre("program. one"));
  }
}

TEST_F(LogSink, ShowsControlCharacters) {
  EXPECT_EQ(withSink(file(), true,
                     [] {
                       std::string all;
                       for (int byte = 1; byte < 0x20; ++byte)
                         all += static_cast<char>(byte);
                       moduleLog(logError, "%s|\x7F|\xC3\xA9", all.c_str());
                       moduleLog(logError, "%c|", 0);
                       moduleLog(logError, "\n\n");
                     }),
            0);
  std::string expected = "program. ";
  for (int byte = 1; byte < 0x20; ++byte) {
    char shown[8];
    std::snprintf(shown, sizeof shown, "\\x%02X", static_cast<unsigned>(byte));
    expected += shown;
  }
  EXPECT_THAT(messagesOf(contentOf(file())),
              ElementsAre(expected + "|\\x7F|\xC3\xA9", "program. \\x00|", "program. \\x0A"));
}

// Some programs treat U+0085 as a line end, and U+009B starts a terminal command.
TEST_F(LogSink, ShowsControlCharactersBeyondAscii) {
  EXPECT_EQ(withSink(file(), true,
                     [] {
                       moduleLog(logError, "\xC2\x80\xC2\x85\xC2\x9F|\xC2\xA0\xC3\x9B\xE4\xBB\x80");
                     }),
            0);
  EXPECT_THAT(messagesOf(contentOf(file())),
              ElementsAre("program. \xC2\\x80\xC2\\x85\xC2\\x9F|\xC2\xA0\xC3\x9B\xE4\xBB\x80"));
}

TEST_F(LogSink, TextCannotForgeLine) {
  const std::string forged = "x\n2006-03-05T12:00:00.123+01:00 program[1] forged\r\nmore\n";
  EXPECT_EQ(withSink(file(), true, [&] { moduleLog(logError, "%s", forged.c_str()); }), 0);
  EXPECT_THAT(messagesOf(contentOf(file())),
              ElementsAre("program. x\\x0A2006-03-05T12:00:00.123+01:00 program[1] "
                          "forged\\x0D\\x0Amore"));
}

TEST_F(LogSink, WritesLongMessagesInOneLine) {
  for (const std::size_t size : {1000UL, 5000UL, 60000UL}) {
    const fs::path log = file(std::to_string(size).c_str());
    const std::string message(size, 'x');
    EXPECT_EQ(withSink(log, true, [&] { moduleLog(logDump, "%s", message.c_str()); }), 0);
    EXPECT_TRUE(messagesOf(contentOf(log)) == std::vector<std::string>{"program. " + message})
        << size;
  }
}

TEST_F(LogSink, ContinuesLongerMessagesInMarkedLines) {
  const std::string message(200000, 'x');
  EXPECT_EQ(withSink(file(), true,
                     [&] {
                       moduleLog(logDump, "%s", message.c_str());
                       moduleLog(logError, "next");
                     }),
            0);
  std::vector<std::string> lines = messagesOf(contentOf(file()));
  ASSERT_GE(lines.size(), 3U);
  EXPECT_EQ(lines.back(), "program. next");
  lines.pop_back();
  std::string joined = lines.front().substr(std::string("program. ").size());
  const std::string goesOn = "program. ... ";
  for (std::size_t i = 1; i < lines.size(); ++i) {
    ASSERT_EQ(lines[i].substr(0, goesOn.size()), goesOn);
    joined += lines[i].substr(goesOn.size());
  }
  EXPECT_TRUE(joined == message);
}

TEST_F(LogSink, RotatesFullFile) {
  for (const int excess : {-1, 0, 1}) {
    SCOPED_TRACE(excess);
    const fs::path log = file(std::to_string(excess).c_str());
    const fs::path old = log.string() + ".1";
    std::ofstream(old) << "older\n";
    EXPECT_EQ(withSink(log, true,
                       [&] {
                         moduleLog(logError, "one");
                         const auto line = fs::file_size(log);
                         fs::resize_file(
                             log, static_cast<std::uintmax_t>(ulo::logFileLimit + excess) - line);
                         moduleLog(logError, "two");
                       }),
              0);
    if (excess <= 0) {
      EXPECT_EQ(static_cast<long>(fs::file_size(log)), ulo::logFileLimit + excess);
      EXPECT_EQ(contentOf(old), "older\n");
    } else {
      EXPECT_THAT(messagesOf(contentOf(log)), ElementsAre("program. two"));
      EXPECT_EQ(fs::status(log).permissions(), fs::perms(0600));
      EXPECT_GT(static_cast<long>(fs::file_size(old)), ulo::logFileLimit - 100);
      EXPECT_EQ(messagesOf(contentOf(old).substr(0, 60)).front().substr(0, 12), "program. one");
    }
  }
}

TEST_F(LogSink, RotatesFullFileFromAnyDirectory) {
  EXPECT_EQ(inOtherProcess([&] {
              fs::current_path(directory_.path());
              setenv("ULO_LOG", "the.log", 1);
              ulo::openLogSink("program");
              moduleLog(logError, "one");
              fs::resize_file("the.log", ulo::logFileLimit);
              fs::current_path("/");
              moduleLog(logError, "two");
              return 0;
            }),
            0);
  EXPECT_THAT(messagesOf(contentOf(file())), ElementsAre("program. two"));
  EXPECT_EQ(static_cast<long>(fs::file_size(file("the.log.1"))), ulo::logFileLimit);
}

TEST_F(LogSink, ContinuesAfterFileWasRotatedOrRemovedByAnother) {
  EXPECT_EQ(withSink(file(), true,
                     [&] {
                       moduleLog(logError, "one");
                       fs::remove(file());
                       moduleLog(logError, "two");
                       // The file is full and was renamed.
                       fs::rename(file(), file("moved"));
                       fs::resize_file(file("moved"), ulo::logFileLimit);
                       std::ofstream(file()) << "";
                       moduleLog(logError, "three");
                     }),
            0);
  EXPECT_THAT(messagesOf(contentOf(file())), ElementsAre("program. three"));
  EXPECT_FALSE(fs::exists(file("the.log.1")));
  EXPECT_EQ(messagesOf(contentOf(file("moved"))).front(), "program. two");
}

TEST_F(LogSink, KeepsFullFileIfNoNewOneCanBeOpened) {
  EXPECT_EQ(withSink(file(), true,
                     [&] {
                       fs::resize_file(file(), ulo::logFileLimit);
                       fs::rename(file(), file("moved"));
                       fs::create_directory(file());
                       moduleLog(logError, "one");
                       fs::remove(file());
                       moduleLog(logError, "two");
                     }),
            0);
  EXPECT_THAT(messagesOf(contentOf(file("moved")).substr(ulo::logFileLimit)),
              ElementsAre("program. one"));
  EXPECT_THAT(messagesOf(contentOf(file())), ElementsAre("program. two"));
}

// A forked child shares the file and the lock on it.
TEST_F(LogSink, RotationLeavesNoLock) {
  EXPECT_EQ(withSink(file(), true,
                     [&] {
                       int ends[2];
                       if (pipe(ends) != 0)
                         std::abort();
                       const pid_t child = startProcess([&] {
                         close(ends[1]);
                         char byte = 0;
                         return static_cast<int>(read(ends[0], &byte, 1));
                       });
                       fs::resize_file(file(), ulo::logFileLimit);
                       moduleLog(logError, "one");
                       const int old = open(file("the.log.1").c_str(), O_RDONLY | O_CLOEXEC);
                       if (flock(old, LOCK_EX | LOCK_NB) != 0)
                         std::abort();
                       close(ends[1]);
                       waitFor(child);
                     }),
            0);
}

TEST_F(LogSink, LinesOfProcessesDoNotMix) {
  constexpr int processes = 4;
  constexpr int lines = 1500;  // together more than one file holds, and less than two
  const std::string filling(200, '.');
  std::vector<pid_t> children;
  children.reserve(processes);
  for (int i = 0; i < processes; ++i)
    children.push_back(startProcess([&] {
      setenv("ULO_LOG", file().c_str(), 1);
      if (!ulo::openLogSink("program"))
        return 1;
      for (int n = 0; n < lines; ++n)
        moduleLog(logError, "<%d %s %d>", i, filling.c_str(), n);
      return 0;
    }));
  for (const pid_t child : children)
    EXPECT_EQ(waitFor(child), 0);
  ASSERT_TRUE(fs::exists(file("the.log.1")));
  std::set<std::string> expected;
  for (int i = 0; i < processes; ++i)
    for (int n = 0; n < lines; ++n)
      expected.insert("program. <" + std::to_string(i) + " " + filling + " " + std::to_string(n) +
                      ">");
  const std::vector<std::string> found =
      messagesOf(contentOf(file("the.log.1")) + contentOf(file()));
  EXPECT_EQ(found.size(), expected.size());
  EXPECT_TRUE(std::set<std::string>(found.begin(), found.end()) == expected);
  for (const char* name : {"the.log", "the.log.1"})
    EXPECT_LT(static_cast<long>(fs::file_size(file(name))),
              ulo::logFileLimit + processes * 300L);  // each may measure before the others write
}

TEST_F(LogSink, FailsIfFileCannotBeOpened) {
  const std::string path = directory_.path() / "missing" / "the.log";
  for (const int stream : {STDOUT_FILENO, STDERR_FILENO})
    EXPECT_EQ(outputOf(stream,
                       [&] {
                         setenv("ULO_LOG", path.c_str(), 1);
                         if (ulo::openLogSink("program") || libaplog_to_module_ptr == nullptr)
                           std::abort();
                         moduleLog(logError, "one");
                       }),
              "");
  EXPECT_FALSE(fs::exists(directory_.path() / "missing"));
  EXPECT_EQ(withSink(directory_.path(), false, [] { moduleLog(logError, "one"); }), 0);
}

TEST_F(LogSink, FailsIfDirectoryCannotBeCreated) {
  std::ofstream(file("way")) << "";
  EXPECT_EQ(inOtherProcess([&] {
              unsetenv("ULO_LOG");
              setenv("XDG_STATE_HOME", file("way").c_str(), 1);
              const bool opened = ulo::openLogSink("program");
              moduleLog(logError, "one");
              return opened ? 1 : 0;
            }),
            0);
}

TEST_F(LogSink, ToleratesFullDisk) {
  EXPECT_EQ(withSink("/dev/full", true,
                     [] {
                       for (int i = 0; i < 3; ++i)
                         moduleLog(logError, "%s", std::string(70000, 'x').c_str());
                       if (std::ferror(libaplog_to_module_ptr) != 0)
                         std::abort();
                     }),
            0);
}

}  // namespace
