// Access, and the message if the store cannot be opened.

#include "display/display_test.h"

#include <filesystem>

namespace {

using testing::ElementsAre;

constexpr char lockTitle[] = "Application Lock";

class StartOnDisplay : public TasksOnDisplay {
protected:
  StartOnDisplay() { add({"secret"}); }
};

TEST_F(StartOnDisplay, RightCodeGrantsAccess) {
  succeed({"lock", "set"}, "4711\n");
  start();
  ASSERT_TRUE(shows(lockTitle));
  EXPECT_EQ(display_.windows("ulo-tasks"), 1);
  type("4711");
  press({"Return"});
  ASSERT_TRUE(shows("All Tasks"));
  expectEnds("secret", "secret");
  leave();
}

TEST_F(StartOnDisplay, WrongCodeDeniesAccess) {
  succeed({"lock", "set"}, "4711\n");
  start();
  ASSERT_TRUE(shows(lockTitle));
  type("4712");
  press({"Return"});
  ASSERT_TRUE(shows(lockTitle));
  EXPECT_EQ(display_.windows("ulo-tasks"), 1);
  press({"F3"});
  EXPECT_EQ(end(), 1);
}

TEST_F(StartOnDisplay, DeniesAccessWithoutLockLibrary) {
  hideLibrary("libulosecuritysetup.so");
  start();
  EXPECT_EQ(end(), 1);
}

TEST_F(StartOnDisplay, ReportsStoreThatCannotBeOpened) {
  environment_["ULO_DATA_DIR"] = path("other");
  std::filesystem::create_directories(path("other/tasks.db"));
  start();
  ASSERT_TRUE(shows("All Tasks"));
  // Nothing can be opened, completed or deleted, and every key is safe.
  press({"Return", "space", "Delete", "Down", "ctrl+a", "ctrl+z"});
  click(textOf(0));
  chooseByKeys(viewBy, 1);
  ASSERT_TRUE(shows("Due Tasks"));
  // The message consists of more than the background color.
  ASSERT_TRUE(waitFor([&] {
    const QByteArray picture = display_.picture(listPlace);
    return picture.count(picture.at(0)) < picture.size();
  }));
  leave();
}

}  // namespace
