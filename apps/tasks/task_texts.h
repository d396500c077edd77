// How a task is worded on the screens.
#pragma once

#include "ZTASK_ENG_Task.h"

#include <QDate>
#include <QString>

namespace tasks {

// The summary as one line, whatever is in it; "Untitled" for one with nothing to see.
[[nodiscard]] QString titleText(const ZTASK_ENG_Task& task);

// Whether a category's name says that there is none: null, empty, the default category "none", and
// what the store gives for a category that was removed.
[[nodiscard]] bool isNoCategory(const QString& name);
// The name as one line, in the user's language where it is one of the default categories; "No
// Category" where there is none.
[[nodiscard]] QString categoryText(const QString& name);

// Whether a date field of a task holds a date.
[[nodiscard]] bool isDate(const QDateTime& dateTime);
// Whether the task is to be done and its due day is over.
[[nodiscard]] bool isOverdue(const ZTASK_ENG_Task& task, const QDate& today);
// A due day as "Today", "Tomorrow", "Yesterday", else as a short date.
[[nodiscard]] QString dayText(const QDate& day, const QDate& today);

// What stands below the title for those who listen: status, due day, priority and category.
[[nodiscard]] QString descriptionText(const ZTASK_ENG_Task& task, const QDate& today);

}  // namespace tasks
