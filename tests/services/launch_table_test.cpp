// Tests for the launch table: format, quoting, field codes.

#include "launch_table.h"

#include "AM_ActionData.h"
#include "environment_variable.h"
#include "log_capture.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include <sys/stat.h>

namespace {

using testing::HasSubstr;
using ulo::Launch;
using ulo::LaunchTable;
using ulo::LaunchValues;

const LaunchValues values{"/tmp/a b.vcs", "Subject"};
constexpr char application[] = "{11111111-2222-3333-4444-555555555555}";

// Returns the words of a line separated by bars, or the reason why it is rejected.
std::string words(const QString& exec) {
  QString why;
  const QStringList command = ulo::commandOf(exec, values, why);
  return command.isEmpty() ? "! " + why.toStdString() : command.join('|').toStdString();
}

std::optional<Launch> launch(const QByteArray& text) {
  return LaunchTable(text).launch(application, values);
}

// Returns the words of the application's command in a table with this text, or "none".
std::string command(const QByteArray& text) {
  LogCapture log;
  const std::optional<Launch> found = launch(text);
  return found ? found->command.join('|').toStdString() : "none";
}

TEST(ExecLine, SplitsWordsAtBlanks) {
  EXPECT_EQ(words("mail"), "mail");
  EXPECT_EQ(words("  mail  -a   b=c,d "), "mail|-a|b=c,d");
}

TEST(ExecLine, QuotesEncloseWord) {
  EXPECT_EQ(words(R"("my mail" "a b" "")"), "my mail|a b|");
  EXPECT_EQ(words(R"(mail "'a'$;")"), "mail|'a'$;");
  EXPECT_EQ(words(R"(mail "\"\`\$\\")"), "mail|\"`$\\");
  EXPECT_EQ(words(R"(mail "\a")"), "mail|\\a");
}

TEST(ExecLine, RejectsInvalidQuotes) {
  EXPECT_EQ(words(R"(mail "a)"), "! quotes aren't closed");
  EXPECT_EQ(words(R"(mail "a\)"), "! quotes aren't closed");
  EXPECT_EQ(words(R"(mail "a"b)"), "! quotes enclose a part of a word");
  EXPECT_EQ(words(R"(mail a"b")"), "! a character of the shell stands outside of quotes: \"");
}

TEST(ExecLine, ShellCharactersNeedQuotes) {
  for (const QChar c : QStringLiteral("\t\n\"'\\><~|&;$*?#()`"))
    EXPECT_THAT(words(QStringLiteral("mail a") + c), testing::StartsWith("! a character of"))
        << static_cast<int>(c.unicode());
}

TEST(ExecLine, ExpandsFieldCodesWithinWord) {
  EXPECT_EQ(words("mail %f"), "mail|/tmp/a b.vcs");
  EXPECT_EQ(words("mail attach=%f,subject=%s."), "mail|attach=/tmp/a b.vcs,subject=Subject.");
  EXPECT_EQ(words(R"(mail "'%f'")"), "mail|'/tmp/a b.vcs'");
  EXPECT_EQ(words("mail 100%% %%f"), "mail|100%|%f");
}

TEST(ExecLine, ValueIsAlwaysOneWord) {
  QString why;
  const QString hostile = "a b\" $(x) `y` %f %% \\ \n'";
  EXPECT_EQ(ulo::commandOf("mail %s %f", {"", hostile}, why), (QStringList{"mail", hostile, ""}));
  EXPECT_EQ(why, "");
}

TEST(ExecLine, RejectsUnknownFieldCodes) {
  EXPECT_EQ(words("mail %u"), "! there is no field code %u");
  EXPECT_EQ(words("mail 5%"), "! there is no field code %");
}

TEST(ExecLine, RejectsLineWithoutProgram) {
  for (const char* exec : {"", "   ", "\"\"", "\"\" a"})
    EXPECT_EQ(words(exec), "! there is no program") << exec;
}

TEST(LaunchTableTest, GroupsContainCommands) {
  const QByteArray text = "# a comment\n\n[{11111111-2222-3333-4444-555555555555}]\n"
                          "Exec = mail %f\nWait=true\n"
                          "[{11111111-2222-3333-4444-555555555556}]\nExec=other\n";
  const std::optional<Launch> found = launch(text);
  ASSERT_TRUE(found);
  EXPECT_EQ(found->command, (QStringList{"mail", "/tmp/a b.vcs"}));
  EXPECT_TRUE(found->waits);
  const auto other = LaunchTable(text).launch("{11111111-2222-3333-4444-555555555556}", values);
  ASSERT_TRUE(other);
  EXPECT_EQ(other->command, QStringList{"other"});
  EXPECT_FALSE(other->waits);
}

TEST(LaunchTableTest, ComparesUuidsByValue) {
  EXPECT_EQ(LaunchTable("[{ABCDEF11-2222-3333-4444-555555555555}]\nExec=mail\n")
                .launch("{abcdef11-2222-3333-4444-555555555555}", values)
                ->command,
            QStringList{"mail"});
}

TEST(LaunchTableTest, AcceptsForeignLineEnds) {
  EXPECT_EQ(command(QByteArray("[") + application + "]\r\nExec=mail a\r\nWait=false\r\n"),
            "mail|a");
}

TEST(LaunchTableTest, FirstOfDuplicatesCounts) {
  const QByteArray head = QByteArray("[") + application + "]\n";
  EXPECT_EQ(command(head + "Exec=first\nExec=second\n"), "first");
  EXPECT_EQ(command(head + "Exec=first\n" + head + "Exec=second\n"), "first");
  EXPECT_EQ(command(head + "Exec[de]=german\nExec=first\n"), "first");
}

TEST(LaunchTableTest, CommasAndPercentSignsAreLiteral) {
  EXPECT_EQ(command(QByteArray("[") + application + "]\nExec=mail a,b,c 50%%\n"), "mail|a,b,c|50%");
}

TEST(LaunchTableTest, EscapesComeBeforeQuotes) {
  // A dollar sign in quotes needs a backslash, which itself must be escaped.
  EXPECT_EQ(command(QByteArray("[") + application + "]\nExec=mail \"\\\\$a\\\\\\\\\"\n"),
            "mail|$a\\");
  EXPECT_EQ(command(QByteArray("[") + application + "]\nExec=mail\\sa\n"), "mail|a");
}

TEST(LaunchTableTest, KnowsComposerWithoutEntry) {
  const std::optional<Launch> found = LaunchTable({}).launch(AM_ActionData::composer, values);
  ASSERT_TRUE(found);
  EXPECT_EQ(found->command, (QStringList{"xdg-email", "--utf8", "--attach", "/tmp/a b.vcs"}));
  EXPECT_FALSE(found->waits);
}

TEST(LaunchTableTest, EntryReplacesKnownComposer) {
  const QByteArray text = QByteArray("[") + AM_ActionData::composer + "]\nExec=mail %s\n";
  EXPECT_EQ(LaunchTable(text).launch(AM_ActionData::composer, values)->command,
            (QStringList{"mail", "Subject"}));
}

TEST(LaunchTableTest, LogsUnknownApplications) {
  for (const char* unknown : {application, "", "mail", "%n%s"}) {
    LogCapture log;
    EXPECT_FALSE(LaunchTable("[]\nExec=mail\n[mail]\nExec=mail\n").launch(unknown, values));
    EXPECT_THAT(log.text(), HasSubstr(std::string("There is no application ") + unknown));
  }
}

TEST(LaunchTableTest, LogsInvalidEntriesWithReason) {
  const QByteArray head = QByteArray("[") + application + "]\n";
  const std::pair<QByteArray, const char*> entries[] = {
      {"", "there is no program"},
      {"Exec=\n", "there is no program"},
      {"Exec=mail %x\n", "there is no field code %x"},
      {"Exec=mail\nWait=yes\n", "Wait is neither true nor false"},
  };
  for (const auto& [entry, reason] : entries) {
    LogCapture log;
    EXPECT_FALSE(launch(head + entry)) << entry.constData();
    EXPECT_THAT(log.text(), HasSubstr(std::string("The launch table's entry ") + application +
                                      " is wrong: " + reason));
  }
}

TEST(LaunchTableTest, AcceptsArbitraryBytes) {
  for (const QByteArray& text :
       {QByteArray("\0\xff[\xfe]\n=\n==\n[", 10), QByteArray("[[]]\n]\n[x\nExec"),
        QByteArray(100'000, '['), QByteArray(100'000, '\n'), QByteArray("Exec=mail\n")})
    EXPECT_EQ(command(text), "none");
}

class UserTable : public testing::Test {
protected:
  UserTable() { setenv("XDG_CONFIG_HOME", directory_.path().c_str(), 1); }
  ~UserTable() override { unsetenv("XDG_CONFIG_HOME"); }

  [[nodiscard]] std::string path() const { return directory_.path() / "ulo/applications.conf"; }
  // Returns the program of the composer in the user's table.
  static std::string composer() {
    const auto found = LaunchTable::ofUser().launch(AM_ActionData::composer, values);
    return found ? found->command.first().toStdString() : "none";
  }

  TemporaryDirectory directory_;
};

TEST_F(UserTable, IsReadFromTheConfigurationDirectory) {
  LogCapture log;
  EXPECT_EQ(composer(), "xdg-email");
  EXPECT_EQ(log.text(), "");
  std::filesystem::create_directory(directory_.path() / "ulo");
  std::ofstream(path()) << '[' << AM_ActionData::composer << "]\nExec=mail\n";
  EXPECT_EQ(composer(), "mail");
}

// Writes a table with one entry for each pair of an application and a program.
void write(const std::filesystem::path& directory,
           const std::vector<std::pair<std::string, std::string>>& entries) {
  std::filesystem::create_directories(directory / "ulo");
  std::ofstream file(directory / "ulo/applications.conf");
  for (const auto& [uuid, program] : entries)
    file << '[' << uuid << "]\nExec=" << program << '\n';
}

TEST_F(UserTable, PrecedesTheTablesOfTheSystem) {
  const std::filesystem::path root = directory_.path();
  const std::string directories = (root / "missing").string() +
                                  ":relative::" + (root / "a").string() + ":" +
                                  (root / "b").string() + ":";
  const EnvironmentVariable variable("XDG_CONFIG_DIRS", directories.c_str());
  LogCapture log;
  const auto programs = [] {
    std::string result;
    for (const char* uuid : {AM_ActionData::composer, AM_ActionData::synchronizer, application}) {
      const auto found = LaunchTable::ofUser().launch(uuid, values);
      result += (found ? found->command.first().toStdString() : "none") + ' ';
    }
    return result;
  };
  write(root / "b", {{AM_ActionData::composer, "last"},
                     {AM_ActionData::synchronizer, "last"},
                     {application, "last"}});
  EXPECT_EQ(programs(), "last last last ");
  write(root / "a", {{AM_ActionData::composer, "first"}, {AM_ActionData::synchronizer, "first"}});
  EXPECT_EQ(programs(), "first first last ");
  write(root, {{AM_ActionData::composer, "own"}});
  EXPECT_EQ(programs(), "own first last ");
  EXPECT_EQ(log.text(), "");
}

TEST_F(UserTable, UsesTablesOfTheSystemIfItsOwnIsUnreadable) {
  const EnvironmentVariable variable("XDG_CONFIG_DIRS", (directory_.path() / "a").c_str());
  write(directory_.path() / "a", {{AM_ActionData::composer, "first"}});
  std::filesystem::create_directories(path());
  LogCapture log;
  EXPECT_EQ(composer(), "first");
  EXPECT_THAT(log.text(), HasSubstr("applications.conf can't be read"));
}

// A group of a later file does not complete that of an earlier one.
TEST_F(UserTable, GroupsAreNotMerged) {
  const EnvironmentVariable variable("XDG_CONFIG_DIRS", (directory_.path() / "a").c_str());
  write(directory_.path(), {{AM_ActionData::composer, "own"}});
  write(directory_.path() / "a", {{AM_ActionData::composer, "first\nWait=true"}});
  const auto found = LaunchTable::ofUser().launch(AM_ActionData::composer, values);
  ASSERT_TRUE(found);
  EXPECT_EQ(found->command, QStringList("own"));
  EXPECT_FALSE(found->waits);
}

TEST_F(UserTable, IsEmptyAndLoggedIfUnreadable) {
  std::filesystem::create_directory(directory_.path() / "ulo");
  const std::string entry = std::string("[") + AM_ActionData::composer + "]\nExec=mail\n";
  {
    LogCapture log;
    ASSERT_EQ(mkfifo(path().c_str(), 0600), 0);
    EXPECT_EQ(composer(), "xdg-email");
    EXPECT_THAT(log.text(), HasSubstr("applications.conf can't be read"));
  }
  std::filesystem::remove(path());
  const std::size_t room = static_cast<std::size_t>(LaunchTable::largest) - entry.size();
  for (const std::size_t filling : {room - 1, room, room + 1}) {
    LogCapture log;
    std::ofstream(path()) << entry << std::string(filling, '\n');
    EXPECT_EQ(composer(), filling > room ? "xdg-email" : "mail") << filling;
  }
}

}  // namespace
