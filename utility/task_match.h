// The conditions of searches in the store. They are checked on the rows of a result, so that only
// rows that match become records. The category of every row is looked up nevertheless: the calls to
// the database are a contract.
#pragma once

#include "ZTASK_ENG_Task.h"
#include "database.h"
#include "task_scripts.h"

#include <string>

// Returns true if the field contains `text`, with the same case. An empty text is contained in
// every field that is not empty.
[[nodiscard]] bool contains(QStringView field, const QString& text);
// Returns true if the note, summary or uuid of the current row contains the text. The columns of
// the row are those of PlainTask.
[[nodiscard]] bool mentions(const ResultRows& row, const QString& text);

// The condition that a task matches an example: due date, end date, priority value and status value
// are equal, and note and summary contain those of the example, ignoring case. Fields of the
// example without a value (no date, 0, -1, empty) are ignored. Dates are compared in whole seconds.
class Example {
public:
  explicit Example(const ZTASK_ENG_Task& example);
  // Checks the current row, whose columns are those of PlainTask.
  [[nodiscard]] bool isMetBy(const ResultRows& row) const;
  [[nodiscard]] bool isMetBy(const ZTASK_ENG_Task& task) const;
  // The same condition for the cursor $c of a script, as far as scripts can check it: rows that do
  // not meet it do not meet the example. Empty if it is met by every row.
  [[nodiscard]] std::string scriptCondition() const;

private:
  [[nodiscard]] bool isMetBy(int due, int end, int priority, int status, QStringView note,
                             QStringView summary) const;

  int due_;
  int end_;
  int priority_;
  int status_;
  QString note_;
  QString summary_;
};
