#include "text_limits.h"

#include <algorithm>

namespace ulotask {
namespace {

struct Limited {
  ZTASK_ENG_Task::TASK_FIELD_T field;
  const char* name;
  int limit;
};
constexpr Limited limited[] = {
    {ZTASK_ENG_Task::TASK_FIELD_SUMMARY, "summary", ZTASK_ENG_Task::summaryLimit},
    {ZTASK_ENG_Task::TASK_FIELD_NOTE, "note", ZTASK_ENG_Task::noteLimit},
};

}  // namespace

std::optional<std::string> cutToLimit(ZTASK_ENG_Task& task, ZTASK_ENG_Task::TASK_FIELD_T field) {
  const auto* entry = std::find_if(std::begin(limited), std::end(limited),
                                   [&](const Limited& each) { return each.field == field; });
  const QString text = task.getString(field);
  if (entry == std::end(limited) || text.length() <= entry->limit)
    return std::nullopt;
  const bool splits =
      text[entry->limit - 1].isHighSurrogate() && text[entry->limit].isLowSurrogate();
  const int kept = splits ? entry->limit - 1 : entry->limit;
  task.setString(field, text.left(kept));
  return std::string("a ") + entry->name + " of " + std::to_string(text.length()) +
         " characters is cut to its first " + std::to_string(kept);
}

std::vector<std::string> cutToLimits(ZTASK_ENG_Task& task) {
  std::vector<std::string> cuts;
  for (const Limited& entry : limited) {
    if (std::optional<std::string> cut = cutToLimit(task, entry.field))
      cuts.push_back(std::move(*cut));
  }
  return cuts;
}

}  // namespace ulotask
