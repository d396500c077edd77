// Stores a to-do that a program imports. (TASK_UI_VTodo and TASK_ENG_SyncML store received to-dos
// as they are, which is a contract.)
#pragma once

#include "ZTASK_ENG_Model.h"

#include <optional>
#include <vector>

namespace ulo {

// A text that was longer than the store accepts (ZTASK_ENG_Task::summaryLimit, noteLimit).
struct ShortenedText {
  ZTASK_ENG_Task::TASK_FIELD_T field;
  // In UTF-16 code units.
  qsizetype length;
  qsizetype kept;
};

// Shortens the field if its text is too long. Keeps whole grapheme clusters: a surrogate pair, or a
// letter and its combining marks, is kept or dropped as one. Fields without a limit are left alone.
std::optional<ShortenedText> shortenToLimit(ZTASK_ENG_Task& task,
                                            ZTASK_ENG_Task::TASK_FIELD_T field);

// Shortens the summary and the note if they are too long, and returns what was shortened.
std::vector<ShortenedText> shortenTexts(ZTASK_ENG_Task& task);

// Adds the task and its category in one transaction. Shortens texts that are too long and lists
// them in `shortened`, sets the status to "needs action" if the task has none, and sets the time of
// the change to now.
//
// Returns a result of the store; unless it is TASK_ENG_OK, nothing was stored.
int takeIn(ZTASK_ENG_Model& store, ZTASK_ENG_Task& task,
           std::vector<ShortenedText>* shortened = nullptr);

}  // namespace ulo
