// Texts of other programs. None of them may hang or crash the library, and to-dos that the library
// reads correctly without the guard are read the same with it.
#include "vcal_guard.h"

#include "bare_library.h"
#include "log_capture.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

namespace {

std::vector<std::filesystem::path> corpus() {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(ULO_CORPUS_DIR))
    if (entry.is_regular_file() && entry.path().extension() != ".md")
      files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

std::string contents(const std::filesystem::path& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

std::size_t count(const std::string& text, const std::string& word) {
  std::size_t result = 0;
  for (std::size_t at = text.find(word); at != text.npos; at = text.find(word, at + 1))
    ++result;
  return result;
}

TEST(VcalCorpus, ReadsCompleteTextsAndRejectsTruncatedOnes) {
  LogCapture log;
  const auto files = corpus();
  ASSERT_GT(files.size(), 100U);
  std::set<std::string> truncated;
  for (const auto& file : files) {
    const std::string text = contents(file);
    const ulo::TextReport report = ulo::examineFile(file);
    const auto todos = parseGuarded(text);
    // iCalendar 2.0 resembles vCalendar 1.0 but is another format. Reading such a text must
    // terminate, and the guard must report the number of to-dos that it has passed on.
    const bool isOther = file.string().find("/icalendar2/") != std::string::npos;
    switch (report.problem) {
    case ulo::TextProblem::none:
    case ulo::TextProblem::noTodo:
      ASSERT_TRUE(todos) << file;
      EXPECT_EQ(todos->size(), report.todos) << file;
      EXPECT_TRUE(isOther || todos->size() == count(text, "BEGIN:VTODO")) << file;
      break;
    case ulo::TextProblem::truncated:
      EXPECT_FALSE(todos) << file;
      if (!isOther)
        truncated.insert(file.filename());
      break;
    default:
      EXPECT_TRUE(isOther || count(text, "BEGIN:VCALENDAR") == 0) << file;
    }
  }
  // In each of these, a component lacks an END line.
  EXPECT_EQ(truncated, (std::set<std::string>{
                           "crash-base64-4pads-min.vcs", "hang-base64-at-eof.vcs",
                           "hang-qp-value-at-eof.vcs", "mutation-hang-0002.vcs",
                           "oom-real-tika-testVCalendar.vcs", "test__data__ical-009.ical",
                           "tests__tine20__Felamimail__files__calendar_cancel.eml",
                           "tika-parsers__tika-parsers-standard__tika-parsers-standard-modules__"
                           "tika-parser-text-module__src__test__resources__test-documents__"
                           "testVCalendar.vcs"}));
}

TEST(VcalCorpus, GuardPreservesWhatLibraryReadsCorrectly) {
  LogCapture log;
  std::size_t compared = 0;
  for (const auto& file : corpus()) {
    const std::string text = contents(file);
    if (!ulo::GuardedText::fromMemory(text, {}).isClean())
      continue;
    const auto bare = parseBare(text);
    ASSERT_TRUE(bare) << file;
    const auto guarded = parseGuarded("\xEF\xBB\xBF" + text);  // forces a repair
    if (!guarded) {
      EXPECT_TRUE(bare->empty()) << file;
      continue;
    }
    EXPECT_EQ(onlyGuarded(*bare), onlyGuarded(*guarded)) << file;
    ++compared;
  }
  EXPECT_GT(compared, 50U);
}

}  // namespace
