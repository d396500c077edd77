// The formats of calendar texts.
#pragma once

#include <QByteArray>

#include <vector>

namespace ulo {

enum class CalendarVersion { vcalendar, icalendar };

struct TextOfVersion {
  CalendarVersion version;
  QByteArray text;
};

// Splits a text into that of its calendars of vCalendar 1.0 and that of those of iCalendar 2.0, in
// the order in which the versions first occur. In both, each line has the number that it has in the
// whole text. A text without a calendar is one of vCalendar 1.0.
std::vector<TextOfVersion> splitVersions(QByteArray text);

}  // namespace ulo
