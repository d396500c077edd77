// Sharing a task, from the list and from its details.

#include "display/display_test.h"

#include <filesystem>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr char bluetoothTitle[] = "Send via Bluetooth";

class ShareOnDisplay : public TasksOnDisplay {
protected:
  ShareOnDisplay() {
    add({"Buy milk", "--due", "2037-01-01", "--note", "two litres"});
    add({"Walk", "--due", "2037-01-02"});
    environment_["ULO_LOCAL_APP_WRITE_PATH"] = path("out");
    std::filesystem::create_directories(path("out"));
    // A composer that records its arguments; the file last and in one step.
    const std::string composer =
        file("composer", "#!/bin/sh\n"
                         "printf '%s\\n' \"$@\" >'" +
                             path("arguments") +
                             "'\n"
                             "cp \"$2\" '" +
                             path("part") +
                             "'\n"
                             "mv '" +
                             path("part") + "' '" + path("message.vcs") + "'\n");
    std::filesystem::permissions(composer, std::filesystem::perms::owner_all);
    addApplication("{220072c6-9008-468e-9968-11f3c50fa95e}",
                   composer + " --attach %f\nWait=true\n");
  }
  // Waits for the composer. Expects this task in the message, and that its file, which was in this
  // directory, is deleted afterwards.
  void expectMessage(const std::string& summary, const std::string& directory) {
    ASSERT_TRUE(waitFor([&] { return std::filesystem::exists(path("message.vcs")); }));
    EXPECT_THAT(readWhole(path("message.vcs")), HasSubstr(":" + summary + "\r\n"));
    const std::string arguments = readWhole(path("arguments"));
    EXPECT_THAT(arguments, testing::StartsWith("--attach\n" + directory + "/" + summary + "-"));
    EXPECT_THAT(arguments, testing::EndsWith(".vcs\n"));
    EXPECT_TRUE(waitFor([&] { return std::filesystem::is_empty(directory); }));
  }
};

TEST_F(ShareOnDisplay, ByMessageFromList) {
  start();
  ASSERT_TRUE(shows("All Tasks"));
  press({"Down"});
  chooseByKeys(share, byMessage);
  expectMessage("Walk", path("out"));
  expectAt("Home", "Buy milk");
  leave();
}

TEST_F(ShareOnDisplay, TaskThatCameAsIcalendarGoesOutAsIcalendar) {
  succeed({"import", file("plants.ics", "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nBEGIN:VTODO\r\n"
                                        "UID:1\r\nSUMMARY:Water/plants\r\nPRIORITY:1\r\n"
                                        "DUE;VALUE=DATE:20360101\r\nX-COLOR:green\r\n"
                                        "END:VTODO\r\nEND:VCALENDAR\r\n")});
  start();
  ASSERT_TRUE(shows("All Tasks"));
  chooseByKeys(share, byMessage);
  ASSERT_TRUE(waitFor([&] { return std::filesystem::exists(path("message.vcs")); }));
  EXPECT_THAT(readWhole(path("message.vcs")), HasSubstr("X-COLOR:green\r\n"));
  const std::string arguments = readWhole(path("arguments"));
  EXPECT_THAT(arguments, testing::StartsWith("--attach\n" + path("out") + "/Water_plants-"));
  EXPECT_THAT(arguments, testing::EndsWith(".ics\n"));
  EXPECT_TRUE(waitFor([&] { return std::filesystem::is_empty(path("out")); }));
  leave();
}

TEST_F(ShareOnDisplay, ByMessageFromDetails) {
  start();
  ASSERT_TRUE(shows("All Tasks"));
  press({"Return"});
  ASSERT_TRUE(shows("Buy milk"));
  chooseByKeys(shareIt, byMessage);
  expectMessage("Buy milk", path("out"));
  EXPECT_THAT(readWhole(path("message.vcs")), HasSubstr("two litres"));
  press({"F3"});
  ASSERT_TRUE(shows("All Tasks"));
  leave();
}

TEST_F(ShareOnDisplay, MissingLibraryIsReported) {
  hideLibrary("libicalvcal.so");
  // What hides it opens the application lock, too, and has no run path.
  environment_["LD_LIBRARY_PATH"] =
      std::filesystem::path(ULO_TASKS).parent_path().parent_path() / "lib";
  const std::string log = path("log.txt");
  environment_["ULO_LOG"] = log;
  start();
  ASSERT_TRUE(shows("All Tasks"));
  chooseByKeys(share, byMessage);
  EXPECT_TRUE(waitFor([&] {
    return readWhole(log).find("the task isn't sent: vCalendar text needs libical's library") !=
           std::string::npos;
  }));
  EXPECT_FALSE(std::filesystem::exists(path("arguments")));
  EXPECT_TRUE(std::filesystem::is_empty(path("out")));
  leave();
}

TEST_F(ShareOnDisplay, AttachmentsHaveTheirOwnDirectory) {
  environment_.erase("ULO_LOCAL_APP_WRITE_PATH");
  environment_["XDG_CACHE_HOME"] = path("cache");
  start();
  ASSERT_TRUE(shows("All Tasks"));
  chooseByKeys(share, byMessage);
  expectMessage("Buy milk", path("cache/ulo/attachments"));
  leave();
}

TEST_F(ShareOnDisplay, ByBluetoothWithoutAdapterIsReported) {
  start();
  ASSERT_TRUE(shows("All Tasks"));
  chooseByKeys(share, byBluetooth);
  ASSERT_TRUE(shows(bluetoothTitle));
  press({"F1"});
  ASSERT_TRUE(waitFor([&] { return display_.windows("ulo-tasks") == 1; }));
  ASSERT_TRUE(shows("All Tasks"));
  press({"Return"});
  ASSERT_TRUE(shows("Buy milk"));
  chooseByKeys(shareIt, byBluetooth);
  ASSERT_TRUE(shows(bluetoothTitle));
  press({"Return"});
  ASSERT_TRUE(shows("Buy milk"));
  press({"F3"});
  ASSERT_TRUE(shows("All Tasks"));
  leave();
  EXPECT_THAT(summaries(), ElementsAre("Buy milk", "Walk"));
}

}  // namespace
