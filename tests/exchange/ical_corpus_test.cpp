// Edits one field in texts of other programs: no other line changes.
#include "berlin_time.h"
#include "calendar_text.h"
#include "component_lines.h"
#include "ical_text.h"
#include "test_clock.h"
#include "utc_zone.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

namespace {

using Task = ZTASK_ENG_Task;
namespace fs = std::filesystem;

QByteArray contentsOf(const fs::path& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return QByteArray::fromStdString(text.str());
}

std::vector<fs::path> textsOf(const fs::path& directory) {
  std::vector<fs::path> result;
  for (const auto& entry : fs::recursive_directory_iterator(directory))
    if (entry.is_regular_file() && entry.path().extension() != ".md")
      result.push_back(entry.path());
  std::sort(result.begin(), result.end());
  return result;
}

std::vector<std::string> linesIn(const QByteArray& text) {
  std::vector<std::string> result;
  ulo::LineSplitter splitter(
      std::string_view(text.constData(), static_cast<std::size_t>(text.size())));
  ulo::RawLine line;
  while (splitter.next(line))
    result.emplace_back(line.bytes);
  return result;
}

// The names of the content lines that differ. Replaced lines stay in their place, and new ones are
// in one place, so that the rest is the same before and after it.
std::vector<std::string> changedNames(const QByteArray& before, const QByteArray& after) {
  const std::vector<std::string> one = linesIn(before);
  const std::vector<std::string> other = linesIn(after);
  const auto nameIn = [](const std::string& line) {
    std::string buffer;
    ulo::RawLine raw;
    raw.bytes = line;
    raw.folded = true;
    std::string name(ulo::nameOf(ulo::unfolded(raw, buffer)));
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return name;
  };
  std::vector<std::string> names;
  std::size_t i = 0;
  std::size_t j = 0;
  while (i < one.size() || j < other.size()) {
    if (i < one.size() && j < other.size() && one[i] == other[j]) {
      ++i;
      ++j;
    } else if (i < one.size() && j < other.size() && nameIn(one[i]) == nameIn(other[j])) {
      names.push_back(nameIn(one[i]));
      ++i;
      ++j;
    } else if (j < other.size()) {
      names.push_back("+" + nameIn(other[j++]));
    } else {
      names.push_back("-" + nameIn(one[i++]));
    }
  }
  return names;
}

bool isExpected(std::string name) {
  if (name.starts_with("+"))
    name.erase(0, 1);
  return name == "SUMMARY" || name == "DTSTAMP" || name == "LAST-MODIFIED" || name == "SEQUENCE";
}

// Sets the summary of the first component that is not a to-do, through the document.
QByteArray editOther(const QByteArray& text) {
  ulo::CalendarText calendar(text);
  for (std::size_t i = 0; i < calendar.pieces().size(); ++i) {
    const ulo::Piece& piece = calendar.pieces()[i];
    if (piece.kind != ulo::PieceKind::other)
      continue;
    ulo::ComponentLines lines(calendar.bytes(piece));
    const std::size_t summary = lines.find("SUMMARY");
    if (summary == ulo::ComponentLines::none)
      lines.insert(lines.endOfProperties(), "SUMMARY:edited");
    else
      lines.replace(summary, "SUMMARY:edited");
    calendar.replace(i, lines.text());
    return calendar.text();
  }
  return {};
}

QByteArray editTodo(const QByteArray& text) {
  TASK_ENG_Ical calendar(text);
  Task task = calendar.task(0);
  EXPECT_FALSE(calendar.replace(0, task));
  task.setString(Task::TASK_FIELD_SUMMARY, "edited");
  EXPECT_TRUE(calendar.replace(0, task));
  EXPECT_EQ(taskText(TASK_ENG_Ical(calendar.text()).task(0)), taskText(task));
  return calendar.text();
}

// Texts in which there is nothing to edit.
struct Unread {
  TASK_ENG_Ical::Failure failure;
  const char* why;
};
const std::map<std::string, Unread> unreadTexts = {
    {"test-data_crash.ics", {TASK_ENG_Ical::truncated, "a component without END"}},
    {"test-data_malloc.ics", {TASK_ENG_Ical::truncated, "a component without END"}},
    {"test-data_smallcluster.ics", {TASK_ENG_Ical::notCalendar, "a calendar of calendars"}},
};

TEST(IcalCorpus, EditsOneFieldInEveryText) {
  setEngineNow(QDateTime(QDate(2026, 11, 20), QTime(12, 0), ulo::utcZone));
  int todos = 0;
  int others = 0;
  int empty = 0;
  std::size_t unread = 0;
  const std::vector<fs::path> files = textsOf(ULO_CORPUS_DIR "/icalendar2");
  for (const fs::path& file : files) {
    SCOPED_TRACE(file);
    const QByteArray text = contentsOf(file);
    const TASK_ENG_Ical calendar(text);
    EXPECT_EQ(calendar.text(), text);
    const auto known = unreadTexts.find(file.filename());
    if (known != unreadTexts.end()) {
      EXPECT_EQ(calendar.report().failure, known->second.failure);
      std::printf("not read: %s, %s\n", file.filename().c_str(), known->second.why);
      ++unread;
      continue;
    }
    EXPECT_EQ(calendar.report().failure,
              calendar.count() > 0 ? TASK_ENG_Ical::none : TASK_ENG_Ical::noTodo);
    const QByteArray edited = calendar.count() > 0 ? editTodo(text) : editOther(text);
    if (edited.isEmpty()) {
      EXPECT_EQ(calendar.report().otherComponents, 0);
      std::printf("without components: %s\n", file.filename().c_str());
      ++empty;
      continue;
    }
    ++(calendar.count() > 0 ? todos : others);
    for (const std::string& name : changedNames(text, edited))
      EXPECT_TRUE(isExpected(name)) << name;
  }
  setEngineNow(QDateTime());
  std::printf("%zu texts: edited %d with to-dos and %d with other components only; %d without "
              "components; %zu not read\n",
              files.size(), todos, others, empty, unread);
  EXPECT_GT(todos, 0);
  EXPECT_GT(others, 0);
  EXPECT_EQ(unread, unreadTexts.size());
}

// Whatever a text of another program is, it stays as it is.
TEST(IcalCorpus, ReturnsEveryTextUnchanged) {
  int readable = 0;
  for (const fs::path& file : textsOf(ULO_CORPUS_DIR)) {
    const QByteArray text = contentsOf(file);
    const TASK_ENG_Ical calendar(text);
    EXPECT_EQ(calendar.text(), text) << file;
    readable += calendar.count() > 0 ? 1 : 0;
    const bool isCalendar = calendar.report().failure != TASK_ENG_Ical::notCalendar;
    EXPECT_TRUE(isCalendar || !TASK_ENG_Ical::isIcalendar(text)) << file;
  }
  EXPECT_GT(readable, 0);
}

}  // namespace
