// The texts of a task on the screens.
#pragma once

#include "ZTASK_ENG_Task.h"
#include "task_words.h"
#include "todo_text.h"

#include <QDate>
#include <QString>

namespace tasks {

// The name of a state or a class of priorities, in the user's language.
[[nodiscard]] QString shownText(const ulo::ShownAs& shown);

// The summary on one line, or "Untitled" if nothing of it is visible.
[[nodiscard]] QString titleText(const ZTASK_ENG_Task& task);

// Whether a category name stands for no category: a null or empty name, the default category
// "none", and the name that the store returns for a category that was removed.
[[nodiscard]] bool isNoCategory(const QString& name);
// The name on one line, translated if it is a default category; "No Category" if it stands for
// none.
[[nodiscard]] QString categoryText(const QString& name);

// Whether the task is not completed and was due before today.
[[nodiscard]] bool isOverdue(const ZTASK_ENG_Task& task, const QDate& today);
// A due day as "Today", "Tomorrow" or "Yesterday", otherwise as a short date.
[[nodiscard]] QString dayText(const QDate& day, const QDate& today);

// The due day of a task as dayText; empty if it has none.
[[nodiscard]] QString dueText(const ZTASK_ENG_Task& task, const QDate& today);

// How a task repeats: "Daily", "Every 2 weeks". Empty if it does not.
[[nodiscard]] QString repetitionText(const ulo::Repetition& repetition);

// The description of a row for screen readers: status, due day, priority and category.
[[nodiscard]] QString descriptionText(const ZTASK_ENG_Task& task, const QDate& today);

}  // namespace tasks
