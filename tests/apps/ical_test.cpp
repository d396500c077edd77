// import, export, done and merge of iCalendar 2.0.

#include "ulotask_runner.h"

#include <filesystem>

namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

std::string ical(const std::string& todos) {
  return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//elsewhere//EN\r\n" + todos +
         "END:VCALENDAR\r\n";
}

const std::string milkAndBread =
    todo("UID:milkAndBread-1\r\nSUMMARY:Buy milkAndBread\\, bread\r\nPRIORITY:3\r\n"
         "LAST-MODIFIED:20260101T100000Z\r\nX-COLOR:blue\r\n");
const std::string plants =
    todo("UID:plants-1\r\nSUMMARY:Water plants\r\nDTSTART:20270305T090000Z\r\n"
         "DUE:20270305T170000Z\r\nRRULE:FREQ=WEEKLY;COUNT=2\r\n"
         "LAST-MODIFIED:20260101T100000Z\r\n");

class Ical : public UlotaskTest {
protected:
  std::string replaced(std::string text, const std::string& from, const std::string& to) {
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
  }
  // Expects that importing fails with `code`, names the file and stores nothing.
  void expectRefused(const std::string& bytes, int code, const std::string& reason) {
    const std::string name = file("bad.ics", bytes);
    const Outcome run = ulotask({"import", name});
    EXPECT_EQ(run.code, code) << run.err;
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.err, StartsWith("ulotask: " + name + ": "));
    EXPECT_THAT(run.err, HasSubstr(reason));
    EXPECT_EQ(succeed({"list"}).out, "No tasks.\n");
  }
  std::string exported(const std::string& uid) {
    return succeed({"export", "--format", "icalendar", uid}).out;
  }
};

TEST_F(Ical, ImportAddsTodosAndNamesFormat) {
  // The name does not decide.
  const std::string name = file("two.vcs", ical(milkAndBread + plants));
  EXPECT_EQ(succeed({"import", name}).out,
            "2 tasks imported from " + name + " (iCalendar 2.0): 2 added (UID 1, 2)\n");
  const QJsonObject task = succeed({"show", "1", "--json"}).object();
  EXPECT_EQ(task["summary"].toString(), "Buy milkAndBread, bread");
  EXPECT_EQ(task["uuid"].toString(), "milkAndBread-1");
  EXPECT_EQ(task["revision"].toString(), "2026-01-01T10:00:00Z");
  const std::string phone = file("phone.ics", calendar(todo("SUMMARY:a\r\n")));
  EXPECT_EQ(succeed({"import", phone}).out,
            "1 task imported from " + phone + " (vCalendar 1.0): UID 3\n");
}

TEST_F(Ical, SecondImportChangesNothing) {
  const std::string name = file("two.ics", ical(milkAndBread + plants));
  succeed({"import", name});
  const std::string before = succeed({"list", "--json"}).out;
  const std::string generation = succeed({"changes", "--json"}).out;
  EXPECT_EQ(succeed({"import", name}).out,
            "2 tasks imported from " + name + " (iCalendar 2.0): 2 unchanged\n");
  EXPECT_EQ(succeed({"list", "--json"}).out, before);
  EXPECT_EQ(succeed({"changes", "--json"}).out, generation);
}

TEST_F(Ical, ImportUpdatesAndReportsEachKind) {
  succeed({"import", "-"}, ical(milkAndBread + plants));
  const std::string later = replaced(
      replaced(milkAndBread, "Buy milkAndBread", "Buy oat milkAndBread"), "20260101", "20260102");
  const std::string older = replaced(replaced(plants, "Water", "Drown"), "20260101", "20250101");
  const Outcome run =
      succeed({"import", "-"}, ical(later + older + todo("UID:third\r\nSUMMARY:c\r\n")));
  EXPECT_EQ(run.out, "3 tasks imported from standard input (iCalendar 2.0): 1 added (UID 3), "
                     "1 updated (UID 1), 1 older than the stored task and left out (UID 2)\n");
  EXPECT_THAT(succeed({"list"}).out, HasSubstr("Buy oat milkAndBread, bread"));
  EXPECT_THAT(succeed({"list"}).out, HasSubstr("Water plants"));
}

TEST_F(Ical, ImportTakesLastOfSameUid) {
  const std::string later = replaced(milkAndBread, "Buy milkAndBread", "Buy oat milkAndBread");
  EXPECT_EQ(succeed({"import", "-"}, ical(milkAndBread) + ical(later)).out,
            "2 tasks imported from standard input (iCalendar 2.0): 1 added (UID 1), 1 left out "
            "because another with the same UID follows\n");
  EXPECT_EQ(succeed({"import", "--json", "-"}, ical(milkAndBread) + ical(later)).array().size(), 1);
}

TEST_F(Ical, CompletesRepeatingTaskWithoutRuleLibrary) {
  succeed({"import", "-"}, ical(plants));
  environment_["ULO_LOG"] = "stderr";
  hideLibrary("libuloical.so");
  const Outcome done = ulotask({"done", "1"});
  EXPECT_EQ(done.code, 0);
  EXPECT_THAT(done.out, HasSubstr("the next date cannot be computed; it is completed"));
  EXPECT_THAT(done.err, HasSubstr("libuloical.so can't be used"));
}

TEST_F(Ical, ListLoadsNoLibical) {
  environment_["LD_TRACE_LOADED_OBJECTS"] = "1";
  const std::string libraries = ulotask({"list"}).out;
  EXPECT_THAT(libraries, HasSubstr("libulotaskcore"));
  EXPECT_THAT(libraries, testing::Not(HasSubstr("libical")));
}

TEST_F(Ical, ImportNewAddsAgain) {
  succeed({"import", "-"}, ical(milkAndBread));
  EXPECT_EQ(succeed({"import", "--new", "-"}, ical(milkAndBread)).out,
            "1 task imported from standard input (iCalendar 2.0): 1 added (UID 2)\n");
  const std::string uuid =
      succeed({"show", "2", "--json"}).object()["uuid"].toString().toStdString();
  EXPECT_NE(uuid, "milkAndBread-1");
  EXPECT_EQ(exported("2"), replaced(ical(milkAndBread), "UID:milkAndBread-1", "UID:" + uuid));
}

TEST_F(Ical, ImportPrintsJson) {
  const QJsonArray tasks = succeed({"import", "--json", "-"}, ical(milkAndBread + plants)).array();
  ASSERT_EQ(tasks.size(), 2);
  EXPECT_EQ(tasks[0]["import"].toString(), "added");
  EXPECT_EQ(tasks[0]["uuid"].toString(), "milkAndBread-1");
  EXPECT_FALSE(tasks[0]["repeats"].toBool());
  EXPECT_TRUE(tasks[1]["repeats"].toBool());
  const QJsonArray again = succeed({"import", "--json", "-"}, ical(milkAndBread)).array();
  ASSERT_EQ(again.size(), 1);
  EXPECT_EQ(again[0]["import"].toString(), "unchanged");
  EXPECT_EQ(again[0]["uid"].toInt(), 1);
}

TEST_F(Ical, ImportReadsFileWithBothVersions) {
  const std::string phone = calendar(todo("SUMMARY:of a phone\r\n"));
  for (const bool phoneFirst : {true, false}) {
    environment_["ULO_DATA_DIR"] = path(phoneFirst ? "first" : "second");
    const std::string name =
        file("both.ics", phoneFirst ? phone + ical(milkAndBread) : ical(milkAndBread) + phone);
    const std::string out = succeed({"import", name}).out;
    EXPECT_THAT(out, HasSubstr("1 task imported from " + name + " (vCalendar 1.0): UID "));
    EXPECT_THAT(out, HasSubstr("1 task imported from " + name + " (iCalendar 2.0): 1 added"));
    const std::string list = succeed({"list"}).out;
    EXPECT_THAT(list, HasSubstr("of a phone"));
    EXPECT_THAT(list, HasSubstr("Buy milkAndBread, bread"));
  }
}

TEST_F(Ical, ImportReportsProblemsOfText) {
  const std::string name =
      file("odd.ics", ical(todo("UID:a\r\nSUMMARY:a\r\nDUE:yesterday\r\nSTATUS:LATER\r\n")));
  const Outcome run = ulotask({"import", name});
  EXPECT_EQ(run.code, 0) << run.err;
  EXPECT_THAT(run.err, HasSubstr("ulotask: " + name + ": "));
  EXPECT_THAT(run.err, HasSubstr("(line 7)\n"));
  EXPECT_THAT(exported("1"), HasSubstr("DUE:yesterday\r\nSTATUS:LATER\r\n"));
}

TEST_F(Ical, ImportTruncatesLongTextsInRecordOnly) {
  const std::string text = ical(todo("UID:a\r\nSUMMARY:" + std::string(513, 's') + "\r\n"));
  const std::string name = file("long.ics", text);
  const Outcome run = ulotask({"import", name});
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.err,
            "ulotask: " + name + ", task 1: a summary of 513 characters is cut to its first 512\n");
  EXPECT_EQ(succeed({"show", "1", "--json"}).object()["summary"].toString().size(), 512);
  EXPECT_EQ(exported("1"), text);
}

TEST_F(Ical, ImportRejectsBadTexts) {
  expectRefused(ical(""), 6, "holds no to-do");
  const std::string whole = ical(milkAndBread);
  for (std::size_t length = whole.find("PRODID"); length < whole.size() - 20; length += 11)
    expectRefused(whole.substr(0, length), 7, "truncated");
  std::string nested;
  for (int i = 0; i < 1000; ++i)
    nested = "BEGIN:X-A\r\n" + nested + "END:X-A\r\n";
  expectRefused(ical(todo(nested)), 14, "exceeds a limit");
  std::string noise = whole;
  noise.resize((std::size_t{64} << 20U) + 1, 'x');
  expectRefused(noise, 8, "larger than");
}

TEST_F(Ical, ImportStoresAllFilesOrNothing) {
  add({"first"});
  const std::string one = file("one.ics", ical(milkAndBread));
  const std::string two = file("two.vcs", calendar(todo("SUMMARY:refused\r\n")));
  sql("CREATE TRIGGER refuse AFTER INSERT ON task_table_task WHEN NEW.UID = 3 BEGIN SELECT "
      "RAISE(ABORT, 'refused'); END");
  const Outcome run = ulotask({"import", one, two});
  EXPECT_EQ(run.code, 1);
  EXPECT_THAT(run.err, StartsWith("ulotask: nothing was stored: the import failed: "));
  EXPECT_EQ(uids({"list"}), std::vector<int>{1});
  sql("DROP TRIGGER refuse");
  EXPECT_THAT(succeed({"db", "check"}).out, Not(HasSubstr("texts")));
  EXPECT_EQ(ulotask({"import", one, file("bad.ics", "BEGIN:VCALENDAR\r\n")}).code, 7);
  EXPECT_EQ(uids({"list"}), std::vector<int>{1});
}

TEST_F(Ical, ImportFindsZoneAndOverrideAfterManyTodos) {
  environment_["TZ"] = "UTC";
  const std::string zone = "BEGIN:VTIMEZONE\r\nTZID:Here\r\nBEGIN:STANDARD\r\n"
                           "DTSTART:19700101T000000\r\nTZOFFSETFROM:+0500\r\n"
                           "TZOFFSETTO:+0500\r\nEND:STANDARD\r\nEND:VTIMEZONE\r\n";
  const std::string first = todo("UID:first\r\nDUE;TZID=Here:20270305T100000\r\n");
  const std::string change = todo("UID:first\r\nRECURRENCE-ID:20270305T050000Z\r\n");
  std::string others;
  for (int i = 0; i < 300; ++i)
    others += todo("UID:" + std::to_string(i) + "\r\nSUMMARY:a\r\n");
  EXPECT_THAT(succeed({"import", "-"}, ical(first + others + change + zone)).out,
              StartsWith("301 tasks imported from standard input (iCalendar 2.0): 301 added "));
  EXPECT_EQ(succeed({"show", "--json", "1"}).object()["due"].toString(), "2027-03-05T05:00:00Z");
  EXPECT_EQ(exported("1"), ical(first + change + zone));
  EXPECT_EQ(exported("301"), ical(todo("UID:299\r\nSUMMARY:a\r\n")));
}

TEST_F(Ical, ImportKeepsNothingIfLastTodoFails) {
  std::string many;
  for (int i = 0; i < 300; ++i)
    many += todo("UID:" + std::to_string(i) + "\r\nSUMMARY:a\r\n");
  add({"first"});
  sql("CREATE TRIGGER refuse AFTER INSERT ON task_table_task WHEN NEW.UID = 301 BEGIN SELECT "
      "RAISE(ABORT, 'refused'); END");
  const Outcome run = ulotask({"import", "-"}, ical(many));
  EXPECT_EQ(run.code, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(uids({"list"}), std::vector<int>{1});
  sql("DROP TRIGGER refuse");
  EXPECT_EQ(succeed({"import", "--json", "-"}, ical(many)).array().size(), 300);
}

TEST_F(Ical, ImportOfTextsThatAreTooLargeKeepsNothing) {
  const std::string large = "X-LARGE:" + std::string(std::size_t{30} << 20, 'x') + "\r\n";
  std::string todos;
  for (int i = 0; i < 5; ++i)
    todos += todo("SUMMARY:a\r\n");
  const std::string name = file("large.ics", ical(large + todos));
  const Outcome run = ulotask({"import", name});
  EXPECT_EQ(run.code, 14);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "ulotask: " + name +
                         ": exceeds a limit: the texts of the to-dos have more than 128 MiB\n");
  EXPECT_EQ(succeed({"list"}).out, "No tasks.\n");
}

TEST_F(Ical, ImportIntoFullStoreKeepsNothing) {
  add({"first"});
  std::string many;
  for (int i = 0; i < 200; ++i)
    many += todo("UID:many-" + std::to_string(i) +
                 "\r\nSUMMARY:a\r\nX-LONG:" + std::string(2000, 'x') + "\r\n");
  limitStore(60);
  const Outcome run = ulotask({"import", "-"}, ical(many));
  EXPECT_EQ(run.code, 9);
  EXPECT_THAT(run.err, HasSubstr("nothing was stored: the import failed: the store is full"));
  environment_.erase("LD_PRELOAD");
  EXPECT_EQ(uids({"list"}), std::vector<int>{1});
  succeed({"db", "check"});
}

TEST_F(Ical, ExportWritesOneTaskAsItCame) {
  succeed({"import", "-"}, ical(milkAndBread));
  EXPECT_EQ(exported("1"), ical(milkAndBread));
  succeed({"edit", "1", "--priority", "9"});
  const std::string changed = exported("1");
  EXPECT_THAT(changed, HasSubstr("PRIORITY:9\r\n"));
  EXPECT_THAT(changed, HasSubstr("SUMMARY:Buy milkAndBread\\, bread\r\n"));
  EXPECT_THAT(changed, HasSubstr("X-COLOR:blue\r\n"));
  EXPECT_THAT(changed, HasSubstr("PRODID:-//elsewhere//EN\r\n"));
}

TEST_F(Ical, ExportWritesOneCalendarWithAllTasks) {
  const std::string zone = "BEGIN:VTIMEZONE\r\nTZID:Here\r\nBEGIN:STANDARD\r\n"
                           "DTSTART:19700101T000000\r\nTZOFFSETFROM:+0100\r\nTZOFFSETTO:+0100\r\n"
                           "END:STANDARD\r\nEND:VTIMEZONE\r\n";
  const auto inZone = [](const std::string& uid) {
    return todo("UID:" + uid + "\r\nDUE;TZID=Here:20270305T100000\r\nX-OWN:" + uid + "\r\n");
  };
  succeed({"import", "-"}, ical(zone + inZone("a") + inZone("b")));
  add({"of this store"});
  const std::string name = path("all.ics");
  EXPECT_EQ(succeed({"export", "--format", "icalendar", "-o", name}).out,
            "3 tasks exported to " + name + "\n");
  const std::string all = readWhole(name);
  EXPECT_THAT(all, StartsWith("BEGIN:VCALENDAR\r\n"));
  EXPECT_THAT(all, HasSubstr(inZone("a")));
  EXPECT_THAT(all, HasSubstr(inZone("b")));
  EXPECT_THAT(all, HasSubstr("SUMMARY:of this store\r\n"));
  EXPECT_EQ(all.find(zone), all.rfind(zone));
  EXPECT_EQ(all.find("BEGIN:VCALENDAR"), all.rfind("BEGIN:VCALENDAR"));
  EXPECT_EQ(succeed({"import", name}).out,
            "3 tasks imported from " + name + " (iCalendar 2.0): 3 unchanged\n");
  // In another store it is the same again.
  environment_["ULO_DATA_DIR"] = path("other");
  succeed({"import", name});
  EXPECT_EQ(succeed({"export", "--format", "icalendar"}).out, all);
}

TEST_F(Ical, ExportKeepsDifferentZonesOfOneName) {
  const auto text = [](const std::string& uid, const std::string& offset) {
    return ical(
        "BEGIN:VTIMEZONE\r\nTZID:Customized Time Zone\r\nBEGIN:STANDARD\r\n"
        "DTSTART:19700101T000000\r\nTZOFFSETFROM:" +
        offset + "\r\nTZOFFSETTO:" + offset + "\r\nEND:STANDARD\r\nEND:VTIMEZONE\r\n" +
        todo("UID:" + uid + "\r\nSUMMARY:a\r\nDUE;TZID=Customized Time Zone:20270301T120000\r\n"));
  };
  succeed({"import", file("z1.ics", text("a", "+0100")), file("z2.ics", text("b", "-0800"))});
  succeed({"export", "--format", "icalendar", "-o", path("z.ics")});
  succeed({"import", "--new", path("z.ics")});
  for (const char* uid : {"1", "3"})
    EXPECT_EQ(succeed({"show", uid, "--json"}).object()["due"].toString(), "2027-03-01T11:00:00Z");
  for (const char* uid : {"2", "4"})
    EXPECT_EQ(succeed({"show", uid, "--json"}).object()["due"].toString(), "2027-03-01T20:00:00Z");
}

TEST_F(Ical, ExportFormatIsAnOption) {
  add({"one"});
  const std::string name = path("out.ics");
  succeed({"export", "-o", name});
  EXPECT_THAT(readWhole(name), HasSubstr("VERSION:1.0"));
  EXPECT_EQ(succeed({"export", "--format", "vcalendar"}).out, readWhole(name));
  EXPECT_EQ(ulotask({"export", "--format", "xml"}).code, 2);
  environment_["ULO_DATA_DIR"] = path("empty");
  const std::string none = succeed({"export", "--format", "icalendar"}).out;
  EXPECT_THAT(none, HasSubstr("VERSION:2.0"));
  EXPECT_EQ(ulotask({"import", "-"}, none).code, 6);
}

TEST_F(Ical, ShowSaysThatTaskRepeats) {
  succeed({"import", "-"}, ical(milkAndBread + plants));
  EXPECT_THAT(succeed({"show", "2"}).out,
              HasSubstr("Repeats   every week (FREQ=WEEKLY;COUNT=2)\n"));
  EXPECT_THAT(succeed({"show", "1"}).out, Not(HasSubstr("Repeats")));
  EXPECT_TRUE(succeed({"show", "2", "--json"}).object()["repeats"].toBool());
  EXPECT_FALSE(succeed({"show", "1", "--json"}).object()["repeats"].toBool(true));
}

TEST_F(Ical, DoneMovesRepeatingTask) {
  environment_["TZ"] = "UTC";
  succeed({"import", "-"}, ical(plants));
  EXPECT_EQ(succeed({"done", "1"}).out, "Done: task 1: Water plants; it repeats and has moved to "
                                        "its next date, 2027-03-12 17:00\n");
  const QJsonObject task = succeed({"show", "1", "--json"}).object();
  EXPECT_EQ(task["due"].toString(), "2027-03-12T17:00:00Z");
  EXPECT_FALSE(task["completed"].toBool());
  // The file is now older than the task.
  EXPECT_THAT(succeed({"import", "-"}, ical(plants)).out, HasSubstr("1 older than the stored"));
  EXPECT_EQ(succeed({"done", "1"}).out, "Done: task 1: Water plants; it was its last date\n");
  EXPECT_TRUE(succeed({"show", "1", "--json"}).object()["completed"].toBool());
  EXPECT_THAT(exported("1"), HasSubstr("STATUS:COMPLETED"));
}

TEST_F(Ical, AlarmInDaysKeepsItsTimeAcrossClockChange) {
  environment_["TZ"] = "Europe/Berlin";
  succeed({"import", "-"},
          ical(todo("UID:a\r\nSUMMARY:a\r\nDUE;TZID=Europe/Berlin:20270320T180000\r\n"
                    "BEGIN:VALARM\r\nACTION:DISPLAY\r\nTRIGGER;RELATED=END:-P1D\r\n"
                    "END:VALARM\r\n")));
  succeed({"edit", "1", "--due", "2027-03-28 18:00"});
  const QJsonObject task = succeed({"show", "1", "--json"}).object();
  EXPECT_EQ(task["alarm"].toString(), "2027-03-27T17:00:00Z");
  EXPECT_THAT(exported("1"), HasSubstr("DUE;TZID=Europe/Berlin:20270328T180000\r\n"));
  EXPECT_THAT(exported("1"), HasSubstr("TRIGGER;RELATED=END:-P1D\r\n"));
}

TEST_F(Ical, EditOfDueMovesStart) {
  environment_["TZ"] = "UTC";
  succeed({"import", "-"}, ical(todo("UID:a\r\nSUMMARY:a\r\nDTSTART:20270424T100000Z\r\n"
                                     "DUE:20270425T100000Z\r\n")));
  succeed({"edit", "1", "--due", "2027-03-01"});
  EXPECT_THAT(exported("1"), HasSubstr("DTSTART:20270228T000000Z\r\nDUE:20270301T000000Z\r\n"));
}

TEST_F(Ical, EditOfStatusMovesRepeatingTask) {
  succeed({"import", "-"}, ical(plants));
  const Outcome run = ulotask({"edit", "1", "--status", "completed"});
  EXPECT_EQ(run.code, 0);
  EXPECT_THAT(run.err, HasSubstr("it repeats and has moved to its next date"));
}

TEST_F(Ical, RemovalRemovesText) {
  succeed({"import", "-"}, ical(milkAndBread));
  succeed({"rm", "1"});
  EXPECT_THAT(succeed({"import", "-"}, ical(milkAndBread)).out, HasSubstr("1 added (UID 2)"));
  succeed({"db", "check"});
}

TEST_F(Ical, SurvivesBackupAndRestore) {
  succeed({"import", "-"}, ical(milkAndBread));
  succeed({"db", "backup", path("saved.db")});
  environment_["ULO_DATA_DIR"] = path("other");
  succeed({"db", "restore", path("saved.db")});
  EXPECT_EQ(exported("1"), ical(milkAndBread));
  succeed({"db", "check"});
}

class IcalMerge : public Ical {
protected:
  const std::string early_ = ical(todo("UID:a\r\nLAST-MODIFIED:20260101T100000Z\r\nSUMMARY:old\r\n"
                                       "X-ONE:1\r\n"));
  const std::string late_ = ical(todo("UID:a\r\nLAST-MODIFIED:20260102T100000Z\r\nSUMMARY:new\r\n"
                                      "X-TWO:2\r\n"));
  const std::string one_ = file("one.ics", early_);
  const std::string two_ = file("two.ics", late_);

  void expectRefused(int code, const std::string& reason) {
    const std::string one = readWhole(one_);
    const std::string two = readWhole(two_);
    const Outcome run = ulotask({"ical", "merge", one_, two_});
    EXPECT_EQ(run.code, code);
    EXPECT_THAT(run.err, HasSubstr(reason));
    EXPECT_EQ(readWhole(one_), one);
    EXPECT_EQ(readWhole(two_), two);
  }
};

TEST_F(IcalMerge, MakesFilesEqual) {
  EXPECT_EQ(succeed({"ical", "merge", one_, two_}).out, "Merged " + one_ + " and " + two_ + "\n");
  const std::string merged = readWhole(one_);
  EXPECT_EQ(readWhole(two_), merged);
  EXPECT_THAT(merged, HasSubstr("SUMMARY:new\r\n"));
  EXPECT_THAT(merged, HasSubstr("X-ONE:1\r\n"));
  EXPECT_THAT(merged, HasSubstr("X-TWO:2\r\n"));
  EXPECT_FALSE(std::filesystem::exists(path("data/tasks.db")));
}

TEST_F(IcalMerge, RejectsOtherFiles) {
  file("two.ics", replaced(late_, "UID:a", "UID:b"));
  expectRefused(2, "the files contain different to-dos");
  file("two.ics", ical(milkAndBread + plants));
  expectRefused(2, "contains 2 to-dos");
  file("two.ics", ical(""));
  expectRefused(6, "holds no to-do");
  file("two.ics", late_.substr(0, late_.size() - 30));
  expectRefused(7, "truncated");
  file("two.ics", "Dear reader");
  expectRefused(5, "not an iCalendar file");
  std::filesystem::remove(two_);
  EXPECT_EQ(ulotask({"ical", "merge", one_, two_}).code, 4);
  EXPECT_EQ(readWhole(one_), early_);
}

TEST_F(IcalMerge, ChangesNeitherFileIfOneCannotBeWritten) {
  std::filesystem::create_directory(path("data"));
  const std::string inStore = file("data/two.ics", late_);
  const Outcome run = ulotask({"ical", "merge", one_, inStore});
  EXPECT_EQ(run.code, 12);
  EXPECT_EQ(readWhole(one_), early_);
  EXPECT_EQ(readWhole(inStore), late_);
}

}  // namespace
