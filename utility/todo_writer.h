// Writes task records as vCalendar 1.0 text, and reports what could not be written. Not installed:
// other programs use ZVtodoParser.
#pragma once

#include "ZTASK_ENG_Task.h"
#include "ulo/export.h"

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace ulo {

// Why a text is missing or incomplete.
enum class WriteFailure {
  none,
  // The vObject library is missing or incomplete, or memory is short. The log names the function.
  library,
};

// A value that was changed or left out. A date in a year without four digits is left out; of a
// text, everything from U+0000 on is left out and unpaired surrogates are replaced. Does not
// include what the format of every text drops: the time of day of the due date, the time of change,
// UID and uuid.
struct LossyValue {
  std::size_t task = 0;  // index in the list
  ZTASK_ENG_Task::TASK_FIELD_T field = ZTASK_ENG_Task::TASK_FIELD_SUMMARY;
};

struct WriteReport {
  WriteFailure failure = WriteFailure::none;
  std::size_t todos = 0;  // to-dos written
  std::vector<LossyValue> lossy;
};

struct TodosWritten {
  std::string text;
  WriteReport report;
};

// Returns one calendar with a VTODO for each task; null pointers in the list are skipped. Opens the
// vObject library for the call. Only one thread of the process at a time may read or write calendar
// text.
[[nodiscard]] ULO_EXPORT TodosWritten writeTodos(const QList<ZTASK_ENG_Task>& tasks);

// Writes lists of tasks, each as the text of writeTodos. While the library writes the text of one
// list, which takes two thirds of the time, the caller can read the next tasks and add them. Keeps
// the vObject library open. Only one thread of the process at a time may read or write calendar
// text.
class ULO_EXPORT TodoPages {
public:
  TodoPages();
  TodoPages(const TodoPages&) = delete;
  TodoPages& operator=(const TodoPages&) = delete;
  ~TodoPages();

  void add(const QList<ZTASK_ENG_Task>& tasks);
  // The number of lists whose text has not been taken.
  [[nodiscard]] std::size_t count() const;
  // Waits for the text of the list that was added first, and removes it. Requires: count() > 0.
  [[nodiscard]] TodosWritten take();

private:
  struct __attribute__((visibility("hidden"))) State;
  std::unique_ptr<State> state_;
};

// Writes the same text to a stream. Used while the vObject library is open.
void writeTodos(std::FILE* stream, const QList<ZTASK_ENG_Task>& tasks);

}  // namespace ulo
