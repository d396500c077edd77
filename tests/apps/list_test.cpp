// list and show.

#include "ulotask_runner.h"

#include <QDateTime>
#include <QJsonDocument>

#include <sstream>
#include <string>
#include <vector>

namespace {

using testing::HasSubstr;
using testing::Not;

class List : public UlotaskTest {};

TEST_F(List, ReportsEmptyList) {
  EXPECT_EQ(succeed({"list"}).out, "No tasks.\n");
  EXPECT_EQ(succeed({"list", "--json"}).array().size(), 0);
}

TEST_F(List, AlignsColumns) {
  add({"Buy milk", "--due", "2027-03-05", "--priority", "high", "--category", "shop"});
  add({"给妈妈打电话", "--due", "2027-03-05 18:00", "--category", "家庭生活"});
  EXPECT_EQ(succeed({"list"}).out,
            "UID  DUE               PRI  STATUS        CATEGORY  SUMMARY\n"
            "  1  2027-03-05          1  needs action  shop      Buy milk\n"
            "  2  2027-03-05 18:00    0  needs action  家庭生活  给妈妈打电话\n");
}

TEST_F(List, SortsByDueDateThenPriorityThenNewest) {
  add({"none"});
  add({"late", "--due", "2027-03-05", "--priority", "1"});
  add({"early", "--due", "2027-03-01", "--priority", "9"});
  add({"late too", "--due", "2027-03-05", "--priority", "0"});
  add({"late again", "--due", "2027-03-05", "--priority", "1"});
  const std::vector<int> byDue = {3, 4, 5, 2, 1};
  EXPECT_EQ(uids({"list"}), byDue);
  EXPECT_EQ(uids({"list", "--sort", "due"}), byDue);
  EXPECT_EQ(uids({"list", "--sort", "priority"}), (std::vector<int>{4, 1, 5, 2, 3}));
}

TEST_F(List, RejectsUnknownOrder) {
  const Outcome run = ulotask({"list", "--sort", "colour"});
  EXPECT_EQ(run.code, 2);
  EXPECT_THAT(run.err, HasSubstr("colour"));
  EXPECT_EQ(run.out, "");
}

TEST_F(List, TruncatesNothingWithoutTerminal) {
  const std::string summary(500, 'x');
  add({summary});
  EXPECT_THAT(succeed({"list"}).out, HasSubstr(summary));
}

TEST_F(List, ShowsNoControlCharacter) {
  add({"a\x1b[31mb\x07"
       "c\nd\te\x7f"
       "f\u009bg\u202eh"});
  const std::string out = succeed({"list"}).out;
  EXPECT_THAT(out, HasSubstr("a\uFFFD[31mb\uFFFDc d e\uFFFDf\uFFFDg\uFFFDh\n"));
}

TEST_F(List, EscapesControlCharactersInJson) {
  add({"a\x1b"
       "b\x7f"
       "c\u009bd\u0085e\u00a0f\u4e2d"});
  const Outcome run = succeed({"list", "--json"});
  EXPECT_THAT(run.out, HasSubstr("a\\u001bb\\u007fc\\u009bd\\u0085e\u00a0f\u4e2d"));
  EXPECT_EQ(run.array().at(0)["summary"].toString(),
            QString::fromUtf8("a\x1b"
                              "b\x7f"
                              "c\u009bd\u0085e\u00a0f\u4e2d"));
}

// Except for control characters, which QJsonDocument does not escape.
TEST_F(List, PrintsJsonAsQtDoes) {
  add({"a\"b\\c/d\be\ff\ng\rh\ti\x01j\u00e4\u20ac\u4e2d\U0001F600", "--note", "", "--due",
       "1970-01-02", "--alarm", "2038-01-17 12:00"});
  add({"second", "--category", "\u00fc \"x\""});
  for (const std::vector<std::string>& verb :
       {std::vector<std::string>{"list"}, {"show", "1"}, {"search", "no such text"}}) {
    std::vector<std::string> words = verb;
    words.emplace_back("--json");
    const std::string out = succeed(words).out;
    EXPECT_EQ(out, QJsonDocument::fromJson(QByteArray::fromStdString(out)).toJson().toStdString());
    EXPECT_FALSE(QJsonDocument::fromJson(QByteArray::fromStdString(out)).isNull());
  }
}

TEST_F(List, PrintsMoreThanFitsIntoItsBuffer) {
  for (int i = 0; i < 40; ++i)
    add({"task", "--note", std::string(4000, static_cast<char>('a' + i % 26))});
  const Outcome run = succeed({"list", "--json"});
  EXPECT_GT(run.out.size(), 160000U);
  EXPECT_EQ(run.array().size(), 40);
  const Outcome full = shell("\"$ULOTASK\" list --json > /dev/full");
  EXPECT_EQ(full.code, 12);
  EXPECT_EQ(full.err, "ulotask: standard output can't be written: No space left on device\n");
  const Outcome cut = shell("\"$ULOTASK\" list --json | head -c 5");
  EXPECT_EQ(cut.out, "[\n   ");
  EXPECT_EQ(cut.err, "");
}

TEST_F(List, PrintsAllFieldsInJson) {
  const QDateTime before = QDateTime::currentDateTimeUtc().addSecs(-1);
  add({"Buy milk", "--due", "2027-03-05 18:00", "--alarm", "2027-07-05T08:00:30", "--priority",
       "low", "--category", "shop", "--note", "two\nlines"});
  const QJsonObject task = succeed({"list", "--json"}).array()[0].toObject();
  EXPECT_EQ(task["uid"].toInt(), 1);
  EXPECT_EQ(task["summary"].toString(), "Buy milk");
  EXPECT_EQ(task["note"].toString(), "two\nlines");
  EXPECT_EQ(task["category"].toString(), "shop");
  EXPECT_EQ(task["priority"].toInt(), 9);
  EXPECT_EQ(task["priorityClass"].toString(), "low");
  EXPECT_EQ(task["status"].toInt(), 1);
  EXPECT_EQ(task["statusWord"].toString(), "needs action");
  EXPECT_FALSE(task["completed"].toBool());
  EXPECT_EQ(task["due"].toString(), "2027-03-05T17:00:00Z");    // Berlin in winter
  EXPECT_EQ(task["alarm"].toString(), "2027-07-05T06:00:30Z");  // and in summer
  EXPECT_TRUE(task["end"].isNull());
  EXPECT_EQ(task["uuid"].toString().length(), 36);
  const QDateTime revision = QDateTime::fromString(task["revision"].toString(), Qt::ISODate);
  EXPECT_GE(revision, before);
  EXPECT_LE(revision, QDateTime::currentDateTimeUtc());
  EXPECT_EQ(task.size(), 14);
}

TEST_F(List, PrintsNullForUnsetFields) {
  add({"bare"});
  const QJsonObject task = succeed({"show", "1", "--json"}).object();
  for (const char* name : {"note", "category", "due", "alarm", "end"})
    EXPECT_TRUE(task[name].isNull()) << name;
}

class Show : public UlotaskTest {};

TEST_F(Show, PrintsAllFields) {
  add({"Buy milk", "--due", "2027-03-05 18:00", "--alarm", "2027-03-05", "--priority", "3",
       "--category", "shop", "--note", "two\nlines"});
  const QJsonObject task = succeed({"show", "1", "--json"}).object();
  const std::string changed = QDateTime::fromString(task["revision"].toString(), Qt::ISODate)
                                  .toLocalTime()
                                  .toString("yyyy-MM-dd HH:mm")
                                  .toStdString();
  EXPECT_EQ(succeed({"show", "1"}).out, "UID       1\n"
                                        "Summary   Buy milk\n"
                                        "Status    needs action\n"
                                        "Priority  3 (high)\n"
                                        "Category  shop\n"
                                        "Due       2027-03-05 18:00\n"
                                        "Alarm     2027-03-05\n"
                                        "Finished  -\n"
                                        "Changed   " +
                                            changed +
                                            "\n"
                                            "UUID      " +
                                            task["uuid"].toString().toStdString() +
                                            "\n"
                                            "Note      two\n"
                                            "          lines\n");
}

TEST_F(Show, ShowsNoControlCharacter) {
  add({"a\x1b]0;title\x07", "--note", "one\r\ntwo\rthree\x1b[2Jfour"});
  const std::string out = succeed({"show", "1"}).out;
  EXPECT_THAT(out, HasSubstr("Summary   a\uFFFD]0;title\uFFFD\n"));
  EXPECT_THAT(out, HasSubstr("Note      one\n          two\n          three\uFFFD[2Jfour\n"));
  EXPECT_THAT(out, Not(HasSubstr("\x1b")));
}

TEST_F(Show, FailsForMissingTask) {
  const Outcome run = ulotask({"show", "999"});
  EXPECT_EQ(run.code, 3);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "ulotask: no task has the UID 999\n");
}

TEST_F(Show, AcceptsOnlyDecimalUids) {
  for (const char* text : {"x", "-1", "0x10", "1.5", "", " 1", "1 ", "4294967296", "+1"}) {
    const Outcome run = ulotask({"show", "--", text});
    EXPECT_EQ(run.code, 2) << text;
    EXPECT_THAT(run.err, HasSubstr("is not a valid UID")) << text;
  }
  EXPECT_EQ(ulotask({"show", "4294967295"}).code, 3);
  // Not octal.
  for (int i = 0; i < 10; ++i)
    add({"task"});
  EXPECT_EQ(succeed({"show", "010", "--json"}).object()["uid"].toInt(), 10);
}

class Help : public UlotaskTest {};

// The commands that --help lists, and those of the groups.
const std::vector<std::string> verbs = {"import", "list", "search",  "show",    "add",
                                        "edit",   "done", "undone",  "rm",      "export",
                                        "stats",  "db",   "changes", "category"};
const std::vector<std::vector<std::string>> commands = {{"import"},
                                                        {"list"},
                                                        {"search"},
                                                        {"show"},
                                                        {"add"},
                                                        {"edit"},
                                                        {"done"},
                                                        {"undone"},
                                                        {"rm"},
                                                        {"export"},
                                                        {"stats"},
                                                        {"changes"},
                                                        {"category", "list"},
                                                        {"category", "add"},
                                                        {"category", "rename"},
                                                        {"category", "rm"},
                                                        {"db", "explain"},
                                                        {"db", "check"}};

std::string joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words)
    text += (text.empty() ? "" : " ") + word;
  return text;
}

TEST_F(Help, NamesVerbsAndExitCodes) {
  const std::string out = succeed({"--help"}).out;
  for (const std::string& verb : verbs)
    EXPECT_THAT(out, HasSubstr("\n  " + verb + " ")) << verb;
  EXPECT_THAT(out, HasSubstr("Exit codes:\n   0  done\n"));
  EXPECT_THAT(out, HasSubstr("   9  the store is full\n"));
}

TEST_F(Help, HasExamplesForEachCommand) {
  for (std::vector<std::string> command : commands) {
    const std::string example = "\n  ulotask " + joined(command);
    command.push_back("--help");
    EXPECT_THAT(succeed(command).out, HasSubstr(example));
  }
}

TEST_F(Help, ReadmeNamesEachCommand) {
  const std::string readme = readWhole(ULO_SOURCE_DIR "/README.md");
  for (const std::vector<std::string>& command : commands)
    EXPECT_THAT(readme, HasSubstr("| `" + joined(command)));
}

TEST_F(Help, ReadmeNamesEachExitCode) {
  const std::string readme = readWhole(ULO_SOURCE_DIR "/README.md");
  std::istringstream help(succeed({"--help"}).out);
  std::string line;
  while (std::getline(help, line) && line != "Exit codes:")
    continue;
  int codes = 0;
  for (; std::getline(help, line) && !line.empty(); ++codes) {
    std::istringstream words(line);
    std::string code;
    std::string meaning;
    words >> code >> std::ws;
    std::getline(words, meaning);
    const std::string row = "| " + code + " | " + meaning + " |\n";
    EXPECT_NE(readme.find(row), std::string::npos) << row;
  }
  EXPECT_EQ(codes, 20);
}

TEST_F(Help, PrintsVersion) {
  EXPECT_EQ(succeed({"--version"}).out, "ulotask 0.1.0\n");
}

TEST_F(Help, RejectsUnknownArguments) {
  for (const Arguments& arguments : std::vector<Arguments>{{},
                                                           {"dance"},
                                                           {"list", "--loud"},
                                                           {"show"},
                                                           {"show", "1", "2"},
                                                           {"db"},
                                                           {"rm"},
                                                           {"category"},
                                                           {"edit"},
                                                           {"search", "a", "b"}}) {
    const Outcome run = ulotask(arguments);
    EXPECT_EQ(run.code, 2) << testing::PrintToString(arguments);
    EXPECT_THAT(run.err, testing::StartsWith("ulotask: "));
    EXPECT_EQ(run.out, "");
  }
}

}  // namespace
