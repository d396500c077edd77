// The dates of a to-do in a calendar text.
#pragma once

#include "component_lines.h"
#include "wall_time.h"
#include "zone_rules.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace ulo {

// Receives the number of a line that cannot be read completely, and the reason as a sentence.
using ProblemReport = std::function<void(std::size_t line, const QString& problem)>;

enum class DateForm { day, utc, floating, zoned };

// A date of a text: the instant, and the form in which it is written.
struct DateValue {
  DateForm form = DateForm::utc;
  std::int64_t wall = 0;
  std::string zoneId;                     // of form `zoned`
  std::shared_ptr<const ZoneRules> zone;  // null if it is not known, or for another form

  // A day begins at local midnight. A zone that is not known counts as local time.
  [[nodiscard]] std::int64_t instant() const;
  // What the clock of this date shows at an instant: UTC, that of the zone, or local time.
  [[nodiscard]] std::int64_t wallAt(std::int64_t instant) const;
  // The same form at another time; in UTC if the form cannot express it.
  [[nodiscard]] DateValue at(std::int64_t instant) const;
  [[nodiscard]] DateValue plus(const Duration& duration) const;
  // The line NAME...:VALUE. `parameters` are kept, except for VALUE and TZID.
  [[nodiscard]] std::string line(std::string_view name, std::string_view parameters) const;
};
DateValue utcDate(std::int64_t instant);
// The day of an instant in local time, if the day begins at the instant.
std::optional<DateValue> localDay(std::int64_t instant);

// Moves a date as far as another one moved, on its own clock. If one of them is a day, counts days.
DateValue movedLike(const DateValue& date, const DateValue& from, const DateValue& to);

// What the dates of a to-do are read with.
struct DateReader {
  ZoneTable& zones;
  int calendar;
  const ProblemReport& report;

  // Reads the date of a line. Reports one that is not valid, and a zone that is not known.
  [[nodiscard]] std::optional<DateValue> read(const ComponentLines& lines, std::size_t line) const;
  // Returns isRecordDate(); reports a date that is not one.
  [[nodiscard]] bool isInRange(const ComponentLines& lines, std::size_t line,
                               std::int64_t instant) const;
  // Reports a problem with the property of a line.
  void problem(const ComponentLines& lines, std::size_t line, const QString& text) const;
};

// Replaces the date of a line. Keeps the parameters as they are if the form does not change.
void replaceDate(ComponentLines& lines, std::size_t line, const DateValue& date,
                 const DateReader& reader);

// Whether a record can hold an instant: from January 2, 1970 to January 17, 2038, local time.
// Earlier ones stand for "no date" in some texts, and later ones do not fit into 32 bits.
bool isRecordDate(std::int64_t instant);

// Whether a record's date is the one of a line. A line whose date a record cannot hold is the same
// as no date.
bool isSameDate(const std::optional<DateValue>& present,
                const std::optional<std::int64_t>& instant);

struct TodoDates {
  std::size_t dueLine = ComponentLines::none;
  std::size_t durationLine = ComponentLines::none;
  std::optional<DateValue> start;
  std::optional<DateValue> due;  // of DUE, otherwise of DTSTART and DURATION
};
TodoDates readDates(const ComponentLines& lines, const DateReader& reader);

struct TodoAlarm {
  ComponentLines::Range range;
  std::size_t trigger = ComponentLines::none;
  std::int64_t instant = 0;
};
// Returns the first alarm whose time can be computed.
std::optional<TodoAlarm> readAlarm(const ComponentLines& lines, const TodoDates& dates,
                                   const DateReader& reader);

}  // namespace ulo
