// The actions on iCalendar 2.0 files, which the plug-in of the engine does not read.
#pragma once

#include <QByteArray>
#include <QString>

// Performs an action on a text for which TASK_ENG_Ical::isIcalendar is true, if the application
// lock permits it. TASK_SAVE stores all to-dos of the text, or none, and tells the user; a to-do
// whose UID is stored already updates that task. TASK_VIEW shows the first to-do. Any other action
// does nothing. Returns true unless the action failed.
[[nodiscard]] bool actOnIcalendar(const QString& action, const QByteArray& text);
