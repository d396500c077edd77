// A task as people and programs read it.
#pragma once

#include "ZTASK_ENG_Task.h"
#include "output.h"
#include "take_in.h"

#include <QJsonObject>

#include <string>

namespace ulotask {

// Returns all fields, with dates in UTC and null for fields that are not set.
QJsonObject toJson(const ZTASK_ENG_Task& task);

// All fields, one to a line.
void printTask(Output& output, const ZTASK_ENG_Task& task);

// What happened to a text that was too long.
std::string sentence(const ulo::ShortenedText& text);

// One line for each task, as `list` prints it.
Table taskTable();
void addTo(Table& table, const ZTASK_ENG_Task& task);

}  // namespace ulotask
