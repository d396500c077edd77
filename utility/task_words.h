// The closed sets of a task record: its status and the class of its priority. This table is the one
// place for their codes, words, texts and icons.
#pragma once

#include "ZTASK_ENG_Task.h"

#include <algorithm>
#include <iterator>

namespace ulo {

// How the screens show an entry of a closed set.
struct ShownAs {
  const char* textId;   // for ulo::text
  const char* english;  // its default
  const char* icon;     // for RES_ICON_Reader
};

// The values are the codes of ZTASK_ENG_Task::getStatusValue. Any other code means needs action.
enum class Status : int {
  none = -1,  // a new record
  completed = 0,
  needsAction = 1,
  accepted = 2,
  sent = 3,
  tentative = 4,
  confirmed = 5,
  declined = 6,
  delegated = 7,
};

struct StatusEntry {
  Status status;
  const char* word;  // of vCalendar 1.0, in lower case
};
inline constexpr StatusEntry statuses[] = {
    {Status::completed, "completed"}, {Status::needsAction, "needs action"},
    {Status::accepted, "accepted"},   {Status::sent, "sent"},
    {Status::tentative, "tentative"}, {Status::confirmed, "confirmed"},
    {Status::declined, "declined"},   {Status::delegated, "delegated"},
};

// The screens distinguish two states, by isCompleted.
struct StateEntry {
  bool isCompleted;
  ShownAs shown;
};
inline constexpr StateEntry states[] = {
    {true, {"TXT_RID_STANDARD_COMPLETED", "Completed", "todo_task_complete_small.gif"}},
    {false, {"TXT_RID_STANDARD_INCOMPLETE", "Incomplete", "todo_task_incomplete_small.gif"}},
};

// The classes of priorities. The values are those of ZTASK_ENG_Task::getPriority.
enum class Priority : int { high = 1, normal = 5, low = 9 };

struct PriorityEntry {
  Priority priority;
  const char* word;
  ShownAs shown;
};
inline constexpr PriorityEntry priorities[] = {
    {Priority::high, "high", {"TXT_RID_SETTING_B_HIGH", "High", "todo_task_hi_pri_small.gif"}},
    {Priority::normal,
     "normal",
     {"TXT_RID_SETTING_B_NORMAL", "Normal", "todo_task_normal_pri_small.gif"}},
    {Priority::low, "low", {"TXT_RID_SETTING_B_LOW", "Low", "todo_task_lo_pri_small.gif"}},
};

// The order of the icons in TASK_UI_DetailView::loadPixmap.
inline constexpr const ShownAs* iconOrder[] = {&states[0].shown, &states[1].shown,
                                               &priorities[0].shown, &priorities[1].shown,
                                               &priorities[2].shown};

// The number that a record stores.
constexpr int codeOf(Status status) {
  return static_cast<int>(status);
}
constexpr int codeOf(Priority priority) {
  return static_cast<int>(priority);
}

// The entry of a status code; that of needs action for a code that has no word.
inline const StatusEntry& entryOf(int statusCode) {
  const auto find = [](int code) {
    return std::find_if(std::begin(statuses), std::end(statuses),
                        [=](const StatusEntry& entry) { return codeOf(entry.status) == code; });
  };
  const auto* const found = find(statusCode);
  return found == std::end(statuses) ? *find(codeOf(Status::needsAction)) : *found;
}

inline const PriorityEntry& entryOf(Priority priority) {
  return *std::find_if(std::begin(priorities), std::end(priorities),
                       [=](const PriorityEntry& entry) { return entry.priority == priority; });
}

inline const ShownAs& shownState(bool isCompleted) {
  return std::find_if(std::begin(states), std::end(states),
                      [=](const StateEntry& entry) { return entry.isCompleted == isCompleted; })
      ->shown;
}

inline bool isCompleted(const ZTASK_ENG_Task& task) {
  return task.getStatus() == codeOf(Status::completed);
}

inline Priority priorityOf(const ZTASK_ENG_Task& task) {
  return static_cast<Priority>(task.getPriority());
}

}  // namespace ulo
