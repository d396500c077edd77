// The progress line of an import.

#include "ulotask_runner.h"

#include <algorithm>
#include <cstdio>

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr int longWork = 1000;  // milliseconds between two looks at the clock

class ProgressLine : public UlotaskTest {
protected:
  // A calendar with this number of tasks.
  std::string tasks(int count, const std::string& note = {}) {
    std::string content;
    for (int i = 0; i < count; ++i)
      content += todo("SUMMARY:" + std::to_string(i) + "\r\n" + note);
    return file("tasks.vcs", calendar(content));
  }
};

// The visible text on a terminal that received `text`, by lines. Fails if `text` has anything but
// plain characters, carriage returns and line ends.
std::vector<std::string> screen(const std::string& text) {
  std::vector<std::string> lines(1);
  std::size_t column = 0;
  for (const char c : text) {
    EXPECT_TRUE(c == '\r' || c == '\n' || static_cast<unsigned char>(c) >= 0x20);
    if (c == '\r') {
      column = 0;
    } else if (c == '\n') {
      lines.emplace_back();
      column = 0;
    } else {
      lines.back().resize(std::max(lines.back().size(), column + 1), ' ');
      lines.back()[column++] = c;
    }
  }
  for (std::string& line : lines)
    line.erase(line.find_last_not_of(' ') + 1);
  if (lines.back().empty())
    lines.pop_back();
  return lines;
}

TEST_F(ProgressLine, ShowsCountAndRateAndDisappears) {
  stepClock(longWork);
  const Outcome run = onTerminal({"import", tasks(10)}, 80);
  EXPECT_EQ(run.code, 0);
  EXPECT_THAT(run.out, HasSubstr("\rimporting  [##########----------]  5 of 10, "));
  EXPECT_THAT(run.out, HasSubstr("[####################]  10 of 10, "));
  EXPECT_THAT(run.out, testing::ContainsRegex("10 of 10, [0-9]+/s"));
  EXPECT_THAT(screen(run.out), ElementsAre("10 tasks imported from " + path("tasks.vcs") +
                                           " (vCalendar 1.0): UID 1, 2, 3, 4, 5, 6, "
                                           "7, 8, 9, 10"));
}

TEST_F(ProgressLine, ShortImportShowsNone) {
  stepClock(0);
  const Outcome run = onTerminal({"import", tasks(10)}, 80);
  EXPECT_EQ(run.code, 0);
  EXPECT_THAT(run.out, StartsWith("10 tasks imported"));
}

TEST_F(ProgressLine, AppearsAfterHalfASecond) {
  stepClock(100);
  const std::string out = onTerminal({"import", tasks(20)}, 80).out;
  int done = 0;
  int rate = 0;
  ASSERT_EQ(std::sscanf(out.c_str(), "importing  [%*[#-]]  %d of 20, %d/s", &done, &rate), 2)
      << out;
  EXPECT_LE(rate, 2 * done);
}

TEST_F(ProgressLine, IsNeverPiped) {
  stepClock(longWork);
  const std::string calendar = tasks(10);
  EXPECT_THAT(succeed({"import", calendar}).out, StartsWith("10 tasks imported"));
  // The shell may be of another architecture than the program.
  const std::string import =
      "LD_PRELOAD='" + environment_["LD_PRELOAD"] + "' \"$ULOTASK\" import '" + calendar + "'";
  environment_.erase("LD_PRELOAD");
  EXPECT_THAT(shellOnTerminal(import + " 2>&1 | cat", 80).out, StartsWith("10 tasks imported"));
  const Outcome run = shellOnTerminal(import + " --json > /dev/null", 80);
  EXPECT_THAT(run.out, StartsWith("importing"));
  EXPECT_THAT(screen(run.out), testing::IsEmpty());
}

TEST_F(ProgressLine, DisappearsIfImportFails) {
  add({"first"});
  const std::string calendar = tasks(100, "DESCRIPTION:" + std::string(4000, 'n') + "\r\n");
  limitStore(40);
  stepClock(longWork);
  const Outcome run = onTerminal({"import", calendar}, 80);
  EXPECT_EQ(run.code, 9);
  EXPECT_THAT(run.out, HasSubstr(" of 100, "));
  EXPECT_THAT(screen(run.out),
              ElementsAre(StartsWith("ulotask: nothing was stored: the import failed: ")));
}

TEST_F(ProgressLine, MakesRoomForMessages) {
  stepClock(longWork);
  const std::string calendar =
      file("tasks.vcs",
           ::calendar(todo("SUMMARY:a\r\n") + todo("SUMMARY:" + std::string(513, 's') + "\r\n") +
                      todo("SUMMARY:b\r\n")));
  const Outcome run = onTerminal({"import", calendar}, 80);
  EXPECT_THAT(run.out, HasSubstr("3 of 3"));
  EXPECT_THAT(screen(run.out),
              ElementsAre(AllOf(StartsWith("ulotask: "), EndsWith("cut to its first 512")),
                          StartsWith("3 tasks imported from ")));
}

TEST_F(ProgressLine, FitsIntoANarrowTerminal) {
  stepClock(longWork);
  const std::string out = onTerminal({"import", tasks(3)}, 20).out;
  EXPECT_THAT(out, HasSubstr("\rimporting  [######…\r"));
  EXPECT_THAT(out, Not(HasSubstr("[#######")));
}

}  // namespace
