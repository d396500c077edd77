// A task as people and programs read it.
#pragma once

#include "ZTASK_ENG_Task.h"
#include "output.h"
#include "take_in.h"

#include <QJsonObject>

#include <optional>
#include <string>

namespace ulotask {

// The classes that priorities fall into (ZTASK_ENG_Task::getPriority).
struct PriorityClass {
  int priority;
  const char* word;
};
inline constexpr PriorityClass priorityClasses[] = {{1, "high"}, {5, "normal"}, {9, "low"}};

// The status words of vCalendar 1.0 by status code; any other code means needs action.
inline constexpr const char* statusWords[] = {"completed", "needs action", "accepted", "sent",
                                              "tentative", "confirmed",    "declined", "delegated"};
inline constexpr int statusCompleted = 0;
inline constexpr int statusNeedsAction = 1;

// False for the no-date value and for an invalid date-time.
bool isSet(const QDateTime& dateTime);

// Local "2026-03-05 18:00", without the time at midnight; "-" for no date.
std::string shownDate(const QDateTime& dateTime);

// All fields; dates in UTC, null for fields that are not set.
QJsonObject toJson(const ZTASK_ENG_Task& task);

// All fields, one to a line.
void printTask(Output& output, const ZTASK_ENG_Task& task);

// What happened to a text that was too long.
std::string sentence(const ulo::ShortenedText& text);

// One line for each task, as `list` prints it.
Table taskTable();
void addTo(Table& table, const ZTASK_ENG_Task& task);

}  // namespace ulotask
