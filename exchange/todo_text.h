// Operations on whole to-do texts, beside those of TASK_ENG_Ical. Not installed.
#pragma once

#include "ulo/export.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

namespace ulo {

// Returns the text with this UID in all of its to-dos and their overrides. All other lines keep
// their bytes.
[[nodiscard]] ULO_EXPORT QByteArray withUid(const QByteArray& text, const QString& uid);

// Returns true if both texts have the same to-dos and overrides, byte for byte. Compares neither
// the lines of the calendar nor its time zones.
[[nodiscard]] ULO_EXPORT bool hasSameTodos(const QByteArray& one, const QByteArray& other);

// Returns the alarm that the first to-do of the text would have with another due date: another one
// if the alarm is relative to the due date, or to a start that moves with it. Requires: the text
// contains a to-do.
[[nodiscard]] ULO_EXPORT QDateTime alarmForDue(const QByteArray& text, const QDateTime& due);

// Returns true if `one` is an earlier state than `other` of the same to-do: by LAST-MODIFIED, or by
// SEQUENCE if one of them lacks LAST-MODIFIED. Requires: each text contains one to-do.
[[nodiscard]] ULO_EXPORT bool isOlder(const QByteArray& one, const QByteArray& other);

// How a to-do repeats.
struct Repetition {
  enum class Unit {
    none,  // it does not
    second,
    minute,
    hour,
    day,
    week,
    month,
    year,
    other,  // by a rule that is not known, or on listed dates
  };
  Unit unit = Unit::none;
  int interval = 1;      // in units
  bool hasMore = false;  // the rule says more than unit and interval
  QString rule;          // empty if there is none
};
// Returns how the first to-do of the text repeats.
[[nodiscard]] ULO_EXPORT Repetition repetitionOf(const QByteArray& text);
// "every 2 weeks", with the rule itself if that says more. Empty for Unit::none.
[[nodiscard]] ULO_EXPORT QString englishText(const Repetition& repetition);

// Merges two states of one to-do, of which no common state is known. Requires: each text contains
// one to-do, and both have the same UID.
//
// The result is `other` if `one` is older, and `one` otherwise. Its lines are kept. What only the
// other text has is added: properties, alarms, further values of CATEGORIES and of other lists,
// overrides, and the time zones that these use, under new names if different ones have theirs.
// STATUS, COMPLETED and PERCENT-COMPLETE are taken together, and so are DTSTART, DUE and DURATION.
// SEQUENCE is the higher one.
[[nodiscard]] ULO_EXPORT QByteArray mergedTodo(const QByteArray& one, const QByteArray& other);

}  // namespace ulo
