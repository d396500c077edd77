// The verb `changes`.

#include "ulotask_runner.h"

#include <QDateTime>
#include <QJsonDocument>

#include <csignal>

namespace {

using testing::HasSubstr;
using testing::MatchesRegex;

class Changes : public UlotaskTest {
protected:
  // Entries 1 to 4.
  void changeSomething() {
    add({"a"});
    add({"b"});
    succeed({"done", "1"});
    succeed({"rm", "2"});
  }
  void forgetEntriesTo(int entry) {
    sql("UPDATE ulo_journal SET floor = " + std::to_string(entry));
    sql("DELETE FROM ulo_changes WHERE entry <= " + std::to_string(entry));
  }
};

TEST_F(Changes, PrintsOneLineForEach) {
  EXPECT_EQ(succeed({"changes"}).out, "");
  changeSomething();
  const std::string time = "  [0-9-]+ [0-9]+:[0-9]+:[0-9]+  ";
  EXPECT_THAT(succeed({"changes"}).out,
              MatchesRegex("     1" + time + "added    1\n     2" + time + "added    2\n     3" +
                           time + "updated  1\n     4" + time + "removed  2\n"));
}

TEST_F(Changes, AreDated) {
  const QDateTime before = QDateTime::currentDateTimeUtc().addSecs(-1);
  add({"a"});
  const QJsonObject change = succeed({"changes", "--json"}).object();
  const QDateTime time = QDateTime::fromString(change["time"].toString(), Qt::ISODate);
  EXPECT_GE(time, before);
  EXPECT_LE(time, QDateTime::currentDateTimeUtc());
  EXPECT_THAT(succeed({"changes"}).out,
              HasSubstr(time.toLocalTime().toString("yyyy-MM-dd HH:mm:ss").toStdString()));
}

TEST_F(Changes, PrintsOneJsonLineForEach) {
  changeSomething();
  const std::string out = succeed({"changes", "--json", "--since", "3"}).out;
  EXPECT_EQ(std::count(out.begin(), out.end(), '\n'), 1);
  const QJsonObject change = QJsonDocument::fromJson(QByteArray::fromStdString(out)).object();
  EXPECT_EQ(change["entry"].toInt(), 4);
  EXPECT_EQ(change["change"].toString(), "removed");
  EXPECT_EQ(change["uid"].toInt(), 2);
  EXPECT_EQ(change["source"].toString().length(), 38);
  EXPECT_EQ(change.size(), 5);
}

TEST_F(Changes, SinceOmitsEarlierEntries) {
  changeSomething();
  EXPECT_EQ(succeed({"changes", "--since", "0"}).out, succeed({"changes"}).out);
  EXPECT_THAT(succeed({"changes", "--since", "3"}).out, MatchesRegex("     4  .*removed  2\n"));
  EXPECT_EQ(succeed({"changes", "--since", "4"}).out, "");
}

TEST_F(Changes, ReportsPrunedJournal) {
  changeSomething();
  forgetEntriesTo(2);
  const Outcome run = ulotask({"changes", "--since", "1"});
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.err, "ulotask: the journal does not have all changes after entry 1: "
                     "compare all tasks\n");
  EXPECT_THAT(run.out, testing::StartsWith("     3  "));
  // Nothing after entry 2 is missing.
  succeed({"changes", "--since", "2"});
  forgetEntriesTo(4);
  EXPECT_NE(ulotask({"changes", "--since", "3"}).err, "");
  succeed({"changes", "--since", "4"});
}

TEST_F(Changes, ReportsEntryOfAnotherJournal) {
  changeSomething();
  const Outcome run = ulotask({"changes", "--since", "5"});
  EXPECT_EQ(run.code, 0);
  EXPECT_THAT(run.err, HasSubstr("after entry 5"));
}

TEST_F(Changes, NetPrintsNetChangeOfEachTask) {
  changeSomething();
  EXPECT_EQ(succeed({"changes", "--net"}).out, "added 1\n");
  EXPECT_EQ(succeed({"changes", "--net", "--since", "2"}).out, "updated 1\nremoved 2\n");
  const QJsonObject net = succeed({"changes", "--net", "--since", "2", "--json"}).object();
  EXPECT_EQ(net["generation"].toString().length(), 32);
  EXPECT_EQ(net, (QJsonObject{{"lastEntry", 4},
                              {"generation", net["generation"]},
                              {"incomplete", false},
                              {"added", QJsonArray()},
                              {"updated", QJsonArray{1}},
                              {"removed", QJsonArray{2}}}));
  forgetEntriesTo(2);
  const Outcome run = ulotask({"changes", "--net", "--json"});
  EXPECT_TRUE(run.object()["incomplete"].toBool());
  EXPECT_NE(run.err, "");
}

TEST_F(Changes, DistinguishesJournalsByGeneration) {
  changeSomething();
  const auto generation = [this] {
    return succeed({"changes", "--net", "--json"}).object()["generation"].toString().toStdString();
  };
  const std::string first = generation();
  EXPECT_EQ(succeed({"changes", "--since", "4", "--generation", first}).out, "");
  std::filesystem::remove_all(path("data"));
  changeSomething();
  add({"c"});
  EXPECT_NE(generation(), first);
  const Outcome run = ulotask({"changes", "--since", "4", "--generation", first, "--net"});
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.err, "ulotask: the journal does not have all changes after entry 4: "
                     "compare all tasks\n");
}

TEST_F(Changes, RejectsInvalidOptions) {
  for (const Arguments& arguments :
       std::vector<Arguments>{{"changes", "--since", "-1"},
                              {"changes", "--since", "x"},
                              {"changes", "--since", "9007199254740992"},
                              {"changes", "--since", "99999999999999999999"},
                              {"changes", "--net", "--follow"}}) {
    const Outcome run = ulotask(arguments);
    EXPECT_EQ(run.code, 2) << testing::PrintToString(arguments);
    EXPECT_THAT(run.err, HasSubstr("--"));
    EXPECT_EQ(run.out, "");
  }
}

TEST_F(Changes, ReportsJournalThatCannotBeRead) {
  add({"one"});
  sql("ALTER TABLE ulo_changes RENAME COLUMN entry TO away");
  const Outcome run = ulotask({"changes"});
  EXPECT_EQ(run.code, 1);
  EXPECT_EQ(run.err, "ulotask: the change journal can't be read; the log says why\n");
}

TEST_F(Changes, FollowPrintsChangesOfOtherProcesses) {
  add({"a"});
  QProcess process;
  prepare(process);
  Running following(process, {"changes", "--follow"});
  EXPECT_THAT(following.line(), MatchesRegex("     1  .*added    1\n"));
  add({"b"});
  EXPECT_THAT(following.line(), MatchesRegex("     2  .*added    2\n"));
  succeed({"rm", "1", "2"});
  EXPECT_THAT(following.line(), MatchesRegex("     3  .*removed  1\n"));
  EXPECT_THAT(following.line(), MatchesRegex("     4  .*removed  2\n"));
  EXPECT_EQ(following.endBy(SIGTERM), 0);
  EXPECT_EQ(process.readAllStandardError().toStdString(), "");
}

TEST_F(Changes, FollowStartsWithoutJournal) {
  QProcess process;
  prepare(process);
  Running following(process, {"changes", "--follow", "--json"});
  process.waitForStarted();
  add({"a"});
  EXPECT_THAT(following.line(), HasSubstr("\"entry\":1"));
  EXPECT_EQ(following.endBy(SIGINT), 0);
}

TEST_F(Changes, FollowContinuesFromFutureEntry) {
  add({"a"});
  QProcess process;
  prepare(process);
  Running following(process, {"changes", "--follow", "--since", "100"});
  // It complains after reading the journal.
  process.setReadChannel(QProcess::StandardError);
  EXPECT_THAT(following.line(), HasSubstr("after entry 100"));
  process.setReadChannel(QProcess::StandardOutput);
  add({"b"});
  EXPECT_THAT(following.line(), MatchesRegex("     2  .*added    2\n"));
  EXPECT_EQ(following.endBy(SIGTERM), 0);
}

TEST_F(Changes, FollowEndsWhenReaderExits) {
  add({"a"});
  const Outcome run = shell("\"$ULOTASK\" changes --follow | head -n 1; echo ${PIPESTATUS[0]}");
  EXPECT_THAT(run.out, MatchesRegex("     1  .*added    1\n0\n"));
  EXPECT_EQ(run.err, "");
}

}  // namespace
