// Writes a calendar of many to-dos in parts. Not installed: other programs use TASK_ENG_Ical.
#pragma once

#include "TASK_ENG_Ical.h"
#include "ulo/export.h"
#include "zone_names.h"

#include <QByteArray>

#include <string>

namespace ulo {

// The parts together are the text of a TASK_ENG_Ical to which the same to-dos are appended.
class ULO_EXPORT IcalWriter {
public:
  IcalWriter();
  IcalWriter(const IcalWriter&) = delete;
  IcalWriter& operator=(const IcalWriter&) = delete;
  ~IcalWriter();

  // Returns the lines of the calendar in front of its components.
  [[nodiscard]] const QByteArray& begin() const { return begin_; }
  // Returns the first to-do of a text, its overrides, and its time zones unless they were returned
  // before. Renames a time zone if a different one was returned under its name. If the text has no
  // to-do, returns a new one with the fields of `task`.
  [[nodiscard]] QByteArray add(const QByteArray& text, const ZTASK_ENG_Task& task);
  // Returns the lines of the calendar after its components.
  [[nodiscard]] const QByteArray& end() const { return end_; }

private:
  QByteArray begin_;
  QByteArray end_;
  std::string lineEnd_;
  ZoneNames zones_;
};

}  // namespace ulo
