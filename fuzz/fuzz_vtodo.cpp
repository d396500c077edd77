// Bytes as a calendar text: through the guard to the vObject library, into tasks, out as a text
// and in again.
#include "ZVtodoParser.h"
#include "vcal_guard.h"

#include "bare_library.h"
#include "fuzz_support.h"
#include "task_text.h"
#include "temporary_directory.h"

#include <fstream>

namespace {

using Task = ZTASK_ENG_Task;

// What the guard hands over may be longer than what it got: every byte may become an escape of
// three, and the shortest property gets a parameter. Each piece has a frame besides.
constexpr std::size_t mostGrowth = 10;
constexpr std::size_t frameSize = 64;

struct Surroundings {
  Surroundings() { fuzz::prepare(); }
  [[nodiscard]] std::string file() const { return directory().path() / "calendar.vcs"; }

private:
  static const TemporaryDirectory& directory() {
    static const TemporaryDirectory made;
    return made;
  }
};

bool isReadable(const ulo::TextReport& report) {
  return report.problem == ulo::TextProblem::none || report.problem == ulo::TextProblem::noTodo;
}

// The pieces of a text hold all of its to-dos, stay small, and need no guard themselves.
void checkPieces(const std::string& text) {
  ulo::GuardedText guarded = ulo::GuardedText::fromMemory(text, guardedNames());
  if (guarded.isClean())
    return;
  std::size_t todos = 0;
  std::size_t bytes = 0;
  std::size_t pieces = 0;
  std::string piece;
  while (guarded.nextPiece(piece)) {
    const ulo::GuardedText again = ulo::GuardedText::fromMemory(piece, guardedNames());
    FUZZ_REQUIRE(again.isClean());
    todos += again.report().todos;
    bytes += piece.size();
    ++pieces;
  }
  FUZZ_REQUIRE(!guarded.nextPiece(piece));
  FUZZ_REQUIRE((pieces > 0) == isReadable(guarded.report()));
  FUZZ_REQUIRE(todos == guarded.report().todos);
  FUZZ_REQUIRE(bytes <= mostGrowth * text.size() + frameSize * pieces);
}

// The library reads every to-do that the guard announced, and reads a clean text like its repaired
// copy.
void checkLibrary(const std::string& text) {
  const ulo::TextReport report = ulo::examineText(text);
  const bool isClean = ulo::GuardedText::fromMemory(text, {}).isClean();
  const auto todos = parseGuarded(text);
  FUZZ_REQUIRE(todos.has_value() == (isReadable(report) || isClean));
  FUZZ_REQUIRE((todos ? todos->size() : 0) == report.todos);
  if (!isClean || !isReadable(report))
    return;
  const auto repaired = parseGuarded("\xEF\xBB\xBF" + text);
  FUZZ_REQUIRE(repaired.has_value());
  FUZZ_REQUIRE(onlyGuarded(*todos) == onlyGuarded(*repaired));
}

class Tasks {
public:
  Tasks() { list_.setAutoDelete(true); }

  QList<Task>& list() { return list_; }
  [[nodiscard]] std::size_t count() const { return list_.count(); }
  Task& at(std::size_t index) { return *list_.at(static_cast<unsigned int>(index)); }
  [[nodiscard]] std::string text() {
    std::string all;
    for (std::size_t i = 0; i < count(); ++i)
      all += taskText(at(i)) + "\n";
    return all;
  }

private:
  QList<Task> list_;
};

// A text as a file of UTF-8 that ends with the first zero keeps it.
QString asWritten(const QString& text) {
  const QString stored = text.left(text.indexOf(QChar(0)));
  QString result;
  for (qsizetype i = 0; i < stored.size(); ++i) {
    const bool isPair =
        stored[i].isHighSurrogate() && i + 1 < stored.size() && stored[i + 1].isLowSurrogate();
    if (isPair)
      result += stored[i++];
    result += stored[i].isSurrogate() && !isPair ? QChar(QChar::ReplacementCharacter) : stored[i];
  }
  return result;
}

// What comes back is what was written, where the form of the text has a place for it.
void checkReadBack(const Task& before, const Task& after) {
  constexpr int completed = 0;
  constexpr int needsAction = 1;
  constexpr int lastStatus = 7;
  for (const auto field : {Task::TASK_FIELD_SUMMARY, Task::TASK_FIELD_NOTE})
    FUZZ_REQUIRE(after.getString(field) == asWritten(before.getString(field)));
  FUZZ_REQUIRE(after.getPriorityValue() == before.getPriorityValue());
  const int status = before.getStatusValue();
  const int written = status < 0 || status > lastStatus ? needsAction : status;
  const bool isEnded = after.getDateTime(Task::TASK_FIELD_END) != Task::noDate();
  FUZZ_REQUIRE(after.getStatusValue() == (written == needsAction && isEnded ? completed : written));
  FUZZ_REQUIRE(after.getString(Task::TASK_FIELD_CATEGORY).isNull());
}

// Tasks written and read: as many, with the same fields, and from then on nothing changes.
void checkRoundTrip(ZVtodoParser& parser, Tasks& tasks, const std::string& file) {
  const QString name = QString::fromStdString(file);
  Tasks second;
  parser.writeVtodo(name, tasks.list());
  parser.readVtodo(name, second.list());
  FUZZ_REQUIRE(second.count() == tasks.count());
  FUZZ_REQUIRE(parser.isVtodo(name) == (tasks.count() > 0));
  for (std::size_t i = 0; i < tasks.count(); ++i)
    checkReadBack(tasks.at(i), second.at(i));
  Tasks third;
  parser.writeVtodo(name, second.list());
  parser.readVtodo(name, third.list());
  FUZZ_REQUIRE(third.text() == second.text());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Surroundings surroundings;
  const std::string text = fuzz::textOf(data, size);
  checkPieces(text);
  checkLibrary(text);

  ZVtodoParser parser;
  Tasks tasks;
  const std::string upToZero = text.substr(0, text.find('\0'));
  parser.readVtodo(QCString(upToZero.c_str()), tasks.list());
  FUZZ_REQUIRE(tasks.count() == ulo::examineText(upToZero).todos);

  if (fuzz::isOneIn(4, text)) {
    const std::string file = surroundings.file();
    std::ofstream(file, std::ios::binary | std::ios::trunc) << text;
    const QString name = QString::fromStdString(file);
    Tasks fromFile;
    parser.readVtodo(name, fromFile.list());
    FUZZ_REQUIRE(fromFile.count() == ulo::examineFile(file).todos);
    FUZZ_REQUIRE(parser.isVtodo(name) == (fromFile.count() > 0));
    if (upToZero.size() == text.size())
      FUZZ_REQUIRE(fromFile.text() == tasks.text());
  }
  checkRoundTrip(parser, tasks, surroundings.file());
  return 0;
}
