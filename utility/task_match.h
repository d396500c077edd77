// The conditions of searches in the store.
#pragma once

#include "ZTASK_ENG_Task.h"

// Whether the task's category name, note, summary or uuid contains `text`, with the same case. An
// empty text is contained in every field that is not empty.
bool mentions(const ZTASK_ENG_Task& task, const QString& text);

// Whether a task matches an example: due date, end date, priority value and status value are equal,
// and note and summary contain those of the example, ignoring case. Fields of the example without a
// value (no date, 0, -1, empty) are ignored. Dates are compared in whole seconds.
class Example {
public:
  explicit Example(const ZTASK_ENG_Task& example);
  [[nodiscard]] bool isMetBy(const ZTASK_ENG_Task& task) const;

private:
  long due_;
  long end_;
  int priority_;
  int status_;
  QString note_;
  QString summary_;
};
