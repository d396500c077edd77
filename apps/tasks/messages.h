// Messages about what the application did or could not do.
#pragma once

#include "TASK_ENG_Ical.h"
#include "ZTASK_ENG_Task.h"

#include <QDate>
#include <QString>

class QWidget;

namespace tasks {

struct ImportResult;

// Shows a dialog that says that the store rejected a task with this code, and returns when the user
// has closed it.
void tellNotStored(int code, QWidget* parent);

// The message after the user completed a repeating task: its next date, or that there is none.
[[nodiscard]] QString nextDateText(TASK_ENG_Ical::NextDate next, const ZTASK_ENG_Task& task,
                                   const QDate& today);

// The progress of an import.
[[nodiscard]] QString importText(unsigned int stored, unsigned int all);
// The result of an import: the number of tasks and the files without any. Mentions if the list does
// not show the last task.
[[nodiscard]] QString importText(const ImportResult& result, bool isShown);

}  // namespace tasks
