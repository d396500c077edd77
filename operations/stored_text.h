// The calendar texts of tasks (TASK_ENG_Ical): what a task came with, and what goes out. Require
// that the store is open in this thread. The functions return results of the store.
#pragma once

#include "ZTASK_ENG_Task.h"
#include "todo_text.h"

#include <QByteArray>

namespace ulo {

// Sets `text` to the text that the task came with; empty if it has none.
int readText(unsigned int uid, QByteArray& text);
// Stores the text of a stored task, in the transaction of the thread; an empty text removes it.
int storeText(unsigned int uid, const QByteArray& text);

// Sets `text` to a calendar with the stored task: the text that it came with, with the present
// fields, or a new one.
int currentText(const ZTASK_ENG_Task& task, QByteArray& text);

// Sets `repetition` to how the task repeats.
int readRepetition(unsigned int uid, Repetition& repetition);

}  // namespace ulo
