// iCalendar 2.0 texts as other programs write them, and the work on them with libical alone.
#pragma once

#include <QByteArray>

namespace bench {

// Returns a calendar with a time zone and so many to-dos. Each has about 15 lines, some of which
// the engine only keeps; a third have a note, and all a due date in the time zone and an alarm.
QByteArray icalText(int todos);

// Reads a text into libical's tree. Returns the number of its to-dos.
int parsedByLibrary(const QByteArray& text);
// Replaces the summary of the last to-do: with libical, which writes the whole text anew, and with
// ours.
QByteArray editedByLibrary(const QByteArray& text, const char* summary);
QByteArray editedByUs(const QByteArray& text, const char* summary);

}  // namespace bench
