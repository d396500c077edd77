// The conditions of searches in the store. They are checked on the rows of a result, so that only
// rows that match become records.
#pragma once

#include "ZTASK_ENG_Task.h"
#include "database.h"
#include "log_place.h"
#include "task_scripts.h"

#include <map>

// The condition that the category name, note, summary or uuid contains a text, with the same case.
// An empty text is contained in every field that is not empty.
class Mention {
public:
  Mention(bool open, const QString& text, LogPlace place = LogPlace::current())
      : open_(open), text_(text), place_(place) {}
  // Checks the current row, whose columns are those of PlainTask.
  [[nodiscard]] bool isMetBy(const ResultRows& row);

private:
  [[nodiscard]] bool isIn(QStringView field) const;
  [[nodiscard]] bool isInCategory(unsigned int uid);

  bool open_;
  const QString& text_;
  LogPlace place_;
  std::map<unsigned int, bool> categories_;  // those that were looked up
};

// The condition that a task matches an example: due date, end date, priority value and status value
// are equal, and note and summary contain those of the example, ignoring case. Fields of the
// example without a value (no date, 0, -1, empty) are ignored. Dates are compared in whole seconds.
class Example {
public:
  explicit Example(const ZTASK_ENG_Task& example);
  // Checks the current row, whose columns are those of PlainTask.
  [[nodiscard]] bool isMetBy(const ResultRows& row) const;
  [[nodiscard]] bool isMetBy(const ZTASK_ENG_Task& task) const;

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
