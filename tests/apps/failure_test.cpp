// Failures of the store and of the output.

#include "ulotask_runner.h"

#include <filesystem>

namespace {

using testing::HasSubstr;

class Failures : public UlotaskTest {
protected:
  const std::vector<Arguments> allVerbs_ = {{"list"},
                                            {"show", "1"},
                                            {"add", "x"},
                                            {"done", "1"},
                                            {"undone", "1"},
                                            {"rm", "1"},
                                            {"export"},
                                            {"db", "explain", "x"},
                                            {"db", "check"},
                                            {"search", "x"},
                                            {"edit", "1", "--note", "x"},
                                            {"list", "--category", "x"},
                                            {"list", "--after", "1"},
                                            {"category", "list"},
                                            {"category", "add", "x"},
                                            {"category", "rename", "x", "y"},
                                            {"category", "rm", "x"},
                                            {"stats"},
                                            {"changes"},
                                            {"changes", "--follow"}};

  void expectClosed(const Arguments& arguments) {
    const Outcome run = ulotask(arguments);
    EXPECT_EQ(run.code, 10) << testing::PrintToString(arguments) << run.err;
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.err, HasSubstr("can't be opened"));
  }
};

TEST_F(Failures, EveryVerbReportsStoreThatCannotBeOpened) {
  environment_["ULO_DATA_DIR"] = file("occupied", "a file where a directory should be");
  for (const Arguments& arguments : allVerbs_)
    expectClosed(arguments);
  expectClosed({"import", ULO_SOURCE_DIR "/samples/phone-gbk.vcs"});
}

TEST_F(Failures, LogsWhyToAFileAndNotToTheOutput) {
  environment_["ULO_DATA_DIR"] = file("occupied", "");
  expectClosed({"list"});
  std::string log;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(path("state"))) {
    if (entry.is_regular_file())
      log += readWhole(entry.path().string());
  }
  EXPECT_THAT(log, HasSubstr("Open db failed! [ret="));
}

TEST_F(Failures, ImportIntoFullStoreStoresNothing) {
  add({"first"});
  limitStore(40);
  std::string many;
  for (int i = 0; i < 100; ++i)
    many +=
        todo("SUMMARY:" + std::to_string(i) + "\r\nDESCRIPTION:" + std::string(4003, 'n') + "\r\n");
  const Outcome run = ulotask({"import", "-"}, calendar(many));
  EXPECT_EQ(run.code, 9);
  EXPECT_EQ(run.out, "");
  // Truncation is not reported for a task that was not stored.
  EXPECT_THAT(run.err, testing::StartsWith("ulotask: nothing was stored: the import failed: the "
                                           "store is full: "));
  EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1);
  EXPECT_EQ(uids({"list"}), std::vector<int>{1});

  // A smaller task is stored.
  succeed({"import", "-"}, calendar(todo("SUMMARY:small\r\n")));
  int code = 0;
  for (int i = 0; i < 40 && code == 0; ++i)
    code = ulotask({"add", "x", "--note", std::string(4000, 'n')}).code;
  EXPECT_EQ(code, 9);
  EXPECT_THAT(succeed({"db", "check"}).out, HasSubstr("database file: sound"));
  // Stored tasks can still be removed.
  succeed({"rm", "1"});
}

TEST_F(Failures, ReportsThatNoDirectoryIsNamed) {
  environment_["HOME"] = environment_["ULO_DATA_DIR"] = environment_["XDG_DATA_HOME"] = "";
  const Outcome run = ulotask({"list"});
  EXPECT_EQ(run.code, 10);
  EXPECT_EQ(run.err, "ulotask: cannot open the store: HOME is not set and ULO_DATA_DIR is empty\n");
}

TEST_F(Failures, NamesDirectoryThatCannotBeCreated) {
  environment_["ULO_DATA_DIR"] = file("occupied", "");
  EXPECT_EQ(ulotask({"list"}).err, "ulotask: the store in \"" + path("occupied") +
                                       "\" can't be opened: Not a directory\n");
}

TEST_F(Failures, ReportsUnknownTimeZoneOnce) {
  for (const char* zone : {"Europe/Berln", "nonsense", "/none", ":Mars/Phobos", "../../../etc"}) {
    environment_["TZ"] = zone;
    const Outcome run = ulotask({"list"});
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.err, std::string("ulotask: the time zone TZ=\"") + zone +
                           "\" is unknown: times are in UTC\n");
  }
  for (const char* zone : {"", "UTC", "UTC0", "CET-1CEST,M3.5.0,M10.5.0/3", "<+03>-3", ":UTC",
                           "EST5EDT4,J60/2,J300/2:00:00"}) {
    environment_["TZ"] = zone;
    succeed({"list"});
  }
}

TEST_F(Failures, FullStoreAddsNoTaskWithoutItsCategory) {
  add({"first"});
  limitStore(40);
  // Each category needs its own pages, while the tasks would still fit.
  int code = 0;
  int added = 0;
  for (; code == 0 && added < 200; ++added)
    code = ulotask({"add", "x", "--category", std::to_string(added) + std::string(8000, 'c')}).code;
  EXPECT_EQ(code, 9);
  const QJsonArray tasks = succeed({"list", "--json"}).array();
  EXPECT_EQ(tasks.size(), added);  // the first one, and all but the last
  for (const QJsonValue& task : tasks)
    EXPECT_NE(task["category"].toString(), "None");
}

TEST_F(Failures, ReaderThatExitsIsNotAnError) {
  succeed({"import", "-"}, [] {
    std::string many;
    for (int i = 0; i < 2000; ++i)
      many += todo("SUMMARY:" + std::string(500, 's') + "\r\n");
    return calendar(many);
  }());
  const Outcome run = shell("\"$ULOTASK\" list | head -n 1; echo ${PIPESTATUS[0]}");
  EXPECT_EQ(run.err, "");
  EXPECT_THAT(run.out, testing::EndsWith("\n0\n"));
}

TEST_F(Failures, EveryVerbReportsResultsThatCannotBeWritten) {
  add({"one"});
  add({"two"});
  for (const char* line : {"list",
                           "list --json",
                           "show 1",
                           "add x",
                           "done 1",
                           "undone 1",
                           "rm 1",
                           "export",
                           "db check",
                           "--help",
                           "search x",
                           "edit 2 --note n",
                           "category list",
                           "category add a",
                           "category rename a b",
                           "category rm b",
                           "stats",
                           "changes",
                           "changes --follow",
                           "changes --net --json"}) {
    const Outcome run = shell(std::string("\"$ULOTASK\" ") + line + " > /dev/full");
    EXPECT_EQ(run.code, 12) << line;
    EXPECT_EQ(run.err, "ulotask: standard output can't be written: No space left on device\n");
  }
}

// The program's files must not get the number of a descriptor that its caller closed.
TEST_F(Failures, ClosedOutputGoesIntoNoFile) {
  add({"secret"});
  for (const char* line : {"list", "export", "changes", "show 1"})
    EXPECT_EQ(shell(std::string("\"$ULOTASK\" ") + line + " >&-").code, 12) << line;
  EXPECT_EQ(shell("\"$ULOTASK\" show 7 2>&-").code, 3);
  const std::string log = readWhole(path("state/ulo/ulotask.log"));
  EXPECT_THAT(log, testing::Not(HasSubstr("secret")));
  EXPECT_THAT(log, testing::Not(HasSubstr("ulotask: ")));
}

}  // namespace
