#include "task_texts.h"

#include "UTIL_DateTime.h"
#include "change_task.h"
#include "foreign_text.h"
#include "task_dates.h"
#include "ulo/texts.h"

#include <algorithm>

namespace tasks {

namespace {

// The categories that every store starts with.
struct DefaultCategory {
  const char* name;
  const char* id;
  const char* english;
};
constexpr DefaultCategory defaultCategories[] = {
    {"meeting", "TXT_RID_STANDARD_CATEGORY_MEETING", "Meeting"},
    {"vacation", "TXT_RID_STANDARD_CATEGORY_VACATION", "Vacation"},
    {"appointment", "TXT_RID_STANDARD_CATEGORY_APPOINTMENT", "Appointment"},
    {"party", "TXT_RID_STANDARD_CATEGORY_PARTY", "Party"},
};

// How a task repeats, in units that users choose.
struct RepetitionWords {
  ulo::Repetition::Unit unit;
  const char* onceId;
  const char* once;
  const char* severalId;
  const char* several;
};
constexpr RepetitionWords repetitionWords[] = {
    {ulo::Repetition::Unit::day, "TXT_RID_STANDARD_DAILY", "Daily", "FMT_RID_STANDARD_EVERY_1_DAYS",
     "Every %1 days"},
    {ulo::Repetition::Unit::week, "TXT_RID_STANDARD_WEEKLY", "Weekly",
     "FMT_RID_STANDARD_EVERY_1_WEEKS", "Every %1 weeks"},
    {ulo::Repetition::Unit::month, "TXT_RID_STANDARD_MONTHLY", "Monthly",
     "FMT_RID_STANDARD_EVERY_1_MONTHS", "Every %1 months"},
    {ulo::Repetition::Unit::year, "TXT_RID_STANDARD_YEARLY", "Yearly",
     "FMT_RID_STANDARD_EVERY_1_YEARS", "Every %1 years"},
};

// In characters; longer than any line of a screen.
constexpr qsizetype lineLimit = 512;

}  // namespace

QString shownText(const ulo::ShownAs& shown) {
  return ulo::text(shown.textId, shown.english);
}

QString titleText(const ZTASK_ENG_Task& task) {
  const QString line = ulo::oneLine(task.getString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY), lineLimit);
  return line.isEmpty() ? ulo::text("TXT_RID_STANDARD_UNTITLED", "Untitled") : line;
}

bool isNoCategory(const QString& name) {
  return name.isEmpty() || name == QLatin1String("none") || name == ulo::vanishedCategory;
}

QString categoryText(const QString& name) {
  if (isNoCategory(name))
    return ulo::text("TXT_RID_STANDARD_NO_CATEGORY", "No Category");
  const auto* const known =
      std::find_if(std::begin(defaultCategories), std::end(defaultCategories),
                   [&](const auto& entry) { return name == QLatin1String(entry.name); });
  if (known != std::end(defaultCategories))
    return ulo::text(known->id, known->english);
  return ulo::oneLine(name, lineLimit);
}

bool isOverdue(const ZTASK_ENG_Task& task, const QDate& today) {
  constexpr auto due = ZTASK_ENG_Task::TASK_FIELD_DUE;
  return !ulo::isCompleted(task) && ulo::hasDate(task, due) && task.getDateTime(due).date() < today;
}

QString dueText(const ZTASK_ENG_Task& task, const QDate& today) {
  const QDateTime due = task.getDateTime(ZTASK_ENG_Task::TASK_FIELD_DUE);
  return ulo::hasDate(due) ? dayText(due.date(), today) : QString();
}

QString dayText(const QDate& day, const QDate& today) {
  switch (today.daysTo(day)) {
  case -1:
    return ulo::text("TXT_RID_STANDARD_YESTERDAY", "Yesterday");
  case 0:
    return ulo::text("TXT_RID_STANDARD_TODAY", "Today");
  case 1:
    return ulo::text("TXT_RID_STANDARD_TOMORROW", "Tomorrow");
  default:
    return UTIL_DateTime::dateToString(day.startOfDay(), UTIL_DateTime::dateOnly);
  }
}

QString repetitionText(const ulo::Repetition& repetition) {
  if (repetition.unit == ulo::Repetition::Unit::none)
    return {};
  const auto* const words =
      std::find_if(std::begin(repetitionWords), std::end(repetitionWords),
                   [&](const RepetitionWords& each) { return each.unit == repetition.unit; });
  if (words == std::end(repetitionWords))
    return ulo::text("TXT_RID_STANDARD_REPEATS_YES", "Yes");
  return repetition.interval > 1
             ? ulo::text(words->severalId, words->several).arg(repetition.interval)
             : ulo::text(words->onceId, words->once);
}

QString descriptionText(const ZTASK_ENG_Task& task, const QDate& today) {
  QStringList parts;
  parts.append(shownText(ulo::shownState(ulo::isCompleted(task))));
  if (const QString due = dueText(task, today); !due.isEmpty())
    parts.append(due);
  if (isOverdue(task, today))
    parts.append(ulo::text("TXT_RID_STANDARD_OVERDUE", "Overdue"));
  if (const ulo::Priority priority = ulo::priorityOf(task); priority != ulo::Priority::normal)
    parts.append(shownText(ulo::entryOf(priority).shown));
  if (const QString name = task.getString(ZTASK_ENG_Task::TASK_FIELD_CATEGORY); !isNoCategory(name))
    parts.append(categoryText(name));
  return parts.join(QStringLiteral(", "));
}

}  // namespace tasks
