// ulo-tasks as its users run it: on its own display, with keys and a mouse. The store is read
// through the command line.
#pragma once

#include "display.h"
#include "ulotask_runner.h"

#include <QRegularExpression>

#include <filesystem>
#include <fstream>

class TasksOnDisplay : public UlotaskTest {
protected:
  // Of the list, whatever its view.
  static constexpr char listTitle[] = "^(All|Due|Incomplete|Completed) Tasks$";
  // The items of the list's menu, by their places.
  enum Item { viewBy, createNew, edit, share, synchronize, remove, selectMultiple, sortBy, items };
  // The items below "Share Task via".
  enum Share { byBluetooth, byMessage };
  // The items of a task's menu.
  enum DetailItem { editIt, shareIt, removeIt };

  // Positions in pixels on a display of 240x320 with a font of 9 points.
  static constexpr int width = 240;
  static constexpr int height = 320;
  static constexpr int barHeight = 30;  // the title, and the soft keys at the bottom
  static constexpr int filterHeight = 34;
  static constexpr int rowHeight = 36;
  static constexpr int itemHeight = 30;  // of a menu, and of the choices of a box
  static constexpr int rowsOnScreen = (height - 2 * barHeight - filterHeight) / rowHeight;

  static constexpr QPoint searchField{width / 4, barHeight + filterHeight / 2};
  static constexpr QPoint categoryBox{3 * width / 4, barHeight + filterHeight / 2};
  static constexpr QPoint optionsKey{20, height - barHeight / 2};
  static constexpr QPoint newKey{width / 2, height - barHeight / 2};
  static constexpr QPoint exitKey{width - 20, height - barHeight / 2};
  static constexpr QPoint undoButton{width - 24, height - barHeight - 17};
  static constexpr QRect wholeScreen{0, 0, width, height};
  static constexpr QRect listPlace{0, barHeight + filterHeight, width,
                                   height - 2 * barHeight - filterHeight};

  // The center of an entry of the opened category box.
  static constexpr QPoint categoryAt(int entry) {
    return {categoryBox.x(), barHeight + filterHeight + entry * itemHeight + itemHeight / 2 - 2};
  }

  // The center of a visible row, and of its box.
  static constexpr QPoint textOf(int row) {
    return {width / 2, barHeight + filterHeight + row * rowHeight + rowHeight / 2};
  }
  static constexpr QPoint boxOf(int row) { return {12, textOf(row).y()}; }

  explicit TasksOnDisplay(int displayWidth = width, int displayHeight = height)
      : display_(displayWidth, displayHeight) {
    environment_["DISPLAY"] = display_.name().toStdString();
    environment_["QT_QPA_PLATFORM"] = "xcb";
    environment_["LSAN_OPTIONS"] =
        "suppressions=" ULO_SOURCE_DIR "/tests/support/desktop_leaks.supp:print_suppressions=0";
    environment_["XDG_CONFIG_HOME"] = path("config");
    environment_["XDG_RUNTIME_DIR"] = path("run");
    std::filesystem::create_directories(path("config/ulo"));
    addApplication("{1e18dc2d-f4f1-4653-bec5-fd4591927127}",
                   "touch " + path("synchronized") + "\n");
    if (*ULO_QEMU_PROCESSES != '\0')
      environment_["LD_PRELOAD"] = ULO_QEMU_PROCESSES;
    // Prevents starting a bus on demand.
    for (const char* bus : {"DBUS_SESSION_BUS_ADDRESS", "DBUS_SYSTEM_BUS_ADDRESS"})
      environment_[bus] = "unix:path=" + path("no-bus");
  }
  ~TasksOnDisplay() override { kill(); }

  // Configures a program for the application; the first one is a synchronizer.
  void addApplication(const std::string& uuid, const std::string& command) {
    std::ofstream(path("config/ulo/applications.conf"), std::ios::app)
        << '[' << uuid << "]\nExec=" << command;
  }
  // Starts `ulo-tasks arguments...` and leaves it running.
  void start(const QStringList& arguments = {}) {
    prepare(process_);
    process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process_.start(ULO_TASKS, arguments);
    ASSERT_TRUE(process_.waitForStarted());
  }
  // Kills it.
  void kill() {
    process_.kill();
    process_.waitForFinished();
  }
  void terminate() { process_.terminate(); }
  // Its exit code.
  int end() {
    EXPECT_TRUE(process_.waitForFinished(60'000));
    EXPECT_EQ(process_.exitStatus(), QProcess::NormalExit);
    return process_.exitCode();
  }
  // Exits from the list.
  void leave() {
    press({"F3"});
    EXPECT_EQ(end(), 0);
  }

  // Waits for a window of this title and gives it the focus.
  [[nodiscard]] testing::AssertionResult shows(const QString& title) {
    if (display_.focus(u'^' + QRegularExpression::escape(title) + u'$'))
      return testing::AssertionSuccess();
    return testing::AssertionFailure() << "no window has the title " << title.toStdString();
  }
  void press(const QStringList& keys) {
    EXPECT_TRUE(display_.press(keys)) << keys.join(' ').toStdString();
  }
  void type(const QString& text) { EXPECT_TRUE(display_.type(text)); }
  void click(const QPoint& at) { EXPECT_TRUE(display_.click(at)); }

  // Opens the options menu and chooses the item at this position, not counting disabled items. If
  // `below` is given, chooses the item at that position of its submenu.
  void chooseByKeys(int item, int below = -1) {
    // The pointer must not be where the menu appears, because it would choose an item, too.
    EXPECT_TRUE(display_.moveTo({width - 1, 0}));
    press({"F1"});
    ASSERT_TRUE(waitFor([&] { return popups() == 1; }));
    if (below < 0) {
      press(QStringList(item, "Down") + QStringList{"Return"});
      return;
    }
    press(QStringList(item, "Down") + QStringList{"Right"});
    ASSERT_TRUE(waitFor([&] { return popups() == 2; }));
    press(QStringList(below, "Down") + QStringList{"Return"});
  }

  // The same by mouse, in the list's menu.
  void chooseByMouse(int item, int below = -1) {
    const int y = height - barHeight - itemHeight * (items - item) + itemHeight / 2 - 1;
    click(optionsKey);
    ASSERT_TRUE(waitFor([&] { return popups() == 1; }));
    click({40, y});
    if (below < 0)
      return;
    ASSERT_TRUE(waitFor([&] { return popups() == 2; }));
    click({180, y + below * itemHeight});
  }
  // Returns the number of open menus and choice lists.
  [[nodiscard]] int popups() const { return display_.windows("ulo-tasks") - 1; }

  // Presses a key that moves to a row, which must be this task's. Opens the task and returns.
  void expectAt(const QString& key, const QString& summary) {
    press({key, "Return"});
    ASSERT_TRUE(shows(summary));
    press({"F3"});
    ASSERT_TRUE(display_.focus(QLatin1String(listTitle)));
  }
  void expectEnds(const QString& first, const QString& last) {
    ASSERT_NO_FATAL_FAILURE(expectAt("Home", first));
    ASSERT_NO_FATAL_FAILURE(expectAt("End", last));
  }

  // Waits until the condition holds. Returns false after the timeout.
  [[nodiscard]] static bool waitFor(const std::function<bool()>& condition) {
    return Display::waitFor(condition);
  }
  QJsonObject task(const std::string& uid) { return succeed({"show", uid, "--json"}).object(); }
  QJsonArray tasks() { return succeed({"list", "--json"}).array(); }
  std::vector<std::string> summaries(Arguments arguments = {"list"}) {
    arguments.push_back("--json");
    std::vector<std::string> result;
    for (const QJsonValue& task : succeed(arguments).array())
      result.push_back(task["summary"].toString().toStdString());
    return result;
  }
  void expectSound() { EXPECT_EQ(ulotask({"db", "check"}).code, 0); }

  Display display_;
  QProcess process_;
};
