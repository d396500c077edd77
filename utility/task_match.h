// What a search in the store looks for in a task.
#pragma once

#include "ZTASK_ENG_Task.h"

// Whether `text`, case as given, is in the task's category name, note, summary or uuid. An empty
// text is in every field that is not empty.
bool mentions(const ZTASK_ENG_Task& task, const QString& text);

// What an example asks for: due date, end date, priority value and status value are equal, note and
// summary contain the example's in any case. No-date, 0, -1 and empty ask for nothing. Dates are
// compared in whole seconds.
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
