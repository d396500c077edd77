// import and export.

#include "ulotask_runner.h"

#include <QDateTime>
#include <QJsonDocument>

#include <filesystem>

namespace {

using testing::HasSubstr;
using testing::Not;

class Import : public UlotaskTest {
protected:
  // Expects that importing fails with `code`, names the file and stores nothing.
  void expectRefused(const std::string& bytes, int code, const std::string& reason) {
    const std::string name = file("bad.vcs", bytes);
    const Outcome run = ulotask({"import", name});
    EXPECT_EQ(run.code, code) << run.err;
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.err, testing::StartsWith("ulotask: " + name + ": "));
    EXPECT_THAT(run.err, HasSubstr(reason));
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
    EXPECT_EQ(succeed({"list"}).out, "No tasks.\n");
  }
};

class Export : public UlotaskTest {
protected:
  static constexpr int several = 1203;  // tasks of more than two pages

  // Adds that many tasks, of which the last has the first due date.
  void addSeveral(const std::string& end = {}) {
    std::string todos;
    for (int i = 1; i <= several; ++i) {
      const QString due = QDate(2037, 1, 1).addDays(-i).toString("yyyyMMdd'T120000Z'");
      todos += todo("SUMMARY:task " + std::to_string(i) + end + "\r\nDUE:" + due.toStdString() +
                    "\r\nSTATUS:" + (i % 3 == 0 ? "COMPLETED" : "NEEDS ACTION") + "\r\n");
    }
    succeed({"import", "-"}, calendar(todos));
  }
  static std::size_t countIn(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != text.npos; at = text.find(part, at + 1))
      ++count;
    return count;
  }
};

const std::string milk = todo("SUMMARY:Buy milk\r\nDUE:20270305T170000Z\r\nPRIORITY:3\r\n");
const std::string bread = todo("SUMMARY:Buy bread\r\nSTATUS:NEEDS ACTION\r\n");

TEST_F(Import, StoresEachTodo) {
  const std::string name = file("two.vcs", calendar(milk + bread));
  EXPECT_EQ(succeed({"import", name}).out,
            "2 tasks imported from " + name + " (vCalendar 1.0): UID 1, 2\n");
  const QJsonArray tasks = succeed({"list", "--json"}).array();
  ASSERT_EQ(tasks.size(), 2);
  EXPECT_EQ(tasks[0]["summary"].toString(), "Buy milk");
  EXPECT_EQ(tasks[0]["due"].toString(), "2027-03-05T17:00:00Z");
  EXPECT_EQ(tasks[0]["priority"].toInt(), 3);
  EXPECT_EQ(tasks[1]["summary"].toString(), "Buy bread");
}

// A to-do is read with at most a hundred others; this one is larger than all others together.
TEST_F(Import, StoresTodosOfSeveralSlices) {
  std::string todos;
  const std::string note(std::size_t{3} << 20, 'n');
  for (int i = 1; i <= 250; ++i)
    todos += todo("SUMMARY:task " + std::to_string(i) +
                  (i == 120 ? "\r\nDESCRIPTION:" + note : "") + "\r\n");
  const std::string name = file("many.vcs", calendar(todos));
  const Outcome run = ulotask({"import", name});
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.out, "250 tasks imported from " + name +
                         " (vCalendar 1.0): UID 1, 2, 3, 4, 5, ..., 246, 247, 248, 249, 250\n");
  EXPECT_EQ(run.err, "ulotask: " + name +
                         ", task 120: a note of 3145728 characters is cut to its first 4002\n");
  for (const int uid : {1, 100, 101, 120, 121, 200, 201, 250})
    EXPECT_EQ(succeed({"show", "--json", std::to_string(uid)}).object()["summary"].toString(),
              QString("task %1").arg(uid));
}

TEST_F(Import, SetsMissingStatusAndTimeOfChange) {
  const QDateTime before = QDateTime::currentDateTimeUtc().addSecs(-1);
  const Outcome run =
      succeed({"import", "--json", "-"},
              calendar(todo("SUMMARY:a\r\n") + todo("SUMMARY:b\r\nSTATUS:COMPLETED\r\n") +
                       todo("SUMMARY:c\r\nSTATUS:DELEGATED\r\n")));
  const QJsonArray tasks = run.array();
  ASSERT_EQ(tasks.size(), 3);
  EXPECT_EQ(tasks[0]["status"].toInt(), 1);
  EXPECT_EQ(tasks[1]["status"].toInt(), 0);
  EXPECT_EQ(tasks[2]["status"].toInt(), 7);
  EXPECT_EQ(tasks[2]["statusWord"].toString(), "delegated");
  for (const QJsonValue& task : tasks) {
    const QDateTime revision = QDateTime::fromString(task["revision"].toString(), Qt::ISODate);
    EXPECT_GE(revision, before);
    EXPECT_LE(revision, QDateTime::currentDateTimeUtc());
    EXPECT_EQ(task["import"].toString(), "added");
    QJsonObject shown = task.toObject();
    shown.remove("import");
    EXPECT_EQ(shown, succeed({"show", "--json", std::to_string(task["uid"].toInt())}).object());
  }
}

TEST_F(Import, ReadsStandardInput) {
  EXPECT_EQ(succeed({"import", "-"}, calendar(milk)).out,
            "1 task imported from standard input (vCalendar 1.0): UID 1\n");
}

TEST_F(Import, ReadsWhatPhonesWrite) {
  const std::string samples = ULO_SOURCE_DIR "/samples/";
  succeed({"import", samples + "phone-utf8.vcs", samples + "phone-gbk.vcs",
           samples + "phone-folded.vcs"});
  const std::string out = succeed({"list"}).out;
  EXPECT_THAT(out, HasSubstr("Käse und Müsli kaufen"));
  EXPECT_THAT(out, HasSubstr("给妈妈打电话"));
  EXPECT_THAT(out, HasSubstr("家庭"));
  EXPECT_THAT(out, HasSubstr("Return the books to the library before it closes for the holidays"));
  EXPECT_THAT(out, HasSubstr("\U0001F6B2"));
  EXPECT_THAT(succeed({"show", "1"}).out, HasSubstr("Note      Auf dem Markt am Großen Platz:\n"
                                                    "          500 g Bergkäse\n"
                                                    "          1 kg Müsli\n"));
}

TEST_F(Import, NamesTheFirstAndLastOfMany) {
  std::string many;
  for (int i = 0; i < 11; ++i)
    many += bread;
  EXPECT_EQ(succeed({"import", "-"}, calendar(many)).out,
            "11 tasks imported from standard input (vCalendar 1.0): UID 1, 2, 3, 4, 5, ..., 7, 8, "
            "9, 10, 11\n");
}

TEST_F(Import, TruncatesLongTextsAndReportsIt) {
  const auto withTexts = [](int summary, int note) {
    return calendar(todo("SUMMARY:" + std::string(summary, 's') +
                         "\r\nDESCRIPTION:" + std::string(note, 'n') + "\r\n"));
  };
  const std::string over = file("long.vcs", withTexts(513, 4003));
  const Outcome run = ulotask({"import", over});
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.err, "ulotask: " + over +
                         ", task 1: a summary of 513 characters is cut to its first 512\n"
                         "ulotask: " +
                         over + ", task 1: a note of 4003 characters is cut to its first 4002\n");
  const QJsonObject task = succeed({"show", "1", "--json"}).object();
  EXPECT_EQ(task["summary"].toString().length(), 512);
  EXPECT_EQ(task["note"].toString().length(), 4002);
  succeed({"import", "-"}, withTexts(512, 4002));
}

TEST_F(Import, NeverSplitsASurrogatePair) {
  const std::string over =
      file("long.vcs",
           calendar(todo("SUMMARY;CHARSET=UTF-8:" + std::string(511, 's') + "\U0001F6B2\r\n")));
  const Outcome run = ulotask({"import", over});
  EXPECT_THAT(run.err, HasSubstr("a summary of 513 characters is cut to its first 511"));
  EXPECT_EQ(succeed({"show", "1", "--json"}).object()["summary"].toString().toStdString(),
            std::string(511, 's'));
}

TEST_F(Import, ReportsPropertyThatIsTooLarge) {
  const std::string large =
      file("large.vcs",
           calendar(todo("SUMMARY:a\r\nDESCRIPTION:" + std::string(5U << 20U, 'n') + "\r\n")));
  const Outcome run = ulotask({"import", large});
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.err, "ulotask: " + large +
                         ": a DESCRIPTION of more than 4194304 bytes is left out (line 5)\n");
  EXPECT_EQ(succeed({"show", "1", "--json"}).object()["summary"].toString(), "a");
}

// The last of several tasks fails; then the commit.
TEST_F(Import, StoresAllFilesOrNothing) {
  add({"first"});
  const std::string one = file("one.vcs", calendar(milk));
  const std::string two = file("two.vcs", calendar(bread + todo("SUMMARY:refused\r\n")));
  sql("CREATE TRIGGER refuse AFTER INSERT ON task_table_task WHEN NEW.UID = 4 BEGIN SELECT "
      "RAISE(ABORT, 'refused'); END");
  const Outcome run = ulotask({"import", one, two});
  EXPECT_EQ(run.code, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_THAT(run.err, testing::StartsWith("ulotask: nothing was stored: the import failed: "));
  EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
  EXPECT_EQ(uids({"list"}), std::vector<int>{1});
  EXPECT_THAT(succeed({"category", "list"}).out, Not(HasSubstr("Einkauf")));
  sql("DROP TRIGGER refuse");
  succeed({"import", one, two});
  EXPECT_EQ(uids({"list"}).size(), 4U);
}

TEST_F(Import, KeepsNothingIfLastSliceFails) {
  add({"first"});
  std::string todos;
  for (int i = 0; i < 250; ++i)
    todos += todo("SUMMARY:a\r\nCATEGORIES:garden\r\n");
  const std::string name = file("many.vcs", calendar(todos));
  sql("CREATE TRIGGER refuse AFTER INSERT ON task_table_task WHEN NEW.UID = 251 BEGIN SELECT "
      "RAISE(ABORT, 'refused'); END");
  const Outcome run = ulotask({"import", "--json", name});
  EXPECT_EQ(run.code, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_THAT(run.err, testing::StartsWith("ulotask: nothing was stored: the import failed: "));
  EXPECT_EQ(uids({"list"}), std::vector<int>{1});
  EXPECT_THAT(succeed({"category", "list"}).out, Not(HasSubstr("garden")));
  sql("DROP TRIGGER refuse");
  EXPECT_EQ(succeed({"import", "--json", name}).array().size(), 250);
}

TEST_F(Import, AddsCategories) {
  succeed({"import", "-"}, calendar(todo("SUMMARY:a\r\nCATEGORIES:garden\r\n")));
  EXPECT_EQ(succeed({"show", "1", "--json"}).object()["category"].toString(), "garden");
}

TEST_F(Import, RejectsMissingFile) {
  const Outcome run = ulotask({"import", path("none.vcs")});
  EXPECT_EQ(run.code, 4);
  EXPECT_EQ(run.err,
            "ulotask: " + path("none.vcs") + ": cannot be read: No such file or directory\n");
}

TEST_F(Import, RejectsDirectory) {
  const Outcome run = ulotask({"import", path("")});
  EXPECT_EQ(run.code, 4);
  EXPECT_THAT(run.err, HasSubstr("Is a directory"));
}

TEST_F(Import, RejectsOtherFiles) {
  expectRefused("", 5, "empty");
  expectRefused("Dear reader,\nthis is a letter.\n", 5, "not a calendar file");
  expectRefused("BEGIN:VCARD\r\nVERSION:2.1\r\nN:Doe\r\nEND:VCARD\r\n", 5, "not a calendar file");
  expectRefused(std::string("\x7f"
                            "ELF\0\0\0\1",
                            8),
                5, "not a calendar file");
}

TEST_F(Import, RejectsCalendarWithoutTodo) {
  expectRefused(calendar(""), 6, "holds no to-do");
  expectRefused(calendar("BEGIN:VEVENT\r\nSUMMARY:Party\r\nEND:VEVENT\r\n"), 6, "holds no to-do");
}

TEST_F(Import, RejectsTruncatedCalendar) {
  const std::string whole = calendar(milk + bread);
  const std::size_t afterFirstLine = whole.find('\n') + 1;
  // The line end after the last word may be missing.
  const std::size_t lastWord = whole.size() - 2;
  for (std::size_t length = afterFirstLine; length < lastWord; length += 7)
    expectRefused(whole.substr(0, length), 7, "truncated");
  expectRefused(whole.substr(0, lastWord - 1), 7, "truncated");
}

TEST_F(Import, RejectsDeeplyNestedComponents) {
  std::string nested;
  for (int i = 0; i < 100; ++i)
    nested = todo(nested);
  expectRefused(calendar(nested), 14, "not well formed");
}

TEST_F(Import, RejectsCalendarCutByZeroByte) {
  std::string text = calendar(milk);
  text[60] = '\0';
  expectRefused(text, 7, "truncated");
  // After the calendar it is padding.
  succeed({"import", "-"}, calendar(milk) + std::string(100, '\0'));
}

TEST_F(Import, RejectsNoise) {
  std::string noise(100'000'000, '\0');
  unsigned int state = 1;
  for (char& c : noise) {
    state = state * 1664525U + 1013904223U;
    c = static_cast<char>(state >> 24U);
  }
  expectRefused(noise, 8, "larger than");
  noise.resize(1'000'000);
  expectRefused(noise, 5, "not a calendar file");
}

TEST_F(Import, StoresNothingIfOneFileIsInvalid) {
  const std::string good = file("good.vcs", calendar(milk));
  const std::string bad = file("bad.vcs", calendar(milk).substr(0, 60));
  const Outcome run = ulotask({"import", good, bad});
  EXPECT_EQ(run.code, 7);
  EXPECT_THAT(run.err, HasSubstr(bad));
  EXPECT_EQ(succeed({"list"}).out, "No tasks.\n");
}

TEST_F(Import, EscapesFileNames) {
  const Outcome run = ulotask({"import", path("a\x1b[31m.vcs")});
  EXPECT_EQ(run.code, 4);
  EXPECT_THAT(run.err, Not(HasSubstr("\x1b")));
  EXPECT_THAT(run.err, HasSubstr("a\uFFFD[31m.vcs"));
}

TEST_F(Import, AcceptsFileNamesOfAnyBytes) {
  const Outcome run =
      shell("printf 'BEGIN:VCALENDAR\\r\\nVERSION:1.0\\r\\nBEGIN:VTODO\\r\\nSUMMARY:a\\r\\n"
            "END:VTODO\\r\\nEND:VCALENDAR\\r\\n' > \"$HOME\"$'\\xe4.vcs' && "
            "\"$ULOTASK\" import \"$HOME\"$'\\xe4.vcs'");
  EXPECT_EQ(run.code, 0) << run.err;
  EXPECT_THAT(run.out, HasSubstr("home\uFFFD.vcs (vCalendar 1.0): UID 1\n"));
}

TEST_F(Export, WritesAllTasksInUidOrder) {
  add({"late", "--due", "2027-03-05"});
  add({"early", "--due", "2027-03-01"});
  const std::string out = succeed({"export"}).out;
  EXPECT_THAT(out, testing::StartsWith("BEGIN:VCALENDAR\r\nVERSION:1.0\r\n"));
  const std::size_t late = out.find("late");
  const std::size_t early = out.find("early");
  ASSERT_NE(late, std::string::npos);
  ASSERT_NE(early, std::string::npos);
  EXPECT_LT(late, early);
}

TEST_F(Export, WritesRequestedTasks) {
  for (const char* summary : {"one", "two", "three"})
    add({summary});
  const std::string out = succeed({"export", "3", "1"}).out;
  EXPECT_THAT(out, Not(HasSubstr("two")));
  EXPECT_LT(out.find("three"), out.find("one"));
}

TEST_F(Export, WritesSeveralPagesAsOneCalendar) {
  addSeveral();
  const std::string before = succeed({"list", "--json"}).out;
  const std::string name = path("all.vcs");
  EXPECT_EQ(succeed({"export", "-o", name}).out, "1203 tasks exported to " + name + "\n");
  const std::string text = readWhole(name);
  EXPECT_EQ(succeed({"export"}).out, text);
  EXPECT_EQ(countIn(text, "BEGIN:VCALENDAR"), 1U);
  EXPECT_EQ(countIn(text, "END:VCALENDAR"), 1U);
  EXPECT_EQ(countIn(text, "BEGIN:VTODO"), 1203U);
  std::size_t at = 0;
  for (int i = 1; i <= several; ++i) {
    at = text.find("PRINTABLE:task " + std::to_string(i) + "\r\n", at);
    ASSERT_NE(at, text.npos) << i;
  }
  Arguments some = {"export"};
  for (int i = several; i > several - 600; --i)
    some.push_back(std::to_string(i));
  EXPECT_EQ(countIn(succeed(some).out, "BEGIN:VTODO"), 600U);

  environment_["ULO_DATA_DIR"] = path("other");
  succeed({"import", name});
  const QJsonArray after = succeed({"list", "--json"}).array();
  const QJsonArray expected = QJsonDocument::fromJson(QByteArray::fromStdString(before)).array();
  ASSERT_EQ(after.size(), expected.size());
  for (int i = 0; i < after.size(); ++i)
    for (const char* field : {"uid", "summary", "due", "status"})
      ASSERT_EQ(after[i][field], expected[i][field]) << i << " " << field;
}

TEST_F(Export, WritesSeveralPagesOfIcalendar) {
  addSeveral();
  const std::string name = path("all.ics");
  succeed({"export", "--format", "icalendar", "-o", name});
  const std::string text = readWhole(name);
  EXPECT_EQ(countIn(text, "BEGIN:VCALENDAR"), 1U);
  EXPECT_EQ(countIn(text, "BEGIN:VTODO"), 1203U);
  EXPECT_EQ(succeed({"import", name}).out,
            "1203 tasks imported from " + name + " (iCalendar 2.0): 1203 unchanged\n");
}

// The output is longer than a pipe holds, so the other program writes while it is printed.
TEST_F(Export, ContainsOneStateOfTheStore) {
  for (const char* verb : {"export", "export --format icalendar", "list --json", "list"}) {
    std::filesystem::remove_all(path("data"));
    addSeveral(std::string(200, 'x'));
    const std::string expected = shell(std::string("\"$ULOTASK\" ") + verb).out;
    ASSERT_GT(expected.size(), 250'000U) << verb;
    const Outcome run = shell(std::string("\"$ULOTASK\" ") + verb +
                              " | { dd bs=100 count=1 2>/dev/null; \"$ULOTASK\" rm 600 >&2; "
                              "\"$ULOTASK\" edit 1 --due 2030-01-01 >&2; "
                              "\"$ULOTASK\" add other >&2; cat; }");
    EXPECT_TRUE(run.out == expected) << verb;
    EXPECT_NE(shell(std::string("\"$ULOTASK\" ") + verb).out, expected) << verb;
  }
}

TEST_F(Export, FailsForMissingTask) {
  add({"one"});
  const Outcome run = ulotask({"export", "1", "999", "-o", path("out.vcs")});
  EXPECT_EQ(run.code, 3);
  EXPECT_EQ(run.err, "ulotask: no task has the UID 999\n");
  EXPECT_FALSE(std::filesystem::exists(path("out.vcs")));
}

TEST_F(Export, ImportReadsIt) {
  add({"Käse; 1 = zwei, 给妈妈\U0001F6B2", "--due", "2027-03-05 13:00", "--alarm",
       "2027-03-05 08:00", "--priority", "3", "--note",
       "erste Zeile\nzweite Zeile\n" + std::string(300, 'n')});
  succeed({"done", add({"finished"})});
  const std::string name = path("all.vcs");
  EXPECT_EQ(succeed({"export", "-o", name}).out, "2 tasks exported to " + name + "\n");
  const QJsonArray before = succeed({"list", "--json"}).array();
  environment_["ULO_DATA_DIR"] = path("other");
  succeed({"import", name});
  const QJsonArray after = succeed({"list", "--json"}).array();
  ASSERT_EQ(after.size(), 2);
  for (int i = 0; i < 2; ++i) {
    for (const char* field : {"summary", "note", "due", "end", "priority", "status"})
      EXPECT_EQ(after[i][field], before[i][field]) << field;
  }
}

TEST_F(Export, EmptyStoreBecomesCalendarWithoutTodos) {
  const std::string out = succeed({"export"}).out;
  EXPECT_THAT(out, HasSubstr("BEGIN:VCALENDAR"));
  EXPECT_THAT(out, Not(HasSubstr("VTODO")));
  EXPECT_EQ(ulotask({"import", "-"}, out).code, 6);
}

TEST_F(Export, ReplacesFileCompletelyOrNotAtAll) {
  add({"one"});
  const std::string name = file("out.vcs", "precious");
  EXPECT_EQ(ulotask({"export", "999", "-o", name}).code, 3);
  EXPECT_EQ(readWhole(name), "precious");
  succeed({"export", "-o", name});
  EXPECT_EQ(readWhole(name), succeed({"export"}).out);
}

TEST_F(Export, KeepsTheOldFileOnAFullDisk) {
  add({"one"});
  std::filesystem::create_directory(path("out"));
  const std::string name = file("out/out.vcs", "precious");
  environment_["LD_PRELOAD"] = ULOTASK_FULL_OUTPUT;
  environment_["ASAN_OPTIONS"] = "verify_asan_link_order=0";
  environment_["ULO_TEST_FULL_OUTPUT"] = path("out/");
  for (const char* call : {"write", "fsync"}) {
    environment_["ULO_TEST_FULL_AT"] = call;
    const Outcome run = ulotask({"export", "-o", name});
    EXPECT_EQ(run.code, 12) << call;
    EXPECT_EQ(run.err, "ulotask: " + name + " can't be written: No space left on device\n");
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(readWhole(name), "precious") << call;
  }
  const std::filesystem::directory_iterator files(path("out"));
  EXPECT_EQ(std::distance(begin(files), end(files)), 1);
}

TEST_F(Export, RejectsFilesOfTheStore) {
  add({"one"});
  std::filesystem::create_directory(path("sub"));
  std::filesystem::create_symlink(path("data/tasks.db"), path("link.vcs"));
  std::filesystem::create_symlink(path("data/none.vcs"), path("dangling.vcs"));
  std::filesystem::create_symlink("link.vcs", path("second.vcs"));
  std::filesystem::create_directory_symlink(path("data"), path("alias"));
  std::filesystem::create_hard_link(path("data/tasks.db"), path("hard.vcs"));
  const std::string before = succeed({"list", "--json"}).out;
  for (const char* name :
       {"data/tasks.db", "data/new.vcs", "data/tasks.db-wal", "sub/../data/tasks.db", "link.vcs",
        "dangling.vcs", "second.vcs", "alias/new.vcs", "hard.vcs", "data/../data/./x"}) {
    const Outcome run = ulotask({"export", "-o", path(name)});
    EXPECT_EQ(run.code, 12) << name;
    EXPECT_THAT(run.err, HasSubstr("it belongs to the store in \"" + path("data") + "\"")) << name;
  }
  EXPECT_FALSE(std::filesystem::exists(path("data/new.vcs")));
  EXPECT_EQ(succeed({"list", "--json"}).out, before);
  succeed({"export", "-o", path("sub/out.vcs")});
}

TEST_F(Export, ReportsFileThatCannotBeWritten) {
  add({"one"});
  for (const std::string& name : {path("none/out.vcs"), path("")}) {
    const Outcome run = ulotask({"export", "-o", name});
    EXPECT_EQ(run.code, 12) << name;
    EXPECT_THAT(run.err, HasSubstr(name + " can't be written: "));
    EXPECT_EQ(run.out, "");
  }
}

TEST_F(Export, WritesIntoPipeWithoutReplacingIt) {
  add({"one"});
  environment_["PIPE"] = path("pipe");
  const Outcome run =
      shell("mkfifo \"$PIPE\" && { cat \"$PIPE\" & \"$ULOTASK\" export -o \"$PIPE\" >&2; wait; }");
  EXPECT_EQ(run.out, succeed({"export"}).out);
  EXPECT_TRUE(std::filesystem::is_fifo(path("pipe")));
}

TEST_F(Export, ReportsStandardOutputThatCannotBeWritten) {
  add({"one"});
  const Outcome run = shell("\"$ULOTASK\" export > /dev/full");
  EXPECT_EQ(run.code, 12);
  EXPECT_THAT(run.err, HasSubstr("standard output can't be written: No space left"));
}

TEST_F(Export, NeedsNoTemporaryDirectory) {
  environment_["TMPDIR"] = path("missing");
  add({"one"});
  EXPECT_THAT(succeed({"export"}).out, HasSubstr("PRINTABLE:one"));
}

TEST_F(Export, FailsWithoutTheLibrary) {
  add({"one"});
  hideLibrary("libicalvcal.so");
  const Outcome run = ulotask({"export"});
  EXPECT_EQ(run.code, 12);
  EXPECT_EQ(run.out, "");
  EXPECT_THAT(run.err,
              HasSubstr("the tasks cannot be written as a vCalendar text: vCalendar text needs "
                        "libical's library libicalvcal.so; install libical 3 (in Debian libical3"));
}

TEST_F(Import, NamesTheMissingLibrary) {
  hideLibrary("libicalvcal.so");
  const Outcome run = ulotask({"import", file("one.vcs", calendar(todo("SUMMARY:one\r\n")))});
  EXPECT_EQ(run.code, 1);
  EXPECT_THAT(run.err, HasSubstr("could read only 0 of 1 to-do: vCalendar text needs libical's "
                                 "library libicalvcal.so; install libical 3"));
}

TEST_F(Export, LeavesNoTemporaryFile) {
  std::filesystem::create_directory(path("tmp"));
  environment_["TMPDIR"] = path("tmp");
  add({"one"});
  succeed({"export"});
  EXPECT_TRUE(std::filesystem::is_empty(path("tmp")));
}

}  // namespace
