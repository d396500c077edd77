#include "text_limits.h"

namespace ulotask {

std::vector<std::string> cutToLimits(ZTASK_ENG_Task& task) {
  struct Limited {
    ZTASK_ENG_Task::TASK_FIELD_T field;
    const char* name;
    int limit;
  };
  constexpr Limited limited[] = {
      {ZTASK_ENG_Task::TASK_FIELD_SUMMARY, "summary", ZTASK_ENG_Task::summaryLimit},
      {ZTASK_ENG_Task::TASK_FIELD_NOTE, "note", ZTASK_ENG_Task::noteLimit},
  };
  std::vector<std::string> cuts;
  for (const Limited& entry : limited) {
    const QString text = task.getString(entry.field);
    if (text.length() <= entry.limit)
      continue;
    task.setString(entry.field, text.left(entry.limit));
    cuts.push_back(std::string("a ") + entry.name + " of " + std::to_string(text.length()) +
                   " characters is cut to its first " + std::to_string(entry.limit));
  }
  return cuts;
}

}  // namespace ulotask
