// add, edit, done, undone and rm.

#include "ulotask_runner.h"

#include <QDateTime>

namespace {

using testing::HasSubstr;

class Edit : public UlotaskTest {
protected:
  QJsonObject task(const std::string& uid) { return succeed({"show", uid, "--json"}).object(); }
};

TEST_F(Edit, AddRequiresOnlySummary) {
  EXPECT_EQ(succeed({"add", "Buy milk"}).out, "Added task 1: Buy milk\n");
  EXPECT_EQ(task("1")["status"].toInt(), 1);
  EXPECT_EQ(task("1")["priority"].toInt(), 0);
}

TEST_F(Edit, AddRejectsEmptySummary) {
  for (const char* summary : {"", "  ", "\n"})
    EXPECT_EQ(ulotask({"add", summary}).code, 2);
  EXPECT_EQ(succeed({"list"}).out, "No tasks.\n");
}

TEST_F(Edit, AddAcceptsSummaryThatLooksLikeOption) {
  add({"--", "--json"});
  EXPECT_EQ(task("1")["summary"].toString(), "--json");
}

TEST_F(Edit, AddAcceptsPrioritiesAndTheirWords) {
  const std::vector<std::pair<const char*, int>> priorities = {
      {"0", 0}, {"1", 1}, {"9", 9}, {"high", 1}, {"normal", 5}, {"low", 9}};
  for (const auto& [text, priority] : priorities)
    EXPECT_EQ(task(add({"x", "--priority", text}))["priority"].toInt(), priority) << text;
  for (const char* text : {"10", "-1", "HIGH", "1x", ""})
    EXPECT_EQ(ulotask({"add", "x", std::string("--priority=") + text}).code, 2) << text;
}

TEST_F(Edit, AddAcceptsLocalDates) {
  const std::vector<std::pair<const char*, const char*>> dates = {
      {"2027-03-05", "2027-03-04T23:00:00Z"},       {"2027-07-05", "2027-07-04T22:00:00Z"},
      {"2027-03-05 18:00", "2027-03-05T17:00:00Z"}, {"2027-03-05T18:00:59", "2027-03-05T17:00:59Z"},
      {"1970-01-02", "1970-01-01T23:00:00Z"},       {"2038-01-17 23:59", "2038-01-17T22:59:00Z"}};
  for (const auto& [text, utc] : dates)
    EXPECT_EQ(task(add({"x", "--due", text, "--alarm", text}))["due"].toString(), utc) << text;
}

TEST_F(Edit, AddRejectsInvalidDates) {
  for (const char* text : {"tomorrow", "2027-02-29", "2027-3-5", "2027-03-05 25:00", "2027-03-05x",
                           "2027-03-05 18:00 ", "2027-03-05 ", "18:00", "\x1b[31m"}) {
    for (const char* option : {"--due", "--alarm"}) {
      const Outcome run = ulotask({"add", "x", option, text});
      EXPECT_EQ(run.code, 2) << text;
      EXPECT_THAT(run.err, HasSubstr(option));
      EXPECT_THAT(run.err, testing::Not(HasSubstr("\x1b")));
    }
  }
  EXPECT_EQ(succeed({"list"}).out, "No tasks.\n");
}

TEST_F(Edit, AddRejectsDatesOutOfRange) {
  for (const char* text : {"1970-01-01", "1969-12-31 23:59", "2038-01-18", "9999-12-31"}) {
    const Outcome run = ulotask({"add", "x", "--due", text});
    EXPECT_EQ(run.code, 2) << text;
    EXPECT_THAT(run.err, HasSubstr("is not between 1970-01-02 and 2038-01-17"));
  }
}

TEST_F(Edit, AddRejectsSkippedLocalTimes) {
  // In Berlin, 01:59 is followed by 03:00 on that day.
  const Outcome run = ulotask({"add", "x", "--due", "2027-03-28 02:30"});
  EXPECT_EQ(run.code, 2);
  EXPECT_THAT(run.err, HasSubstr("--due: the clocks skip the local time"));
}

TEST_F(Edit, AddAddsMissingCategory) {
  EXPECT_EQ(task(add({"x", "--category", "garden"}))["category"].toString(), "garden");
  EXPECT_EQ(task(add({"y", "--category", "garden"}))["category"].toString(), "garden");
  EXPECT_EQ(task(add({"z", "--category", "meeting"}))["category"].toString(), "meeting");
  EXPECT_THAT(succeed({"db", "check"}).out, HasSubstr("3 tasks and 6 categories\n"));
}

TEST_F(Edit, AddTruncatesLongTextsAndReportsIt) {
  const Outcome run =
      ulotask({"add", "--json", std::string(513, 's'), "--note", std::string(4003, 'n')});
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.err, "ulotask: a summary of 513 characters is cut to its first 512\n"
                     "ulotask: a note of 4003 characters is cut to its first 4002\n");
  EXPECT_EQ(task("1")["summary"].toString().length(), 512);
  EXPECT_EQ(task("1")["note"].toString().length(), 4002);
  const QJsonObject whole = task(add({std::string(512, 's'), "--note", std::string(4002, 'n')}));
  EXPECT_EQ(whole["summary"].toString().length(), 512);
  EXPECT_EQ(whole["note"].toString().length(), 4002);
}

TEST_F(Edit, TruncationNeverSplitsSurrogatePair) {
  const Outcome run = ulotask({"add", "--json", std::string(511, 's') + "\U0001F6B2"});
  EXPECT_EQ(run.code, 0);
  EXPECT_THAT(run.err, HasSubstr("a summary of 513 characters is cut to its first 511"));
  EXPECT_EQ(task("1")["summary"].toString().toStdString(), std::string(511, 's'));
}

TEST_F(Edit, AddRejectsTextThatIsNotUtf8) {
  const Outcome run = shell("\"$ULOTASK\" add $'K\\xe4se'");
  EXPECT_EQ(run.code, 2);
  EXPECT_EQ(run.err, "ulotask: the summary is not UTF-8: K\uFFFDse\n");
}

TEST_F(Edit, DoneSetsStatusAndEnd) {
  add({"Buy milk"});
  EXPECT_EQ(succeed({"done", "1"}).out, "Done: task 1: Buy milk\n");
  EXPECT_TRUE(task("1")["completed"].toBool());
  const QString end = task("1")["end"].toString();
  EXPECT_TRUE(QDateTime::fromString(end, Qt::ISODate).isValid()) << end.toStdString();
  // Marking it as done again keeps the first time.
  succeed({"done", "1"});
  EXPECT_EQ(task("1")["end"].toString(), end);
  EXPECT_EQ(succeed({"undone", "1"}).out, "To do again: task 1: Buy milk\n");
  EXPECT_EQ(task("1")["status"].toInt(), 1);
  EXPECT_TRUE(task("1")["end"].isNull());
}

TEST_F(Edit, DoneKeepsTheOtherFields) {
  add({"Buy milk", "--due", "2027-03-05 18:00", "--alarm", "2027-03-05", "--priority", "3",
       "--category", "shop", "--note", "two\nlines"});
  QJsonObject before = task("1");
  succeed({"done", "1"});
  QJsonObject after = task("1");
  for (const char* name : {"status", "statusWord", "completed", "end", "revision"}) {
    before.remove(name);
    after.remove(name);
  }
  EXPECT_EQ(before, after);
}

TEST_F(Edit, ChangesOnlyGivenFields) {
  add({"Buy milk", "--due", "2027-03-05 18:00", "--alarm", "2027-03-05", "--priority", "3",
       "--category", "shop", "--note", "two\nlines"});
  const QJsonObject before = task("1");
  const std::vector<std::pair<Arguments, QJsonObject>> changes = {
      {{"--summary", "Buy tea"}, {{"summary", "Buy tea"}}},
      {{"--due", "2027-03-06"}, {{"due", "2027-03-05T23:00:00Z"}}},
      {{"--alarm", "2027-03-06 09:00"}, {{"alarm", "2027-03-06T08:00:00Z"}}},
      {{"--priority", "low"}, {{"priority", 9}, {"priorityClass", "low"}}},
      {{"--status", "delegated"}, {{"status", 7}, {"statusWord", "delegated"}}},
      {{"--category", "garden"}, {{"category", "garden"}}},
      {{"--note", "one line"}, {{"note", "one line"}}},
  };
  QJsonObject expected = before;
  for (const auto& [options, fields] : changes) {
    Arguments arguments = {"edit", "1"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    EXPECT_EQ(succeed(arguments).out.rfind("Changed task 1: Buy ", 0), 0U);
    for (const QString& name : fields.keys())
      expected[name] = fields[name];
    QJsonObject after = task("1");
    after["revision"] = expected["revision"];
    EXPECT_EQ(after, expected) << options[0];
  }
}

TEST_F(Edit, RemovesFields) {
  add({"x", "--due", "2027-03-05", "--alarm", "2027-03-05", "--priority", "3", "--category", "shop",
       "--note", "n"});
  const QJsonObject after = succeed({"edit", "1", "--due", "none", "--alarm", "none", "--priority",
                                     "0", "--category", "", "--note", "", "--json"})
                                .object();
  for (const char* name : {"due", "alarm", "category"})
    EXPECT_TRUE(after[name].isNull()) << name;
  EXPECT_EQ(after["priority"].toInt(), 0);
  EXPECT_EQ(after["note"].toString(), "");
  EXPECT_EQ(after, task("1"));
}

TEST_F(Edit, SetsTimeOfChange) {
  add({"x"});
  sql("UPDATE task_table_task SET revision = 1000000000");
  EXPECT_EQ(task("1")["revision"].toString(), "2001-09-09T01:46:40Z");
  const QDateTime before = QDateTime::currentDateTimeUtc().addSecs(-1);
  succeed({"edit", "1", "--note", "n"});
  EXPECT_GE(QDateTime::fromString(task("1")["revision"].toString(), Qt::ISODate), before);
}

TEST_F(Edit, EndFollowsStatus) {
  add({"x"});
  EXPECT_FALSE(succeed({"edit", "1", "--status", "completed", "--json"}).object()["end"].isNull());
  EXPECT_TRUE(
      succeed({"edit", "1", "--status", "needs action", "--json"}).object()["end"].isNull());
  for (const char* word : {"completed", "needs-action", "accepted", "sent", "tentative",
                           "confirmed", "declined", "delegated"})
    succeed({"edit", "1", "--status", word});
}

TEST_F(Edit, AddsMissingCategory) {
  add({"x"});
  succeed({"edit", "1", "--category", "garden"});
  EXPECT_EQ(task("1")["category"].toString(), "garden");
  EXPECT_THAT(succeed({"category", "list"}).out, HasSubstr("    1  garden\n"));
}

TEST_F(Edit, RequiresAChange) {
  add({"x"});
  for (const Arguments& arguments :
       std::vector<Arguments>{{"edit", "1"}, {"edit", "1", "--json"}}) {
    const Outcome run = ulotask(arguments);
    EXPECT_EQ(run.code, 2);
    EXPECT_EQ(run.err, "ulotask: no change is given; see ulotask edit --help\n");
  }
  EXPECT_EQ(succeed({"stats", "--json"}).object()["lastChange"].toInt(), 1);
}

TEST_F(Edit, RejectsInvalidValuesAndChangesNothing) {
  add({"x", "--note", "n"});
  const QJsonObject before = task("1");
  const std::vector<std::pair<Arguments, const char*>> wrong = {
      {{"--summary", " "}, "the summary is empty"},
      {{"--due", ""}, "--due: invalid date \"\"; use 2026-03-05"},
      {{"--alarm", "None"}, "--alarm: invalid date \"None\""},
      {{"--priority", "10"}, "--priority: \"10\" is not 0 to 9"},
      {{"--status", "finished"}, "--status: \"finished\" is not one of completed, needs-action, "},
      {{"--category", "K\\xe4se"}, "the category is not UTF-8"},
  };
  for (const auto& [options, message] : wrong) {
    const Outcome run =
        shell("\"$ULOTASK\" edit 1 --note changed " + options[0] + " $'" + options[1] + "'");
    EXPECT_EQ(run.code, 2) << message;
    EXPECT_THAT(run.err, HasSubstr(message));
  }
  EXPECT_EQ(ulotask({"edit", "one", "--note", "n"}).code, 2);
  EXPECT_EQ(task("1"), before);
}

TEST_F(Edit, FailsForMissingTask) {
  const Outcome run = ulotask({"edit", "999", "--category", "garden"});
  EXPECT_EQ(run.code, 3);
  EXPECT_EQ(run.err, "ulotask: no task has the UID 999\n");
  EXPECT_THAT(succeed({"category", "list"}).out, testing::Not(HasSubstr("garden")));
}

TEST_F(Edit, TruncatesOnlyGivenTexts) {
  add({"x"});
  const std::string longText(600, 's');
  sql("UPDATE task_table_task SET summary = '" + longText + "'");
  succeed({"edit", "1", "--note", "n"});
  EXPECT_EQ(task("1")["summary"].toString().length(), 600);
  const Outcome run = ulotask({"edit", "1", "--summary", longText});
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.err, "ulotask: a summary of 600 characters is cut to its first 512\n");
  EXPECT_EQ(task("1")["summary"].toString().length(), 512);
}

TEST_F(Edit, TaskOfRemovedCategoryCanBeEdited) {
  add({"x", "--category", "garden"});
  succeed({"category", "rm", "garden"});
  const Outcome run = ulotask({"edit", "1", "--note", "n"});
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.err,
            "ulotask: the category of task 1: x is gone; the task is stored without one\n");
  EXPECT_TRUE(task("1")["category"].isNull());
  EXPECT_THAT(succeed({"category", "list"}).out, testing::Not(HasSubstr("None")));
}

TEST_F(Edit, VerbsProcessEachUidOnce) {
  for (const char* summary : {"a", "b", "c"})
    add({summary});
  EXPECT_EQ(succeed({"done", "3", "1", "3"}).out, "Done: task 3: c\nDone: task 1: a\n");
  EXPECT_EQ(succeed({"rm", "2", "3", "2"}).out, "Removed task 2: b\nRemoved task 3: c\n");
  EXPECT_EQ(succeed({"list", "--json"}).array().size(), 1);
}

TEST_F(Edit, MissingTaskDoesNotPreventOthers) {
  for (const char* summary : {"a", "b", "c"})
    add({summary});
  const Outcome done = ulotask({"done", "1", "998", "999", "2"});
  EXPECT_EQ(done.code, 3);
  EXPECT_EQ(done.out, "Done: task 1: a\nDone: task 2: b\n");
  EXPECT_EQ(done.err, "ulotask: no task has the UID 998\nulotask: no task has the UID 999\n");
  const Outcome removed = ulotask({"rm", "999", "2"});
  EXPECT_EQ(removed.code, 3);
  EXPECT_EQ(removed.out, "Removed task 2: b\n");
}

TEST_F(Edit, InvalidUidPreventsAll) {
  add({"a"});
  for (const char* verb : {"done", "undone", "rm"}) {
    EXPECT_EQ(ulotask({verb, "1", "one"}).code, 2) << verb;
    EXPECT_FALSE(task("1")["completed"].toBool()) << verb;
  }
}

TEST_F(Edit, UidsAreNeverReused) {
  add({"a"});
  succeed({"rm", "1"});
  EXPECT_EQ(add({"b"}), "2");
}

}  // namespace
