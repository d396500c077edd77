// Limits of the guard, the report of repairs, and the log.
#include "vcal_texts.h"

#include "temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <utility>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::Pair;
using ulo::examineText;
using ulo::GuardedText;
using ulo::Repair;
using ulo::TextProblem;
using namespace std::string_literals;

namespace {

ulo::TextReport reportOf(const std::string& text) {
  return GuardedText::fromMemory(text, guardedNames()).report();
}

TEST(VcalLimit, SplitsLargeCalendarsIntoPieces) {
  EXPECT_EQ(piecesOf(byteOrderMark + calendar(repeat(oneTodo, 100))).size(), 1U);
  EXPECT_EQ(piecesOf(byteOrderMark + calendar(repeat(oneTodo, 101))).size(), 2U);

  std::string items;
  for (int i = 0; i < 10000; ++i)
    items += todo("SUMMARY:" + std::to_string(i) + "\r\n");
  const auto todos = parseGuarded(calendar(items));
  ASSERT_TRUE(todos);
  ASSERT_EQ(todos->size(), 10000U);
  for (int i = 0; i < 10000; ++i)
    ASSERT_THAT((*todos)[static_cast<std::size_t>(i)], ElementsAre("SUMMARY=" + std::to_string(i)));
}

TEST(VcalLimit, LimitsSizeOfPieces) {
  const std::string large = todo("SUMMARY:" + std::string(600000, 'a') + "\r\n");
  const std::vector<std::string> pieces = piecesOf(byteOrderMark + calendar(repeat(large, 5)));
  EXPECT_EQ(pieces.size(), 3U);
  EXPECT_LT(pieces[0].size(), 1300000U);
}

// Beyond the limit, the text is scanned again to make its pieces.
TEST(VcalLimit, TextBeyondKeptLimitHasSamePieces) {
  const std::size_t size = ulo::keptLimit / 16;
  const std::string item = todo("SUMMARY:" + std::string(size, 'a') + "\r\nDUE:\r\n");
  for (std::size_t count : {15U, 17U}) {
    const std::string text = byteOrderMark + calendar(repeat(item, count));
    LogCapture log;
    const std::vector<std::string> pieces = piecesOf(text);
    ASSERT_EQ(pieces.size(), count);
    const std::string piece = calendar(todo("SUMMARY:" + std::string(size, 'a') + "\r\n"));
    for (const std::string& each : pieces)
      EXPECT_TRUE(each == piece);
    const ulo::TextReport report = GuardedText::fromMemory(text, guardedNames()).report();
    EXPECT_EQ(report.repairs.size(), count);
    for (std::size_t i = 0; i < count; ++i)
      EXPECT_THAT(log.text(), HasSubstr("line " + std::to_string(5 + 4 * i) +
                                        ": property without a value left out"));
  }
}

// The library reads at most 490 items and properties together, 245 calendars, and 163 fields.
TEST(VcalLimit, TextTooLargeForLibraryIsNotClean) {
  const LogCapture quiet;
  const auto onlyClean = [](const std::string& text) {
    EXPECT_EQ(parseGuarded(text).has_value(), true);
    return isClean(text);
  };
  const std::string priority = "PRIORITY:1\r\n";
  EXPECT_TRUE(onlyClean(calendar(repeat(oneTodo, 440))));
  EXPECT_FALSE(onlyClean(calendar(repeat(oneTodo, 451))));
  EXPECT_TRUE(onlyClean(calendar(todo(repeat(priority, 440)))));
  EXPECT_FALSE(onlyClean(calendar(todo(repeat(priority, 451)))));
  EXPECT_TRUE(onlyClean(calendar(repeat(oneTodo, 200) + todo(repeat(priority, 240)))));
  EXPECT_FALSE(onlyClean(calendar(repeat(oneTodo, 200) + todo(repeat(priority, 251)))));
  EXPECT_TRUE(onlyClean(repeat(calendar(oneTodo), 220)));
  EXPECT_FALSE(onlyClean(repeat(calendar(oneTodo), 226)));
  EXPECT_TRUE(onlyClean(calendar(todo("SUMMARY:a" + repeat(";a", 140) + "\r\n"))));
  EXPECT_FALSE(onlyClean(calendar(todo("SUMMARY:a" + repeat(";a", 150) + "\r\n"))));
  EXPECT_FALSE(
      onlyClean(calendar(repeat(oneTodo, 400) + todo("SUMMARY:a" + repeat(";a", 20) + "\r\n"))));
}

TEST(VcalLimit, PropertyMayHaveFourMegabytes) {
  const std::string name = "SUMMARY:";
  const auto with = [&](std::size_t size) {
    return calendar(todo(name + std::string(size - name.size(), 'a') + "\r\nDUE:D\r\n"));
  };
  for (std::size_t size : {ulo::propertyLimit - 1, ulo::propertyLimit}) {
    const TodoProperties properties = propertiesOf(with(size));
    ASSERT_EQ(properties.size(), 2U);
    EXPECT_EQ(properties[0].size(), size);
  }
  const std::string larger = with(ulo::propertyLimit + 1);
  EXPECT_THAT(propertiesOf(larger), ElementsAre("DUE=D"));
  EXPECT_THAT(logOf(larger), HasSubstr("line 4: property too long, left out"));
}

TEST(VcalLimit, AllLinesOfPropertyCount) {
  const std::string part = std::string(ulo::propertyLimit / 2, 'a');
  EXPECT_THAT(
      propertiesOf(calendar(todo("SUMMARY:" + part + "\r\n " + part + "\r\n b\r\nDUE:D\r\n"))),
      ElementsAre("DUE=D"));
  EXPECT_THAT(propertiesOf(calendar(
                  todo("SUMMARY;QP:" + part + "=\r\n" + part + "=\r\nb=\r\nc\r\nDUE:D\r\n"))),
              ElementsAre("DUE=D"));
  EXPECT_THAT(propertiesOf(calendar(
                  todo("SUMMARY;BASE64:" + part + "\r\n " + part + "\r\n b\r\n\r\nDUE:D\r\n"))),
              ElementsAre("DUE=D"));
}

TEST(VcalLimit, HeaderMayHaveEightKilobytes) {
  const auto with = [](std::size_t size) {
    return calendar(todo("SUMMARY;X=" + std::string(size - 10, 'a') + ":v\r\nDUE:D\r\n"));
  };
  EXPECT_THAT(propertiesOf(with(ulo::headerLimit - 1)), ElementsAre("SUMMARY=v", "DUE=D"));
  EXPECT_THAT(propertiesOf(with(ulo::headerLimit)), ElementsAre("SUMMARY=v", "DUE=D"));
  EXPECT_THAT(propertiesOf(with(ulo::headerLimit + 1)), ElementsAre("DUE=D"));
}

TEST(VcalLimit, TodoMayHave200Properties) {
  const auto with = [](std::size_t count) {
    return calendar(todo("X:\r\n" + repeat("PRIORITY:1\r\n", count - 1) + "DUE:D\r\n"));
  };
  EXPECT_EQ(propertiesOf(with(ulo::todoPropertyLimit - 1)).size(), ulo::todoPropertyLimit - 1);
  EXPECT_EQ(propertiesOf(with(ulo::todoPropertyLimit)).back(), "DUE=D");
  const TodoProperties cut = propertiesOf(with(ulo::todoPropertyLimit + 1));
  EXPECT_EQ(cut.size(), ulo::todoPropertyLimit);
  EXPECT_EQ(cut.back(), "PRIORITY=1");
  EXPECT_THAT(logOf(with(ulo::todoPropertyLimit + 1)),
              HasSubstr("line 205: too many properties in a to-do, left out"));
}

TEST(VcalLimit, UnusedPropertiesDoNotCount) {
  EXPECT_THAT(propertiesOf(calendar(todo(repeat("ATTENDEE:a\r\n", 600) + "SUMMARY:a\r\n"))),
              ElementsAre("SUMMARY=a"));
}

TEST(VcalLimit, TodoMayHave16Megabytes) {
  const std::size_t rest = std::string("DESCRIPTION:\r\n").size();
  const std::string part = "DESCRIPTION:" + std::string(ulo::todoLimit / 8 - rest, 'a') + "\r\n";
  EXPECT_EQ(propertiesOf(byteOrderMark + calendar(todo(repeat(part, 8)))).size(), 8U);
  const std::string larger = byteOrderMark + calendar(todo(repeat(part, 8) + "DUE:D\r\n"));
  EXPECT_EQ(propertiesOf(larger).size(), 8U);
  EXPECT_THAT(logOf(larger), HasSubstr("to-do too large, left out"));
}

TEST(VcalLimit, AlarmMayHave40Semicolons) {
  const auto with = [](std::size_t count) {
    return byteOrderMark + calendar(todo("DALARM:t" + repeat(";", count) + "\r\nDUE:D\r\n"));
  };
  EXPECT_THAT(propertiesOf(with(40)), ElementsAre("DALARM{RUNTIME=t;}=", "DUE=D"));
  EXPECT_THAT(propertiesOf(with(41)), ElementsAre("DUE=D"));
}

TEST(VcalLimit, RejectsTooMuchTextAroundCalendar) {
  const auto with = [](std::size_t bytes) {
    return examineText(std::string(bytes, '-') + "\r\n" + calendar(oneTodo)).problem;
  };
  EXPECT_EQ(with(ulo::strayLimit - 1), TextProblem::none);
  EXPECT_EQ(with(ulo::strayLimit), TextProblem::none);
  EXPECT_EQ(with(ulo::strayLimit + 1), TextProblem::notCalendar);
}

std::size_t peakMemory() {
  std::ifstream status("/proc/self/status");
  std::string word;
  while (status >> word)
    if (word == "VmHWM:") {
      status >> word;
      return std::stoul(word) * 1024;
    }
  return 0;
}

// 100 MB of noise, in a sparse file.
TEST(VcalLimit, NoiseUsesLittleMemory) {
  TemporaryDirectory directory;
  for (const char* start : {"", "noise without an end ", "BEGIN:VCALENDAR\r\nX:"}) {
    const std::string path = directory.path() / "noise";
    std::ofstream(path, std::ios::binary | std::ios::trunc) << start;
    std::filesystem::resize_file(path, 100'000'000);
    std::ofstream("/proc/self/clear_refs") << 5;  // forgets the peak so far
    const std::size_t before = peakMemory();
    EXPECT_NE(ulo::examineFile(path).problem, TextProblem::none) << start;
    // The kernel counts pages in batches, so that the peak may even be a little lower.
    EXPECT_LT(peakMemory(), before + 32'000'000) << start;
  }
}

// Each of these takes quadratic time if the lines of a property are scanned again and again.
TEST(VcalLimit, ReadsManyShortLinesOfPropertyOnce) {
  for (const char* start :
       {"SUMMARY", "SUMMARY;X=\"", "SUMMARY:", "SUMMARY;QP:", "SUMMARY;BASE64:"})
    for (const char* line : {" a\r\n", " \r\n", "=\r\n", " =\r\n"})
      EXPECT_EQ(examineText(calendar(todo(start + repeat(line, 500000) + "\r\n"))).problem,
                TextProblem::none)
          << start << line;
}

TEST(VcalLog, IsEmptyForCleanText) {
  EXPECT_EQ(logOf(calendar(oneTodo)), "");
}

TEST(VcalLog, IsEmptyAfterExamination) {
  LogCapture log;
  EXPECT_NE(examineText("prose").problem, TextProblem::none);
  EXPECT_EQ(examineText(calendar(todo("SUMMARY:\r\n"))).todos, 1U);
  EXPECT_EQ(log.text(), "");
}

TEST(VcalLog, ListsEachRepairWithLine) {
  const std::string text = "stray\r\n" + calendar(todo("SUMMARY;QP:a=\r\nb=c\r\nDUE:\r\n"
                                                       "DALARM:\xFF\r\nno property\r\n"
                                                       "BEGIN:VALARM\r\nBEGIN:X\r\nEND:X\r\n") +
                                                  "END:VEVENT\r\n");
  const auto line = [](const char* what) {
    return "(platform/vobject/vcal_guard.cpp)vCalendar text, line "s + what;
  };
  EXPECT_EQ(logOf(text), line("1: outside of any calendar, left out") + line("5: written anew") +
                             line("7: property without a value left out") +
                             line("8: value that cannot be handed over left out") +
                             line("9: is no property, left out") +
                             line("10: component in a to-do left out") +
                             line("13: END of a nested component is missing") +
                             line("14: END without its BEGIN left out"));
}

TEST(VcalReport, ListsEachRepairWithLineAndProperty) {
  const std::string text = "stray\r\n" + calendar(todo("SUMMARY;QP:a=\r\nb=c\r\nDUE:\r\n"
                                                       "DALARM:\xFF\r\nno property\r\n"
                                                       "BEGIN:VALARM\r\nBEGIN:X\r\nEND:X\r\n") +
                                                  "END:VEVENT\r\n");
  std::vector<std::pair<Repair, std::string>> found;
  for (const ulo::RepairNote& note : reportOf(text).repairs)
    found.emplace_back(note.repair, std::to_string(note.line) + note.property);
  EXPECT_THAT(found,
              ElementsAre(Pair(Repair::outsideCalendar, "1"), Pair(Repair::rewritten, "5SUMMARY"),
                          Pair(Repair::noValue, "7DUE"), Pair(Repair::noForm, "8DALARM"),
                          Pair(Repair::notProperty, "9"), Pair(Repair::nestedComponent, "10"),
                          Pair(Repair::missingEnd, "13"), Pair(Repair::endWithoutBegin, "14")));
}

TEST(VcalReport, ListsPartsThatExceedLimits) {
  const std::string part = "DESCRIPTION:" + std::string(ulo::propertyLimit - 12, 'a') + "\r\n";
  const ulo::TextReport large =
      reportOf(calendar(todo(repeat(part, 4) + "DESCRIPTION:b" + part.substr(12))));
  ASSERT_EQ(large.repairs.size(), 2U);
  EXPECT_EQ(large.repairs[0].repair, Repair::todoTooLarge);
  EXPECT_EQ(large.repairs[1].repair, Repair::propertyTooLong);
  EXPECT_EQ(large.tooLarge.size(), 1U);
  const ulo::TextReport many =
      reportOf(calendar(todo("X:\r\n" + repeat("DUE:D\r\n", ulo::todoPropertyLimit + 1))));
  ASSERT_EQ(many.repairs.size(), 1U);
  EXPECT_EQ(many.repairs[0].repair, Repair::tooManyProperties);
}

TEST(VcalReport, CountsFurtherRepairs) {
  const auto with = [](std::size_t count) {
    return reportOf(calendar(todo(repeat("SUMMARY:\r\n", count))));
  };
  EXPECT_EQ(with(ulo::loggedLimit).repairs.size(), ulo::loggedLimit);
  EXPECT_EQ(with(ulo::loggedLimit).moreRepairs, 0U);
  EXPECT_EQ(with(ulo::loggedLimit + 1).repairs.size(), ulo::loggedLimit);
  EXPECT_EQ(with(ulo::loggedLimit + 1).moreRepairs, 1U);
}

TEST(VcalReport, HasNoRepairsForRejectedText) {
  const ulo::TextReport report = reportOf("stray\r\nBEGIN:VCALENDAR\r\n");
  EXPECT_EQ(report.problem, TextProblem::truncated);
  EXPECT_TRUE(report.repairs.empty());
}

TEST(VcalLog, StatesReasonForRejection) {
  const auto rejected = [](const char* why) {
    return "(platform/vobject/vcal_guard.cpp)vCalendar text rejected, line "s + why;
  };
  EXPECT_EQ(logOf("prose"), rejected("0: holds no calendar"));
  EXPECT_EQ(logOf("BEGIN:VCALENDAR\r\nBEGIN:VTODO\r\n"), rejected("2: BEGIN without its END"));
  EXPECT_EQ(logOf(nested(ulo::nestingLimit + 1)), rejected("35: components nested too deep"));
  LogCapture log;
  std::string piece;
  GuardedText missing = GuardedText::fromFile("/missing", {});
  EXPECT_FALSE(missing.nextPiece(piece));
  EXPECT_FALSE(missing.nextPiece(piece));
  EXPECT_EQ(log.withoutLines(), rejected("0: cannot be read"));
}

TEST(VcalLog, IsBounded) {
  const auto with = [](std::size_t count) {
    return logOf(calendar(todo(repeat("SUMMARY:\r\n", count) + "DUE:D\r\n")));
  };
  const std::string left = "property without a value left out";
  const std::string more = "more lines left out or written anew";
  EXPECT_THAT(with(ulo::loggedLimit), Not(HasSubstr(more)));
  const std::string over = with(ulo::loggedLimit + 1);
  EXPECT_THAT(over, HasSubstr("vCalendar text: 1 " + more));
  EXPECT_THAT(over, HasSubstr("line 23: " + left));
  EXPECT_THAT(over, Not(HasSubstr("line 24: " + left)));
  EXPECT_THAT(with(1000), HasSubstr("vCalendar text: 980 " + more));
}

}  // namespace
