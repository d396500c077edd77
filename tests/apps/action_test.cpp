// ulo-action on a display: what users see and press when they receive a to-do.

#include "display.h"
#include "ulotask_runner.h"

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

constexpr char lockTitle[] = "^Application Lock$";

class Action : public UlotaskTest {
protected:
  Action() {
    environment_["DISPLAY"] = display_.name().toStdString();
    environment_["QT_QPA_PLATFORM"] = "xcb";
    environment_["LSAN_OPTIONS"] =
        "suppressions=" ULO_SOURCE_DIR "/tests/support/desktop_leaks.supp:print_suppressions=0";
    item_ = file("item.vcs", calendar(todo("SUMMARY:Buy milk\r\n")));
    icalendar_ = file("two.ics", "BEGIN:VCALENDAR\r\nVERSION:2.0\r\n"
                                 "BEGIN:VTODO\r\nUID:1\r\nSUMMARY:K\xc3\xa4se\\, Brot\r\n"
                                 "END:VTODO\r\n"
                                 "BEGIN:VTODO\r\nUID:2\r\nSUMMARY:two\r\nEND:VTODO\r\n"
                                 "END:VCALENDAR\r\n");
  }

  // Starts `ulo-action arguments...` and leaves it running.
  void beginWith(const QStringList& arguments) {
    prepare(process_);
    process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process_.start(ULO_ACTION, arguments);
  }
  void begin(const std::string& action, const std::string& file) {
    beginWith({QString::fromStdString(action), QString::fromStdString(file)});
  }
  void begin(const std::string& action) { begin(action, item_); }
  // Its exit code.
  int end() {
    EXPECT_TRUE(process_.waitForFinished(60'000));
    return process_.exitCode();
  }
  std::vector<std::string> summaries() {
    std::vector<std::string> result;
    for (const QJsonValue& task : succeed({"list", "--json"}).array())
      result.push_back(task["summary"].toString().toStdString());
    return result;
  }

  Display display_{240, 320};
  QProcess process_;
  std::string item_;
  std::string icalendar_;
};

TEST_F(Action, SavesAndReportsIt) {
  begin("TASK_SAVE");
  ASSERT_TRUE(display_.focus("^Saved to Task List$"));
  EXPECT_THAT(summaries(), ElementsAre("Buy milk"));
  ASSERT_TRUE(display_.press({"F1"}));
  EXPECT_EQ(end(), 0);
}

TEST_F(Action, SavesTheFirstOfTwo) {
  begin("TASK_SAVE", file("two.vcs", calendar(todo("SUMMARY:one\r\n") + todo("SUMMARY:two\r\n"))));
  ASSERT_TRUE(display_.focus("^Saved to Task List$"));
  ASSERT_TRUE(display_.press({"Return"}));
  EXPECT_EQ(end(), 0);
  EXPECT_THAT(summaries(), ElementsAre("one"));
}

// Neither the program nor the toolkit takes the file for an option.
TEST_F(Action, SavesFileWhoseNameIsAnOption) {
  file("-reverse", calendar(todo("SUMMARY:Buy milk\r\n")));
  process_.setWorkingDirectory(QString::fromStdString(path("")));
  beginWith({"TASK_SAVE", "--", "-reverse"});
  ASSERT_TRUE(display_.focus("^Saved to Task List$"));
  ASSERT_TRUE(display_.press({"F1"}));
  EXPECT_EQ(end(), 0);
  EXPECT_THAT(summaries(), ElementsAre("Buy milk"));
}

TEST_F(Action, ShowsWithoutSaving) {
  begin("TASK_VIEW");
  ASSERT_TRUE(display_.focus("^Buy milk$"));
  ASSERT_TRUE(display_.press({"F3"}));
  EXPECT_EQ(end(), 0);
  EXPECT_THAT(summaries(), ElementsAre());
}

TEST_F(Action, SavesAllTodosOfIcalendarFile) {
  begin("TASK_SAVE", icalendar_);
  ASSERT_TRUE(display_.focus("^Saved to Task List$"));
  EXPECT_THAT(summaries(), ElementsAre("two", "K\xc3\xa4se, Brot"));
  ASSERT_TRUE(display_.press({"F1"}));
  EXPECT_EQ(end(), 0);
  // Again: the tasks are the same.
  begin("TASK_SAVE", icalendar_);
  ASSERT_TRUE(display_.focus("^Saved to Task List$"));
  ASSERT_TRUE(display_.press({"F1"}));
  EXPECT_EQ(end(), 0);
  EXPECT_EQ(summaries().size(), 2U);
}

TEST_F(Action, ShowsFirstTodoOfIcalendarFile) {
  begin("TASK_VIEW", icalendar_);
  ASSERT_TRUE(display_.focus("^K\xc3\xa4se, Brot$"));
  ASSERT_TRUE(display_.press({"F3"}));
  EXPECT_EQ(end(), 0);
  EXPECT_THAT(summaries(), ElementsAre());
}

TEST_F(Action, LockGuardsIcalendarFiles) {
  succeed({"lock", "set"}, "4711\n");
  for (const char* action : {"TASK_SAVE", "TASK_VIEW"}) {
    begin(action, icalendar_);
    ASSERT_TRUE(display_.focus(QLatin1String(lockTitle)));
    ASSERT_TRUE(display_.press({"F3"}));
    EXPECT_EQ(end(), 1);
  }
  EXPECT_THAT(summaries(), ElementsAre());
}

TEST_F(Action, IcalendarFileIsStoredWholeOrNotAtAll) {
  add({"one"});
  limitStore(1);
  const std::string note(4000, 'n');
  std::string todos;
  for (int i = 0; i < 20; ++i)
    todos +=
        "BEGIN:VTODO\r\nUID:" + std::to_string(i) + "\r\nDESCRIPTION:" + note + "\r\nEND:VTODO\r\n";
  begin("TASK_SAVE",
        file("many.ics", "BEGIN:VCALENDAR\r\nVERSION:2.0\r\n" + todos + "END:VCALENDAR\r\n"));
  ASSERT_TRUE(display_.focus("^Memory Full$"));
  ASSERT_TRUE(display_.press({"F1"}));
  EXPECT_EQ(end(), 1);
  EXPECT_THAT(summaries(), ElementsAre("one"));
}

TEST_F(Action, DamagedIcalendarFileFails) {
  begin("TASK_SAVE", file("cut.ics", "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nBEGIN:VTODO\r\n"));
  EXPECT_EQ(end(), 1);
  EXPECT_THAT(summaries(), ElementsAre());
}

TEST_F(Action, ReportsFullStore) {
  add({"one"});
  limitStore(1);
  begin("TASK_SAVE",
        file("long.vcs",
             calendar(todo("SUMMARY:a\r\nDESCRIPTION:" + std::string(4000, 'n') + "\r\n"))));
  ASSERT_TRUE(display_.focus("^Memory Full$"));
  ASSERT_TRUE(display_.press({"F1"}));
  EXPECT_EQ(end(), 1);
}

TEST_F(Action, ExitsIfActionFails) {
  begin("TASK_SAVE", path("missing.vcs"));
  EXPECT_EQ(end(), 1);
  begin("TASK_VIEW", file("none.vcs", "no calendar"));
  EXPECT_EQ(end(), 1);
  begin("TASK_PRINT");
  EXPECT_EQ(end(), 0);
  EXPECT_THAT(summaries(), ElementsAre());
}

TEST_F(Action, RightCodeGrantsAccess) {
  succeed({"lock", "set"}, "4711\n");
  begin("TASK_SAVE");
  ASSERT_TRUE(display_.focus(QLatin1String(lockTitle)));
  ASSERT_TRUE(display_.type("4711"));
  ASSERT_TRUE(display_.press({"Return"}));
  ASSERT_TRUE(display_.focus("^Saved to Task List$"));
  ASSERT_TRUE(display_.press({"F1"}));
  EXPECT_EQ(end(), 0);
  EXPECT_THAT(summaries(), ElementsAre("Buy milk"));
}

TEST_F(Action, WrongCodeDeniesAccess) {
  succeed({"lock", "set"}, "4711\n");
  begin("TASK_SAVE");
  ASSERT_TRUE(display_.focus(QLatin1String(lockTitle)));
  ASSERT_TRUE(display_.type("4712"));
  ASSERT_TRUE(display_.press({"Return"}));
  ASSERT_TRUE(display_.focus(QLatin1String(lockTitle)));
  ASSERT_TRUE(display_.press({"F3"}));
  EXPECT_EQ(end(), 1);
  EXPECT_THAT(summaries(), ElementsAre());
}

TEST_F(Action, NamesTheMissingCalendarLibrary) {
  hideLibrary("libicalvcal.so");
  prepare(process_);
  process_.start(ULO_ACTION, {"TASK_SAVE", QString::fromStdString(item_)});
  ASSERT_TRUE(display_.focus("^vCalendar$"));
  ASSERT_TRUE(display_.press({"F1"}));
  EXPECT_EQ(end(), 1);
  EXPECT_THAT(
      process_.readAllStandardError().toStdString(),
      HasSubstr("vCalendar text needs libical's library libicalvcal.so; install libical 3"));
  EXPECT_THAT(summaries(), ElementsAre());
}

TEST_F(Action, DeniesAccessWithoutLockLibrary) {
  hideLibrary("libulosecuritysetup.so");
  begin("TASK_SAVE");
  EXPECT_EQ(end(), 1);
  begin("TASK_VIEW");
  EXPECT_EQ(end(), 1);
  EXPECT_THAT(summaries(), ElementsAre());
}

}  // namespace
