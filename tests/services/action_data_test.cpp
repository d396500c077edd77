// Requests to applications, which are replaced with scripts.

#include "AM_ActionData.h"

#include "ZApplication.h"
#include "gui_test.h"
#include "log_capture.h"
#include "temporary_directory.h"
#include "temporary_files.h"

#include <QProcess>
#include <QTest>
#include <QTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using testing::HasSubstr;
using ulo::TemporaryFiles;

constexpr char editor[] = "{11111111-2222-3333-4444-555555555555}";
constexpr std::int64_t day = 24L * 60 * 60;

// A named pipe that synchronizes a script with the test.
class Signal {
public:
  explicit Signal(std::string path) : path_(std::move(path)) {
    mkfifo(path_.c_str(), 0600);
    descriptor_ = open(path_.c_str(), O_RDWR | O_CLOEXEC);
  }
  Signal(const Signal&) = delete;
  Signal& operator=(const Signal&) = delete;
  ~Signal() { close(descriptor_); }

  // Returns a line written by a script, or "" on timeout.
  std::string wait() {
    constexpr int longest = 60'000;
    pollfd state{descriptor_, POLLIN, 0};
    if (poll(&state, 1, longest) != 1)
      return "";
    char text[4096];
    const ssize_t count = read(descriptor_, text, sizeof text);
    return {text, static_cast<std::size_t>(std::max<ssize_t>(0, count))};
  }
  void give() { EXPECT_EQ(write(descriptor_, "\n", 1), 1); }
  [[nodiscard]] const std::string& path() const { return path_; }

private:
  std::string path_;
  int descriptor_ = -1;
};

// Returns whether this process has no child, neither running nor terminated.
bool hasNoChild() {
  siginfo_t child{};
  return waitid(P_ALL, 0, &child, WEXITED | WNOHANG | WNOWAIT) == -1 && errno == ECHILD;
}

class ActionTest : public testing::Test {
protected:
  ActionTest() {
    setenv("XDG_CONFIG_HOME", path("config").c_str(), 1);
    setenv("XDG_STATE_HOME", path("state").c_str(), 1);
    setenv("OUT", path("out").c_str(), 1);
    setenv("DONE", done_.path().c_str(), 1);
    setenv("GO", go_.path().c_str(), 1);
    unsetenv("XDG_CURRENT_DESKTOP");
    std::filesystem::create_directories(path("config/ulo"));
  }
  ~ActionTest() override {
    EXPECT_TRUE(QTest::qWaitFor(hasNoChild, 60'000));
    for (const char* name : {"XDG_CONFIG_HOME", "XDG_STATE_HOME", "OUT", "DONE", "GO", "MAILER"})
      unsetenv(name);
  }

  [[nodiscard]] std::string path(const std::string& name) const { return directory_.path() / name; }
  std::string file(const std::string& name, const std::string& bytes = "text\n") {
    std::ofstream(path(name)) << bytes;
    return path(name);
  }
  [[nodiscard]] std::string read(const std::string& name) const {
    std::ostringstream all;
    all << std::ifstream(path(name)).rdbuf();
    return all.str();
  }
  [[nodiscard]] bool isThere(const std::string& name) const {
    return std::filesystem::exists(path(name));
  }
  // Creates a program from shell lines.
  std::string script(const std::string& name, const std::string& lines) {
    file(name, "#!/bin/sh\n" + lines + "\n");
    chmod(path(name).c_str(), 0700);
    return path(name);
  }
  // Creates a program that writes its arguments, one per line.
  std::string recorder() {
    return script("recorder", "printf '%s\\n' \"$@\" > \"$OUT\"; echo done > \"$DONE\"");
  }
  void entry(const std::string& lines, const std::string& uuid = editor) {
    std::ofstream(path("config/ulo/applications.conf"), std::ios::app) << '[' << uuid << "]\n"
                                                                       << lines << "\n";
  }
  static AM_ActionData request(const std::string& file, const char* uuid = editor) {
    AM_ActionData request;
    request.setOpenAppUuid(uuid);
    request.setAction("SendMMSSMS");
    request.setValue("Files", QString::fromStdString(file));
    return request;
  }
  static AM_ActionData temporary(const std::string& file, const char* uuid = editor) {
    AM_ActionData result = request(file, uuid);
    result.setValue("AutoDelete", "Yes");
    return result;
  }
  // Makes noted files a day older.
  void age() {
    std::ifstream notes(path("state/ulo/temporary-files"));
    std::string all;
    for (std::string time, rest; notes >> time && std::getline(notes, rest);)
      all += std::to_string(std::stoll(time) - day) + rest + "\n";
    std::ofstream(path("state/ulo/temporary-files")) << all;
  }
  // Makes another request, which has no other effect.
  void anotherRequest() {
    LogCapture log;
    EXPECT_FALSE(AM_ActionData().invoke(false));
  }

  TemporaryDirectory directory_;
  Signal done_{directory_.path() / "done"};
  Signal go_{directory_.path() / "go"};
};

TEST_F(ActionTest, PassesValuesToCommand) {
  entry("Exec=" + recorder() + " -a file=%f %s 100%%");
  AM_ActionData request = ActionTest::request(path("Buy $(milk) %f.vcs"));
  request.setValue("Subject", QString::fromUtf8("\"给 妈妈\"\n"));
  EXPECT_TRUE(request.invoke(false));
  EXPECT_EQ(done_.wait(), "done\n");
  EXPECT_EQ(read("out"), "-a\nfile=" + path("Buy $(milk) %f.vcs") + "\n\"给 妈妈\"\n\n100%\n");
}

TEST_F(ActionTest, UsesDesktopComposerByDefault) {
  setenv("MAILER", recorder().c_str(), 1);
  EXPECT_TRUE(request(file("Käse.vcs"), AM_ActionData::composer).invoke(false));
  EXPECT_EQ(done_.wait(), "done\n");
  EXPECT_THAT(read("out"), testing::StartsWith("mailto:?"));
  EXPECT_THAT(read("out"), HasSubstr("attach=" + path("K%C3%A4se.vcs")));
}

TEST_F(ActionTest, EntryReplacesComposer) {
  entry("Exec=" + recorder() + " mine %f", AM_ActionData::composer);
  EXPECT_TRUE(request("/a.vcs", AM_ActionData::composer).invoke(false));
  EXPECT_EQ(done_.wait(), "done\n");
  EXPECT_EQ(read("out"), "mine\n/a.vcs\n");
}

TEST_F(ActionTest, WaitReportsWhetherCommandSucceeded) {
  entry("Exec=" + script("end", "exit $(cat \"$1\")") + " %f");
  LogCapture log;
  EXPECT_TRUE(request(file("code", "0")).invoke(true));
  EXPECT_EQ(log.text(), "");
  EXPECT_FALSE(request(file("code", "3")).invoke(true));
  EXPECT_THAT(log.text(), HasSubstr("/end failed with code 3"));
}

TEST_F(ActionTest, WaitReportsKilledCommand) {
  entry("Exec=" + script("end", "kill -9 $$"));
  LogCapture log;
  EXPECT_FALSE(request("").invoke(true));
  EXPECT_THAT(log.text(), HasSubstr("/end failed with signal 9"));
}

TEST_F(ActionTest, ProcessesEventsWhileWaiting) {
  entry("Exec=" + script("end", "read line < \"$GO\""));
  QTimer::singleShot(0, &application(), [this] { go_.give(); });
  EXPECT_TRUE(request("").invoke(true));
}

TEST_F(ActionTest, ReturnsImmediatelyWithoutWait) {
  for (const char* waits : {"false", "true"}) {
    entry("Exec=" + script("end", "read line < \"$GO\"; echo done > \"$DONE\"") +
          "\nWait=" + waits);
    EXPECT_TRUE(request("").invoke(false));
    go_.give();  // lets the command exit
    EXPECT_EQ(done_.wait(), "done\n");
    std::filesystem::remove(path("config/ulo/applications.conf"));
  }
}

TEST_F(ActionTest, LeavesNoChildProcess) {
  entry("Exec=" + recorder());
  EXPECT_TRUE(request("").invoke(false));
  EXPECT_EQ(done_.wait(), "done\n");
  // The command is not a child of this process, so it need not be waited for.
  EXPECT_TRUE(hasNoChild());
}

TEST_F(ActionTest, LeavesNoChildProcessWithoutEventLoop) {
  entry("Exec=" + recorder() + "\nWait=true");
  bool started = false;
  std::thread([&] { started = request("").invoke(false); }).join();
  EXPECT_TRUE(started);
  EXPECT_EQ(done_.wait(), "done\n");
  EXPECT_TRUE(hasNoChild());
}

TEST_F(ActionTest, ReapsChildProcess) {
  entry("Exec=" + recorder() + "\nWait=true");
  EXPECT_TRUE(temporary(file("a.vcs")).invoke(false));
  EXPECT_TRUE(QTest::qWaitFor([this] { return !isThere("a.vcs"); }, 60'000));
  EXPECT_TRUE(hasNoChild());
}

TEST_F(ActionTest, RunsCommandInSeparateSession) {
  const std::string program =
      script("end", "files=$(readlink /proc/$$/fd/0 /proc/$$/fd/1 /proc/$$/fd/2)\n"
                    "{ cut -d ' ' -f 6 /proc/$$/stat; echo \"$files\"; } > \"$OUT\"\n"
                    "echo done > \"$DONE\"");
  for (const std::string waits : {"false", "true"}) {
    entry("Exec=" + program + "\nWait=" + waits);
    EXPECT_TRUE(request("").invoke(false));
    EXPECT_EQ(done_.wait(), "done\n");
    const std::string session = read("out").substr(0, read("out").find('\n'));
    EXPECT_NE(session, std::to_string(getsid(0)));
    EXPECT_EQ(read("out"), session + "\n/dev/null\n/dev/null\n/dev/null\n");
    std::filesystem::remove(path("config/ulo/applications.conf"));
  }
}

TEST_F(ActionTest, AvailableWithValidEntryOrIfKnown) {
  LogCapture log;
  EXPECT_FALSE(request("", AM_ActionData::synchronizer).isAvailable());
  EXPECT_FALSE(AM_ActionData().isAvailable());
  EXPECT_TRUE(request("", AM_ActionData::composer).isAvailable());
  EXPECT_EQ(log.text(), "");
  entry("Exec=/nowhere/sync", AM_ActionData::synchronizer);
  EXPECT_TRUE(request("", AM_ActionData::synchronizer).isAvailable());
  entry("Exec=a | b");
  EXPECT_FALSE(request("").isAvailable());
  EXPECT_THAT(log.text(), HasSubstr(std::string("entry ") + editor + " is wrong"));
}

TEST_F(ActionTest, LogsUnknownApplicationsAndMissingPrograms) {
  LogCapture log;
  EXPECT_FALSE(request("").invoke(false));
  EXPECT_THAT(log.text(), HasSubstr(std::string("There is no application ") + editor));
  for (const char* waits : {"false", "true"}) {
    entry("Exec=/nowhere/mail\nWait=" + std::string(waits));
    for (const bool wait : {false, true}) {
      LogCapture missing;
      EXPECT_FALSE(request("").invoke(wait)) << waits;
      EXPECT_THAT(missing.text(), HasSubstr("The command /nowhere/mail can't be started: "));
    }
    std::filesystem::remove(path("config/ulo/applications.conf"));
  }
}

TEST_F(ActionTest, KeepsFileWithoutAutoDelete) {
  entry("Exec=" + recorder() + "\nWait=true");
  EXPECT_TRUE(request(file("a.vcs")).invoke(true));
  AM_ActionData no = request(path("a.vcs"));
  no.setValue("AutoDelete", "No");
  EXPECT_TRUE(no.invoke(true));
  EXPECT_TRUE(isThere("a.vcs"));
  EXPECT_FALSE(isThere("state/ulo/temporary-files"));
}

TEST_F(ActionTest, DeletesTemporaryFileWhenWaitCommandExits) {
  entry("Exec=" + script("end", "cat \"$1\" > \"$OUT\"; exit 3") + " %f\nWait=true");
  LogCapture log;
  EXPECT_FALSE(temporary(file("a.vcs")).invoke(true));
  EXPECT_EQ(read("out"), "text\n");
  EXPECT_FALSE(isThere("a.vcs"));
  EXPECT_EQ(read("state/ulo/temporary-files"), "");
}

TEST_F(ActionTest, KeepsTemporaryFileWhileWaitCommandRuns) {
  entry(
      "Exec=" + script("end", "echo done > \"$DONE\"; read line < \"$GO\"; cat \"$1\" > \"$OUT\"") +
      " %f\nWait=true");
  EXPECT_TRUE(temporary(file("a.vcs")).invoke(false));
  EXPECT_EQ(done_.wait(), "done\n");
  QCoreApplication::processEvents();
  EXPECT_TRUE(isThere("a.vcs"));
  go_.give();
  EXPECT_TRUE(QTest::qWaitFor([this] { return !isThere("a.vcs"); }, 60'000));
  EXPECT_EQ(read("out"), "text\n");
}

TEST_F(ActionTest, DeletesTemporaryFileOfOtherCommandsAfterADay) {
  entry("Exec=" + recorder() + " %f");
  for (const bool wait : {false, true}) {
    EXPECT_TRUE(temporary(file("a.vcs")).invoke(wait));
    EXPECT_EQ(done_.wait(), "done\n");
    anotherRequest();
    EXPECT_TRUE(isThere("a.vcs"));
    age();
    anotherRequest();
    EXPECT_FALSE(isThere("a.vcs"));
  }
}

TEST_F(ActionTest, DeletesTemporaryFileOfFailedRequestAfterADay) {
  LogCapture log;
  EXPECT_FALSE(temporary(file("unknown.vcs")).invoke(false));
  entry("Exec=/nowhere/mail\nWait=true");
  EXPECT_FALSE(temporary(file("missing.vcs")).invoke(false));
  EXPECT_TRUE(isThere("unknown.vcs"));
  EXPECT_TRUE(isThere("missing.vcs"));
  age();
  anotherRequest();
  EXPECT_FALSE(isThere("unknown.vcs"));
  EXPECT_FALSE(isThere("missing.vcs"));
}

TEST_F(ActionTest, MissingTemporaryFileDoesNotPreventRequest) {
  entry("Exec=" + recorder() + " %f");
  LogCapture log;
  EXPECT_TRUE(temporary(path("missing.vcs")).invoke(false));
  EXPECT_EQ(done_.wait(), "done\n");
  EXPECT_THAT(log.text(), HasSubstr("missing.vcs can't be noted: No such file or directory"));
}

TEST_F(ActionTest, CommandOutlivesRequestingProgram) {
  for (const std::string waits : {"false", "true"}) {
    for (const char* loop : {"loop", "plain"}) {
      entry("Exec=" +
            script("end", "read line < \"$GO\"; cat \"$1\" > \"$OUT\"; echo done > "
                          "\"$DONE\"") +
            " %f\nWait=" + waits);
      file("a.vcs", waits + loop);
      EXPECT_EQ(QProcess::execute(ULO_ACTION_SENDER,
                                  {editor, QString::fromStdString(path("a.vcs")), loop}),
                0);
      go_.give();
      EXPECT_EQ(done_.wait(), "done\n");
      EXPECT_EQ(read("out"), waits + loop);
      // The requesting program has exited before the command.
      EXPECT_TRUE(isThere("a.vcs"));
      age();
      anotherRequest();
      EXPECT_FALSE(isThere("a.vcs"));
      std::filesystem::remove(path("config/ulo/applications.conf"));
    }
  }
}

TEST_F(ActionTest, QuitEndsWaitButNotCommand) {
  entry("Exec=" + script("end", "read line < \"$GO\"; echo done > \"$DONE\"") + "\nWait=true");
  LogCapture log;
  bool answer = true;
  QTimer::singleShot(0, &application(), [&] {
    QTimer::singleShot(0, &application(), [] { QCoreApplication::quit(); });
    answer = temporary(file("a.vcs")).invoke(true);
  });
  QApplication::exec();
  EXPECT_FALSE(answer);
  EXPECT_THAT(log.text(), HasSubstr("/end is still under way"));
  EXPECT_TRUE(isThere("a.vcs"));
  go_.give();
  EXPECT_EQ(done_.wait(), "done\n");
  EXPECT_TRUE(QTest::qWaitFor([this] { return !isThere("a.vcs"); }, 60'000));
}

}  // namespace
