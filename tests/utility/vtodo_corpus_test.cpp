// Reads texts of other programs, one after another in one process.
#include "ZVtodoParser.h"

#include "berlin_time.h"
#include "log_capture.h"
#include "task_text.h"
#include "vcal_guard.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

using Task = ZTASK_ENG_Task;

TEST(VtodoCorpus, ReadsEveryTextFromFileAndFromMemory) {
  const LogCapture quiet;
  ZVtodoParser parser;
  std::size_t texts = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(ULO_CORPUS_DIR)) {
    if (!entry.is_regular_file() || entry.path().extension() == ".md")
      continue;
    ++texts;
    const QString name = QString::fromStdString(entry.path());
    const ulo::TextReport report = ulo::examineFile(entry.path());
    QList<Task> fromFile;
    fromFile.setAutoDelete(true);
    parser.readVtodo(name, fromFile);
    EXPECT_EQ(fromFile.count(), report.todos) << entry.path();
    EXPECT_EQ(parser.isVtodo(name), report.todos > 0) << entry.path();

    std::ostringstream text;
    text << std::ifstream(entry.path(), std::ios::binary).rdbuf();
    QList<Task> fromMemory;
    fromMemory.setAutoDelete(true);
    parser.readVtodo(QCString(text.str().c_str()), fromMemory);
    ASSERT_EQ(fromMemory.count(), fromFile.count()) << entry.path();
    for (uint i = 0; i < fromFile.count(); ++i)
      EXPECT_EQ(taskText(*fromMemory.at(i)), taskText(*fromFile.at(i))) << entry.path();
  }
  EXPECT_GT(texts, 100U);
}

// One task as different programs write it: "Käse kaufen", a note of two lines, due on December 1,
// 2026, priority 1, completed, category "work". Differences are in the text itself or have the
// reason stated below.
struct Peer {
  const char* file;
  const char* summary;
  const char* note;
  const char* category;
  int priority;
  const char* due;
  const char* end;
};

void PrintTo(const Peer& peer, std::ostream* out) {
  *out << peer.file;
}

class VtodoPeer : public testing::TestWithParam<Peer> {};

TEST_P(VtodoPeer, IsReadCorrectly) {
  const LogCapture quiet;
  const Peer& peer = GetParam();
  ZVtodoParser parser;
  QList<Task> tasks;
  tasks.setAutoDelete(true);
  parser.readVtodo(QString(ULO_CORPUS_DIR "/peers/") + peer.file, tasks);
  ASSERT_EQ(tasks.count(), 1U);
  const std::string expected = std::string("summary \"") + peer.summary + "\"\nnote \"" +
                               peer.note + "\"\ncategory \"" + peer.category +
                               "\"\nstatus 0\npriority " + std::to_string(peer.priority) +
                               "\ndue " + peer.due + "\nend " + peer.end + "\nalarm -\n";
  EXPECT_EQ(taskText(*tasks.first()), expected);
}

constexpr const char* title = "Käse kaufen";
// Text without a character set is read as Latin-1.
constexpr const char* latinTitle = "KÃ¤se kaufen";
constexpr const char* note = "Zeile eins\\nZeile zwei";
// vCalendar 1.0 does not know the escapes of iCalendar 2.0.
constexpr const char* escapedNote = "Zeile eins\\\\nZeile zwei";
constexpr const char* due = "20261201T000000Z";
constexpr const char* end = "20261130T080000Z";

INSTANTIATE_TEST_SUITE_P(
    All, VtodoPeer,
    testing::Values(
        // Encodes its values without declaring it, and never writes a due date.
        Peer{"gammu-Mozilla2.0.ics", "K=C3=A4se kaufen", "Zeile eins=0AZeile zwei", "MISCELLANEOUS",
             9, "-", "-"},
        Peer{"gammu-Nokia.vcs", title, note, "MISCELLANEOUS", 3, "-", "-"},
        Peer{"gammu-SonyEricsson.vcs", title, note, "MISCELLANEOUS", 3, "-", "-"},
        Peer{"gammu-convertbackup.vcs", title, note, "MEETING", 3, "-", "-"},
        Peer{"kcalendarcore-ical20.ics", latinTitle, escapedNote, "work", 1, due, end},
        // Writes line breaks as CR CR LF.
        Peer{"perl-data-ical-vcal10-qp.vcs", latinTitle, "Zeile eins\\r\\r\\nZeile zwei", "work", 1,
             due, "-"},
        Peer{"perl-data-ical-vcal10.vcs", latinTitle, escapedNote, "work", 1, due, end},
        Peer{"php-horde-icalendar-1.0.vcs", title, note, "work", 1, due, end},
        // Midnight without a zone is local.
        Peer{"python3-vobject-2.0.ics", latinTitle, escapedNote, "work", 1, "20261130T230000Z",
             "-"},
        Peer{"qtversit-2.0.ics", latinTitle, escapedNote, "work", 1, due, "20261130T070000Z"},
        Peer{"syncevolution-libsynthesis-basic.vcs", title, "Zeile eins\\r\\nZeile zwei", "work", 1,
             "20261130T230000Z", end}));

}  // namespace
