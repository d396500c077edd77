// The fields of a task record in the lines of a to-do.
#pragma once

#include "ZTASK_ENG_Task.h"
#include "component_lines.h"
#include "todo_dates.h"

#include <QByteArray>
#include <QString>

#include <string>

namespace ulo {

ZTASK_ENG_Task readFields(const ComponentLines& lines, const DateReader& reader);
// Returns the uuid of the record that readFields returns.
QString readUuid(const ComponentLines& lines);
// Replaces the lines of the fields in which `task` differs, and then those that say when the to-do
// was changed. Returns true if a line was replaced.
bool replaceFields(ComponentLines& lines, const ZTASK_ENG_Task& task, const DateReader& reader);
// Replaces the lines of the due date alone, as replaceFields does.
void replaceDueDate(ComponentLines& lines, const ZTASK_ENG_Task& task, const DateReader& reader);
// Makes a to-do one on which no work has begun: STATUS, PERCENT-COMPLETE and COMPLETED say so.
void reopen(ComponentLines& lines, const DateReader& reader);
// Sets DTSTAMP and LAST-MODIFIED to an instant and adds 1 to SEQUENCE.
void stampChange(ComponentLines& lines, std::int64_t instant);

// The lines of a new to-do.
QByteArray newTodo(const ZTASK_ENG_Task& task, const std::string& lineEnd);

}  // namespace ulo
