// Synchronization, and its broadcasts.

#include "session_bus.h"
#include "ulotask_runner.h"

#include <csignal>

using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

namespace {

class Sync : public UlotaskTest {
protected:
  // A watcher that is running: it reports changes from now on.
  void begin(QProcess& process, Running& watching) {
    do
      add({"noise"});
    while (!process.waitForReadyRead(200));
    EXPECT_THAT(watching.line(), HasSubstr("  added    "));
  }
};

TEST_F(Sync, PutsAndGetsItem) {
  const Outcome put = succeed({"sync-item", "put"}, calendar(todo("SUMMARY:Milk\r\n")));
  EXPECT_EQ(put.out, "1\n");
  const std::string text = succeed({"sync-item", "get", "1"}).out;
  EXPECT_THAT(text, StartsWith("BEGIN:VCALENDAR\r\n"));
  EXPECT_THAT(text, HasSubstr("Milk"));
  EXPECT_EQ(succeed({"sync-item", "put"}, text).out, "2\n");
  EXPECT_EQ(succeed({"sync-item", "ids"}).out, "1\n2\n");
}

TEST_F(Sync, ReplacesAndRemovesItem) {
  add({"Bread"});
  add({"Eggs"});
  EXPECT_EQ(succeed({"sync-item", "replace", "1"}, calendar(todo("SUMMARY:Milk\r\n"))).out, "");
  EXPECT_THAT(succeed({"show", "1"}).out, HasSubstr("Milk"));
  EXPECT_EQ(succeed({"sync-item", "rm", "1"}).out, "");
  EXPECT_EQ(succeed({"sync-item", "ids"}).out, "2\n");
}

TEST_F(Sync, ReportsErrors) {
  for (const Arguments& arguments :
       std::vector<Arguments>{{"sync-item", "get", "7"}, {"sync-item", "rm", "7"}}) {
    const Outcome run = ulotask(arguments);
    EXPECT_EQ(run.code, 3);
    EXPECT_THAT(run.err, HasSubstr("no task has this UID"));
    EXPECT_EQ(run.out, "");
  }
  EXPECT_EQ(ulotask({"sync-item", "replace", "7"}, calendar(todo("SUMMARY:a\r\n"))).code, 3);
  for (const char* wrong : {"", "no calendar", "BEGIN:VCALENDAR\r\nEND:VCALENDAR\r\n"}) {
    const Outcome run = ulotask({"sync-item", "put"}, wrong);
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.err, "ulotask: adding the item failed; the log says why\n");
  }
  for (const Arguments& arguments :
       std::vector<Arguments>{{"sync-item"}, {"sync-item", "get"}, {"sync-item", "get", "x"}})
    EXPECT_EQ(ulotask(arguments).code, 2) << testing::PrintToString(arguments);
  EXPECT_EQ(succeed({"sync-item", "ids"}).out, "");
}

TEST_F(Sync, AcceptsItemsUpToLimit) {
  const std::size_t limit = std::size_t{1} << 24U;
  std::string item = calendar(todo("SUMMARY:large\r\n"));
  item.append(limit - item.size(), '\n');
  EXPECT_EQ(succeed({"sync-item", "put"}, item).out, "1\n");
  const Outcome run = ulotask({"sync-item", "put"}, item + '\n');
  EXPECT_EQ(run.code, 8);
  EXPECT_EQ(run.err, "ulotask: standard input: larger than 16777216 bytes\n");
}

TEST_F(Sync, ReportsFullStore) {
  add({"one"});
  limitStore(1);
  EXPECT_EQ(
      ulotask({"sync-item", "put"},
              calendar(todo("SUMMARY:Milk\r\nDESCRIPTION:" + std::string(4000, 'n') + "\r\n")))
          .code,
      9);
}

TEST_F(Sync, EveryWatcherReceivesRunOnce) {
  const SessionBus bus;
  environment_["DBUS_SESSION_BUS_ADDRESS"] = bus.address().toStdString();
  QProcess processes[2];
  prepare(processes[0]);
  prepare(processes[1]);
  Running first(processes[0], {"watch"});
  Running second(processes[1], {"watch"});
  begin(processes[0], first);
  begin(processes[1], second);

  succeed({"sync-item", "put"}, calendar(todo("SUMMARY:Milk\r\n")));
  succeed({"sync-item", "ids"});
  EXPECT_EQ(ulotask({"sync-item", "rm", "4711"}).code, 3);
  succeed({"sync-item", "rm", "1"});
  const std::string broadcast =
      "broadcast  [0-9-]+ [0-9:]+  ULO_PIM_TASK_ENG_CHANNEL  TASK_ENG_dataChanged\n";
  for (Running* watching : {&first, &second}) {
    int broadcasts = 0;
    for (bool removed = false; !removed || broadcasts < 2;) {
      const std::string line = watching->line();
      ASSERT_NE(line, "");
      removed = removed || line.ends_with("  removed  1\n");
      if (!line.starts_with("broadcast"))
        continue;
      EXPECT_THAT(line, MatchesRegex(broadcast));
      ++broadcasts;
    }
    EXPECT_EQ(watching->endBy(SIGTERM), 0);
  }
  for (QProcess& process : processes) {
    EXPECT_THAT(process.readAllStandardOutput().toStdString(),
                testing::Not(HasSubstr("broadcast")));
    EXPECT_EQ(process.readAllStandardError().toStdString(), "");
  }
}

TEST_F(Sync, WatchingPrintsObjectsForPrograms) {
  const SessionBus bus;
  environment_["DBUS_SESSION_BUS_ADDRESS"] = bus.address().toStdString();
  QProcess process;
  prepare(process);
  Running watching(process, {"watch", "--json"});
  // A broadcast before it listens is lost.
  do
    add({"noise"});
  while (!process.waitForReadyRead(200));
  succeed({"sync-item", "put"}, calendar(todo("SUMMARY:Milk\r\n")));
  std::string line;
  do
    line = watching.line();
  while (line.find("dataChanged") == std::string::npos && !line.empty());
  EXPECT_THAT(line, HasSubstr("\"channel\":\"ULO_PIM_TASK_ENG_CHANNEL\""));
  EXPECT_THAT(line, HasSubstr("\"message\":\"TASK_ENG_dataChanged\""));
  EXPECT_EQ(watching.endBy(SIGINT), 0);
}

TEST_F(Sync, StoresWithoutBusLibrary) {
  const SessionBus bus;
  environment_["DBUS_SESSION_BUS_ADDRESS"] = bus.address().toStdString();
  environment_["ULO_LOG"] = "stderr";
  hideLibrary("libulobus.so");
  const Outcome put = ulotask({"sync-item", "put"}, calendar(todo("SUMMARY:Milk\r\n")));
  EXPECT_EQ(put.code, 0);
  EXPECT_THAT(put.err, HasSubstr("libulobus.so can't be used"));
  environment_.erase("ULO_LOG");
  EXPECT_THAT(succeed({"list"}).out, HasSubstr("Milk"));
}

TEST_F(Sync, OtherVerbsLoadNoBus) {
  environment_["LD_TRACE_LOADED_OBJECTS"] = "1";
  const std::string libraries = ulotask({"list"}).out;
  EXPECT_THAT(libraries, HasSubstr("libQt6Core"));
  EXPECT_THAT(libraries, testing::Not(HasSubstr("DBus")));
}

TEST_F(Sync, ShowsChangesWithoutBus) {
  QProcess process;
  prepare(process);
  Running watching(process, {"watch"});
  begin(process, watching);
  EXPECT_EQ(watching.endBy(SIGTERM), 0);
  EXPECT_EQ(process.readAllStandardError().toStdString(),
            "ulotask: there is no session bus; broadcasts will not be shown\n");
  const Outcome put = ulotask({"sync-item", "put"}, calendar(todo("SUMMARY:Milk\r\n")));
  EXPECT_EQ(put.code, 0);
  EXPECT_EQ(put.err, "");
}

}  // namespace
