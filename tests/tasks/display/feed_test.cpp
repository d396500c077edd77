// External changes to the list: by files, other programs and the clock.

#include "display/display_test.h"
#include "notification_server.h"

#include <QCoreApplication>
#include <QDateTime>

namespace {

using testing::ElementsAre;

class FeedOnDisplay : public TasksOnDisplay {
protected:
  using TasksOnDisplay::TasksOnDisplay;

  // A calendar file with this many to-dos that are due before all others.
  std::string calendarFile(int count) {
    std::string todos;
    for (int i = 0; i < count; ++i)
      todos += todo("SUMMARY:imported " + std::to_string(i) + "\r\nDUE:20360101T120000Z\r\n");
    return file("feed.vcs", calendar(todos));
  }
};

TEST_F(FeedOnDisplay, ImportsFilesOfCommandLine) {
  add({"a"});
  start({QString::fromStdString(calendarFile(2))});
  ASSERT_TRUE(shows("All Tasks"));
  ASSERT_TRUE(waitFor([&] { return tasks().size() == 3; }));
  press({"Return"});
  ASSERT_TRUE(shows("imported 1"));
  press({"F3"});
  ASSERT_TRUE(shows("All Tasks"));
  leave();
}

TEST_F(FeedOnDisplay, StartsSynchronizer) {
  add({"a"});
  start();
  ASSERT_TRUE(shows("All Tasks"));
  EXPECT_FALSE(std::filesystem::exists(path("synchronized")));
  chooseByKeys(synchronize);
  EXPECT_TRUE(waitFor([&] { return std::filesystem::exists(path("synchronized")); }));
  leave();
}

class DropOnDisplay : public FeedOnDisplay {
protected:
  DropOnDisplay() : FeedOnDisplay(1000, 720) {}
};

TEST_F(DropOnDisplay, ImportsDroppedFile) {
  start();
  ASSERT_TRUE(shows("All Tasks"));
  QProcess source;
  prepare(source);
  source.start(DRAG_SOURCE, {QString::fromStdString(calendarFile(1))});
  ASSERT_TRUE(display_.focus("^Drag from here$"));
  EXPECT_TRUE(display_.hold({50, 50}));
  // Its title changes when the window below the pointer accepts the file.
  ASSERT_TRUE(waitFor([&] {
    EXPECT_TRUE(display_.moveTo({490, 400}));
    EXPECT_TRUE(display_.moveTo({500, 410}));
    return display_.hasTitle("^Taken here$");
  }));
  EXPECT_TRUE(display_.letGo());
  ASSERT_TRUE(waitFor([&] { return tasks().size() == 1; }));
  EXPECT_THAT(summaries(), ElementsAre("imported 0"));
  source.kill();
  source.waitForFinished();
  ASSERT_TRUE(shows("All Tasks"));
  press({"Return"});
  ASSERT_TRUE(shows("imported 0"));
  press({"F3"});
  ASSERT_TRUE(shows("All Tasks"));
  leave();
}

// A long list that is scrolled to its end while other programs change the store.
class OthersOnDisplay : public FeedOnDisplay {
protected:
  void SetUp() override {
    for (int day = 11; day <= 30; ++day)
      uids_[day] = add({"task " + std::to_string(day), "--due", "2037-01-" + std::to_string(day)});
    start();
    ASSERT_TRUE(shows("All Tasks"));
    press({"End", "Up", "Up"});
    expectCurrent("task 28");
  }
  // The task of a visible row at the end of the list.
  static int rowOf(int day) { return rowsOnScreen - 1 - (30 - day); }
  void expectCurrent(const QString& summary) {
    press({"Return"});
    ASSERT_TRUE(shows(summary));
    press({"F3"});
    ASSERT_TRUE(shows("All Tasks"));
  }
  // If the list has not scrolled, a touch opens the same task.
  void expectInPlace(int day) {
    click(textOf(rowOf(day)));
    ASSERT_TRUE(shows("task " + QString::number(day)));
    press({"F3"});
    ASSERT_TRUE(shows("All Tasks"));
  }
  // Runs the command line and waits until the row of this task looks different.
  void changes(int day, const std::function<void()>& others) {
    const QRect row(0, textOf(rowOf(day)).y() - rowHeight / 2, width, rowHeight);
    const QByteArray before = display_.picture(row);
    others();
    ASSERT_TRUE(waitFor([&] { return display_.picture(row) != before; }));
  }

  std::map<int, std::string> uids_;
};

TEST_F(OthersOnDisplay, ChangedAndAddedTasksDoNotScrollList) {
  changes(30, [&] {
    add({"earlier", "--due", "2036-01-01"});
    succeed({"edit", uids_[30], "--summary", "renamed"});
  });
  expectCurrent("task 28");
  expectInPlace(26);
  expectAt("End", "renamed");
  expectAt("Home", "earlier");
  leave();
}

TEST_F(OthersOnDisplay, ImportDoesNotScrollList) {
  changes(30, [&] {
    succeed({"import", calendarFile(500)});
    succeed({"done", uids_[30]});
  });
  expectCurrent("task 28");
  expectInPlace(26);
  press({"Home", "Return"});
  ASSERT_TRUE(shows("imported 499"));
  press({"F3"});
  ASSERT_TRUE(shows("All Tasks"));
  leave();
}

TEST_F(OthersOnDisplay, FollowingTaskTakesRowOfRemovedOne) {
  changes(28, [&] { succeed({"rm", uids_[28]}); });
  expectCurrent("task 29");
  leave();
}

class AlarmOnDisplay : public TasksOnDisplay {
protected:
  int count_ = 0;
  QCoreApplication application_{count_, nullptr};
  TestBus bus_;
  NotificationServer server_{bus_};
};

TEST_F(AlarmOnDisplay, AlarmOpensItsTask) {
  const auto wait = [](const std::function<bool()>& condition) {
    return waitFor([&] {
      QCoreApplication::processEvents();
      return condition();
    });
  };
  const std::string uid = add({"Call the bank"});
  environment_["DBUS_SESSION_BUS_ADDRESS"] = bus_.address().toStdString();
  start();
  ASSERT_TRUE(shows("All Tasks"));
  // Postponed again if it passed before the program could see it.
  QDateTime alarm;
  ASSERT_TRUE(wait([&] {
    if (!alarm.isValid() || alarm.secsTo(QDateTime::currentDateTime()) > 5) {
      alarm = QDateTime::currentDateTime().addSecs(2);
      succeed({"edit", uid, "--alarm", alarm.toString("yyyy-MM-dd HH:mm:ss").toStdString()});
    }
    return !server_.notes.empty();
  }));
  EXPECT_EQ(server_.notes[0].summary, "Call the bank");
  server_.invoke(server_.notes[0].id, "default");
  ASSERT_TRUE(wait([&] { return display_.hasTitle("^Call the bank$"); }));
  ASSERT_TRUE(shows("Call the bank"));
  press({"F3"});
  ASSERT_TRUE(shows("All Tasks"));
  leave();
}

}  // namespace
