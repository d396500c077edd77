// The to-dos of an iCalendar 2.0 text, read one after the other. Not installed: other programs use
// TASK_ENG_Ical::read.
#pragma once

#include "TASK_ENG_Ical.h"
#include "calendar_text.h"
#include "todo_dates.h"
#include "ulo/export.h"

#include <QByteArray>
#include <QString>

#include <cstddef>

namespace ulo {

// Returns what the text says before the fields of its to-dos are read.
TASK_ENG_Ical::Report reportOf(const CalendarText& text);
// Returns a function that adds problems to the report, which must outlive it.
ProblemReport reportInto(TASK_ENG_Ical::Report& report);

// Beside the text, needs memory for one to-do and a few bytes for each other one.
class ULO_EXPORT IcalTodos {
public:
  // Finds the to-dos, their overrides and the time zones, wherever in the text they are.
  explicit IcalTodos(const QByteArray& text);
  IcalTodos(const IcalTodos&) = delete;
  IcalTodos& operator=(const IcalTodos&) = delete;
  ~IcalTodos();

  // Describes the text and the to-dos that next() has read. Complete after next() returned false.
  [[nodiscard]] const TASK_ENG_Ical::Report& report() const { return report_; }

  // To-dos are numbered from 0 in the order of the text.
  [[nodiscard]] std::size_t count() const { return text_.todos().size(); }
  // Returns the uuid of the record that next() returns for the to-do.
  [[nodiscard]] QString uuid(std::size_t todo) const;

  // Sets `todo` to the next one. Returns false after the last one, and as soon as the texts have
  // more than `TASK_ENG_Ical::textsLimit` bytes together; the report then says so.
  [[nodiscard]] bool next(TASK_ENG_Ical::Todo& todo);

private:
  CalendarText text_;
  ZoneTable zones_;
  TASK_ENG_Ical::Report report_;
  std::size_t next_ = 0;
  std::size_t textBytes_ = 0;  // of the to-dos that were returned
};

}  // namespace ulo
