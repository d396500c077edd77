#include "take_in.h"

#include "change_task.h"
#include "foreign_text.h"
#include "task_words.h"

namespace ulo {
namespace {

// 0 for a field without a limit.
constexpr int limitOf(ZTASK_ENG_Task::TASK_FIELD_T field) {
  switch (field) {
  case ZTASK_ENG_Task::TASK_FIELD_SUMMARY:
    return ZTASK_ENG_Task::summaryLimit;
  case ZTASK_ENG_Task::TASK_FIELD_NOTE:
    return ZTASK_ENG_Task::noteLimit;
  default:
    return 0;
  }
}

}  // namespace

std::optional<ShortenedText> shortenToLimit(ZTASK_ENG_Task& task,
                                            ZTASK_ENG_Task::TASK_FIELD_T field) {
  const int limit = limitOf(field);
  if (limit == 0)
    return std::nullopt;
  const QString text = task.getString(field);
  if (text.size() <= limit)
    return std::nullopt;
  const QString beginning = wholeLetters(text, limit);
  task.setString(field, beginning);
  return ShortenedText{field, text.size(), beginning.size()};
}

std::vector<ShortenedText> shortenTexts(ZTASK_ENG_Task& task) {
  std::vector<ShortenedText> reports;
  for (const auto field : {ZTASK_ENG_Task::TASK_FIELD_SUMMARY, ZTASK_ENG_Task::TASK_FIELD_NOTE}) {
    if (const std::optional<ShortenedText> report = shortenToLimit(task, field))
      reports.push_back(*report);
  }
  return reports;
}

int takeIn(ZTASK_ENG_Model& store, ZTASK_ENG_Task& task, std::vector<ShortenedText>* shortened) {
  const std::vector<ShortenedText> reports = shortenTexts(task);
  if (task.getStatusValue() == codeOf(Status::none))
    task.setStatus(codeOf(Status::needsAction));
  setChangedNow(task);
  const int code = addTask(store, task);
  if (code == TASK_ENG_OK && shortened != nullptr)
    *shortened = reports;
  return code;
}

}  // namespace ulo
