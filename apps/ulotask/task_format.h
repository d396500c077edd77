// Tasks as they are printed for users.
#pragma once

#include "ZTASK_ENG_Task.h"
#include "output.h"
#include "take_in.h"

#include <QString>

#include <string>

namespace ulotask {

// Prints all fields, one per line. `repetition` says when the task repeats; empty if it does not.
void printTask(Output& output, const ZTASK_ENG_Task& task, const QString& repetition);

// Says in a sentence that a text was too long.
std::string sentence(const ulo::ShortenedText& text);

// The table that `list` prints, with one row per task.
Table taskTable();
Table::Row rowOf(const ZTASK_ENG_Task& task);

}  // namespace ulotask
