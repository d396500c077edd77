// What a test on a display reports when one of the programs that it needs cannot do its work.

#include "display.h"
#include "environment_variable.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;
using testing::ThrowsMessage;

class DisplayTools : public testing::Test {
protected:
  // Makes a shell script the only program that is found, besides those named by a path.
  void provideOnly(const char* name, const char* script) {
    const std::filesystem::path file = directory_.path() / name;
    std::ofstream(file) << "#!/bin/sh\n" << script << '\n';
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    path_.emplace("PATH", directory_.path().c_str());
  }

  TemporaryDirectory directory_;
  std::optional<EnvironmentVariable> path_;
};

TEST_F(DisplayTools, ReportsMissingServer) {
  provideOnly("import", "exit 0");
  EXPECT_THAT([] { const Display display(10, 10); },
              ThrowsMessage<std::runtime_error>(
                  AllOf(StartsWith("cannot start Xvfb: "), HasSubstr("install-dependencies"))));
}

TEST_F(DisplayTools, ReportsServerThatEnds) {
  provideOnly("Xvfb", "exit 1");
  EXPECT_THAT([] { const Display display(10, 10); },
              ThrowsMessage<std::runtime_error>(StartsWith("Xvfb does not get ready")));
}

TEST_F(DisplayTools, ReportsMissingCamera) {
  const Display display(10, 10);
  provideOnly("xdotool", "exit 0");
  EXPECT_THAT(
      [&] {
        return display.picture({0, 0, 10, 10});
      },
      ThrowsMessage<std::runtime_error>(
          AllOf(StartsWith("cannot start import: "), HasSubstr("install-dependencies"))));
}

TEST_F(DisplayTools, ReportsPictureThatCannotBeTaken) {
  const Display display(10, 10);
  provideOnly("import", "echo 'no colors' >&2; exit 1");
  EXPECT_THAT(
      [&] {
        return display.picture({0, 0, 10, 10});
      },
      ThrowsMessage<std::runtime_error>("cannot take a picture of the display: no colors\n"));
}

TEST_F(DisplayTools, ReportsPictureThatIsIncomplete) {
  const Display display(10, 10);
  provideOnly("import", "printf 123");
  EXPECT_THAT(
      [&] {
        return display.picture({0, 0, 10, 10});
      },
      ThrowsMessage<std::runtime_error>(StartsWith("cannot take a picture of the display")));
}

TEST_F(DisplayTools, ReportsMissingKeyboard) {
  const Display display(10, 10);
  provideOnly("import", "exit 0");
  EXPECT_THAT([&] { return display.press({"a"}); },
              ThrowsMessage<std::runtime_error>(StartsWith("cannot start xdotool: ")));
}

TEST_F(DisplayTools, TakesPictureOfPart) {
  const Display display(20, 10);
  EXPECT_EQ(display.picture({5, 5, 4, 3}).size(), 3 * 4 * 3);
}

}  // namespace
