// Reads vCalendar 1.0 text into task records, and reports what was read and what was not. Not
// installed: other programs use ZVtodoParser.
#pragma once

#include "ZTASK_ENG_Task.h"
#include "ulo/export.h"
#include "vcal_guard.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct VObject;

namespace ulo {

// Why reading stopped.
enum class ReadFailure {
  none,
  text,     // the text has no readable to-do; TextReport::problem says why
  library,  // the vObject library is missing or incomplete, or it rejected the text
  memory,   // a record or a value could not be allocated
};

// A text whose bytes are not valid in the character set that it declares. It was read as Latin-1.
struct UndecodedText {
  std::size_t todo = 0;  // index of its to-do, from 0
  ZTASK_ENG_Task::TASK_FIELD_T field = ZTASK_ENG_Task::TASK_FIELD_SUMMARY;
};

struct ReadReport {
  ReadFailure failure = ReadFailure::none;
  // What the text contains, and what the guard left out or changed.
  TextReport text;
  std::vector<UndecodedText> undecoded;  // the first loggedLimit
};

struct TodosRead {
  std::vector<std::unique_ptr<ZTASK_ENG_Task>> tasks;  // in the order of the text
  ReadReport report;
};

// Reads a text. If memory is short, returns no tasks, because one may lack a value. Opens the
// vObject library for the call, unless the text has no readable to-do; then it logs nothing. Only
// one thread of the process at a time may read or write calendar text.
[[nodiscard]] ULO_EXPORT TodosRead readTodos(std::string_view text);

// Bytes of a text for the library that TodoSlices keeps in memory. More are made a second time.
inline constexpr std::size_t slicesKept = std::size_t{4} << 20;

// The to-dos of a text, read slice by slice. Beside the text, needs memory for one slice: at most a
// hundred to-dos, and not more than one if they are large. A short text that the library reads
// without repairs is one slice. Only one thread of the process at a time may read or write calendar
// text.
class ULO_EXPORT TodoSlices {
public:
  // Scans the text, which must outlive the object.
  explicit TodoSlices(std::string_view text, std::size_t kept = slicesKept);
  TodoSlices(const TodoSlices&) = delete;
  TodoSlices& operator=(const TodoSlices&) = delete;
  ~TodoSlices();

  // The result of the scan; after next() has returned false, the same report as of readTodos.
  [[nodiscard]] const ReadReport& report() const;
  // Sets `tasks` to the next to-dos. Returns false after the last one, and if the remaining ones
  // cannot be read; the report then says why. Opens the vObject library until then.
  [[nodiscard]] bool next(std::vector<std::unique_ptr<ZTASK_ENG_Task>>& tasks);

private:
  struct __attribute__((visibility("hidden"))) State;
  std::unique_ptr<State> state_;
};

// A text or a file, scanned once by the guard. Used while the vObject library is open.
class TodoReader {
public:
  // The text must outlive the object.
  static TodoReader fromMemory(std::string_view text, std::size_t kept = keptLimit);
  static TodoReader fromFile(std::string path);

  [[nodiscard]] const TextReport& report() const { return guarded_.report(); }
  // Parses the text and reads its to-dos. A text that the guard rejects, or the library, is logged.
  // If memory is short, a task may lack a value, or tasks from one on are missing.
  // Called at most once, instead of `hasTodo`.
  [[nodiscard]] TodosRead read();
  // The same for the next part of the text: appends its to-dos. Returns false at the end and after
  // a failure; `report` is then complete.
  [[nodiscard]] bool readPart(std::vector<std::unique_ptr<ZTASK_ENG_Task>>& tasks,
                              ReadReport& report);
  // Parses the text and returns true if a calendar in it contains a VTODO.
  [[nodiscard]] bool hasTodo();

private:
  TodoReader(std::string_view text, std::string path, GuardedText guarded);
  bool nextPart(VObject*& first);

  std::string_view text_;
  std::string path_;  // empty for a text in memory; a file without a name is never clean
  GuardedText guarded_;
  std::string piece_;
  std::size_t todos_ = 0;   // that were read
  bool hasParsed_ = false;  // the last part, if there was one
  bool isFinished_ = false;
};

// True if a task of the last text that this thread has read with a ZVtodoParser, or with
// TodoReader::read(), lacks a value, because memory was short. ZVtodoParser itself cannot say so.
[[nodiscard]] bool lastReadLacksValue();

}  // namespace ulo
