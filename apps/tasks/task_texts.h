// How a task is worded on the screens.
#pragma once

#include "ZTASK_ENG_Task.h"
#include "task_words.h"

#include <QDate>
#include <QString>

namespace tasks {

// The name of a state or a class of priorities, in the user's language.
[[nodiscard]] QString shownText(const ulo::ShownAs& shown);

// The summary on one line, or "Untitled" if nothing of it is visible.
[[nodiscard]] QString titleText(const ZTASK_ENG_Task& task);

// Whether a category's name says that there is none: null, empty, the default category "none", and
// what the store gives for a category that was removed.
[[nodiscard]] bool isNoCategory(const QString& name);
// The name as one line, in the user's language where it is one of the default categories; "No
// Category" where there is none.
[[nodiscard]] QString categoryText(const QString& name);

// Whether the task is not completed and was due before today.
[[nodiscard]] bool isOverdue(const ZTASK_ENG_Task& task, const QDate& today);
// A due day as "Today", "Tomorrow", "Yesterday", else as a short date.
[[nodiscard]] QString dayText(const QDate& day, const QDate& today);

// What stands below the title for those who listen: status, due day, priority and category.
[[nodiscard]] QString descriptionText(const ZTASK_ENG_Task& task, const QDate& today);

}  // namespace tasks
