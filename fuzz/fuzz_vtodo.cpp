// Bytes as a calendar text: through the guard to the vObject library, into tasks, out as a text
// and in again.
#include "ZVtodoParser.h"
#include "todo_reader.h"
#include "todo_writer.h"
#include "vcal_guard.h"

#include "bare_library.h"
#include "fuzz_support.h"
#include "task_text.h"
#include "temporary_directory.h"

#include <algorithm>
#include <fstream>

namespace {

using Task = ZTASK_ENG_Task;

// Pieces may be longer than the text: each byte may become an escape of three, and the shortest
// property gets a parameter. Each piece also has a frame.
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

int hexDigit(char c) {
  return c <= '9' ? c - '0' : c - 'A' + 10;
}

// Returns a line of a piece in the form of parseBare: "NAME=value" or "NAME[charset]=value".
std::string saidBy(const std::string& line) {
  const std::size_t colon = line.find(':');
  std::string header = line.substr(0, colon);
  std::string value = line.substr(colon + 1);
  const std::string encoded = ";ENCODING=QUOTED-PRINTABLE";
  if (header.ends_with(encoded)) {
    header.resize(header.size() - encoded.size());
    std::string bytes;
    for (std::size_t i = 0; i < value.size(); ++i) {
      const bool isEscape = value[i] == '=';
      bytes += isEscape ? static_cast<char>(hexDigit(value[i + 1]) * 16 + hexDigit(value[i + 2]))
                        : value[i];
      i += isEscape ? 2 : 0;
    }
    value = bytes;
  }
  const std::string declared = ";CHARSET=";
  const std::size_t charset = header.find(declared);
  return (charset == header.npos
              ? header
              : header.substr(0, charset) + "[" + header.substr(charset + declared.size()) + "]") +
         "=" + value;
}

// Returns "NAME[charset]=value" with both names in upper case. The library returns names that it
// knows in upper case, and a character set in the case in which it first occurred.
std::string inCapitals(std::string property) {
  const auto names = std::find(property.begin(), property.end(), '=');
  std::transform(property.begin(), names, property.begin(),
                 [](char c) { return c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c; });
  return property;
}

// A piece has one property on each line. The library must return all of them with their values; it
// splits alarms into fields.
void checkPiece(const std::string& piece) {
  std::vector<TodoProperties> expected;
  for (std::size_t at = 0; at < piece.size();) {
    const std::size_t end = piece.find("\r\n", at);
    FUZZ_REQUIRE(end != piece.npos);
    const std::string line = piece.substr(at, end - at);
    at = end + 2;
    if (line == "BEGIN:VTODO")
      expected.emplace_back();
    else if (!expected.empty() && line != "END:VTODO" && line != "END:VCALENDAR")
      expected.back().push_back(saidBy(line));
  }
  const auto todos = parseBare(piece);
  FUZZ_REQUIRE(todos.has_value() && todos->size() == expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    FUZZ_REQUIRE((*todos)[i].size() == expected[i].size());
    for (std::size_t j = 0; j < expected[i].size(); ++j)
      FUZZ_REQUIRE(inCapitals((*todos)[i][j]) == inCapitals(expected[i][j]) ||
                   inCapitals(expected[i][j]).find("ALARM") == 1);
  }
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
    checkPiece(piece);
    todos += again.report().todos;
    bytes += piece.size();
    ++pieces;
  }
  FUZZ_REQUIRE(!guarded.nextPiece(piece));
  FUZZ_REQUIRE((pieces > 0) == isReadable(guarded.report()));
  FUZZ_REQUIRE(todos == guarded.report().todos);
  FUZZ_REQUIRE(bytes <= mostGrowth * text.size() + frameSize * pieces);
}

// The library reads every to-do that the guard reports, and reads a clean text like its repaired
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

bool sameReport(const ulo::TextReport& one, const ulo::TextReport& other) {
  return one.problem == other.problem && one.line == other.line && one.todos == other.todos;
}

std::vector<TodoProperties> readFrom(const std::string& text) {
  return onlyGuarded(parseGuarded(text).value_or(std::vector<TodoProperties>()));
}

// Line ends and a byte order mark make no difference.
void checkForms(const std::string& text) {
  if (text.find('\r') != text.npos)
    return;
  std::string withCarriageReturns;
  for (const char c : text)
    withCarriageReturns += c == '\n' ? std::string("\r\n") : std::string(1, c);
  const ulo::TextReport report = ulo::examineText(text);
  const std::vector<TodoProperties> todos = readFrom(text);
  for (const std::string& form : {withCarriageReturns, "\xEF\xBB\xBF" + text}) {
    FUZZ_REQUIRE(sameReport(ulo::examineText(form), report));
    FUZZ_REQUIRE(readFrom(form) == todos);
  }
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

// Returns the text as it comes back: up to its first zero, with unpaired surrogates replaced.
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

// The fields that a text can express come back unchanged.
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

// Writing and reading keeps the number and the fields of the tasks. Doing it again changes nothing.
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

// Without files: the same tasks are read and the same bytes are written, and the reports agree.
void checkBytes(const std::string& text, Tasks& tasks) {
  const ulo::TextReport report = ulo::examineText(text);
  const ulo::TodosRead read = ulo::readTodos(text);
  FUZZ_REQUIRE(sameReport(read.report.text, report));
  FUZZ_REQUIRE(read.tasks.size() == tasks.count());
  FUZZ_REQUIRE((read.report.failure == ulo::ReadFailure::none) ==
               (report.problem == ulo::TextProblem::none));
  for (std::size_t i = 0; i < tasks.count(); ++i)
    FUZZ_REQUIRE(taskText(*read.tasks[i]) == taskText(tasks.at(i)));

  // Slices, of which none is kept in memory.
  ulo::TodoSlices slices(text, 0);
  std::size_t sliced = 0;
  for (std::vector<std::unique_ptr<ZTASK_ENG_Task>> slice; slices.next(slice);)
    for (const std::unique_ptr<ZTASK_ENG_Task>& task : slice) {
      FUZZ_REQUIRE(sliced < tasks.count());
      FUZZ_REQUIRE(taskText(*task) == taskText(tasks.at(sliced)));
      ++sliced;
    }
  FUZZ_REQUIRE(sliced == tasks.count());
  FUZZ_REQUIRE(sameReport(slices.report().text, report));

  const ulo::TodosWritten written = ulo::writeTodos(tasks.list());
  FUZZ_REQUIRE(written.report.failure == ulo::WriteFailure::none);
  FUZZ_REQUIRE(written.report.todos == tasks.count());
  FUZZ_REQUIRE(ulo::readTodos(written.text).tasks.size() == tasks.count());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Surroundings surroundings;
  const std::string text = fuzz::textOf(data, size);
  checkPieces(text);
  checkLibrary(text);
  if (fuzz::isOneIn(2, text))
    checkForms(text);

  ZVtodoParser parser;
  Tasks tasks;
  const std::string upToZero = text.substr(0, text.find('\0'));
  parser.readVtodo(QCString(upToZero.c_str()), tasks.list());
  FUZZ_REQUIRE(tasks.count() == ulo::examineText(upToZero).todos);
  checkBytes(upToZero, tasks);

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
