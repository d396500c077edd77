#include "listing.h"

#include "UTIL_TimeConversion.h"
#include "exit_codes.h"
#include "session.h"
#include "store_questions.h"
#include "task_format.h"

#include <QDateTime>

#include <algorithm>
#include <limits>
#include <tuple>

namespace ulotask {
namespace {

// The task at which a page begins can be changed by another program between two questions; then
// they are asked again.
constexpr int pageAttempts = 10;

constexpr int unlimited = std::numeric_limits<int>::max();

unsigned int uidOf(const ZTASK_ENG_Task& task) {
  return task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID);
}

long dueOf(const ZTASK_ENG_Task& task) {
  return UTIL_TimeConversion::toUTC(task.getDateTime(ZTASK_ENG_Task::TASK_FIELD_DUE));
}

// Tasks with smaller keys come first in lists.
using Key = std::tuple<long, long, long>;
Key keyOf(const ZTASK_ENG_Task& task, ZTASK_ENG_Model::TASK_SORT_FIELD sort) {
  const long due = dueOf(task);
  const long priority = task.getPriorityValue();
  const long newestFirst = -static_cast<long>(uidOf(task));
  return sort == ZTASK_ENG_Model::TASK_SORT_DUE ? Key(due, priority, newestFirst)
                                                : Key(priority, due, newestFirst);
}

// Seconds since 1970; what is due before is due.
long endOfToday() {
  return UTIL_TimeConversion::toUTC(UTIL_TimeConversion::lastSecondOf(QDate::currentDate()));
}

bool shows(ZTASK_ENG_Model::TASK_CATEGORY view, const ZTASK_ENG_Task& task, long todayEnds) {
  switch (view) {
  case ZTASK_ENG_Model::TASK_CATEGORY_ALL:
    return true;
  case ZTASK_ENG_Model::TASK_CATEGORY_DUE:
    return dueOf(task) < todayEnds;
  case ZTASK_ENG_Model::TASK_CATEGORY_INCOMPLETE:
    return task.getStatusValue() == statusNeedsAction;
  case ZTASK_ENG_Model::TASK_CATEGORY_COMPLETED:
    break;
  }
  return task.getStatusValue() == statusCompleted;
}

// The first `limit` tasks in the order of their keys, of those behind the key `last`.
QValueList<ZTASK_ENG_Task> sorted(const QValueList<ZTASK_ENG_Task>& tasks,
                                  ZTASK_ENG_Model::TASK_SORT_FIELD sort,
                                  const std::optional<Key>& last, std::size_t limit) {
  std::vector<std::pair<Key, const ZTASK_ENG_Task*>> order;
  for (const ZTASK_ENG_Task& task : tasks) {
    const Key key = keyOf(task, sort);
    if (!last || key > *last)
      order.emplace_back(key, &task);
  }
  std::sort(order.begin(), order.end());
  order.resize(std::min(order.size(), limit));
  QValueList<ZTASK_ENG_Task> result;
  for (const auto& [key, task] : order)
    result.append(*task);
  return result;
}

QValueList<ZTASK_ENG_Task> tasksOfCategory(Session& session, const Listing& listing) {
  std::optional<Key> last;
  if (listing.after)
    last = keyOf(session.task(*listing.after), listing.sort);
  QValueList<ZTASK_ENG_Task> tasks;
  QString name = *listing.category;
  const int code = session.store().getTasks(tasks, name);
  if (code == TASK_ENG_NOT_FOUND)
    session.requireCategory(name);
  else
    require(code, "reading the tasks of a category");

  const long todayEnds = endOfToday();
  tasks.removeIf([&](const ZTASK_ENG_Task& task) { return !shows(listing.view, task, todayEnds); });
  return sorted(tasks, listing.sort, last,
                static_cast<std::size_t>(listing.limit.value_or(unlimited)));
}

// Whether `start` is stored where a page that begins at it has to find it.
bool isInPlace(Session& session, const ZTASK_ENG_Task& start,
               ZTASK_ENG_Model::TASK_SORT_FIELD sort) {
  ZTASK_ENG_Task stored;
  return session.store().getTask(uidOf(start), stored) == TASK_ENG_OK &&
         keyOf(stored, sort) == keyOf(start, sort);
}

// The page as the store knows it: it begins at a task, which belongs to it if the view shows it.
QValueList<ZTASK_ENG_Task> page(Session& session, const Listing& listing) {
  session.store();
  const StoreQuestions questions;
  const int limit = listing.limit.value_or(unlimited);
  const int count = listing.after && limit < unlimited ? limit + 1 : limit;
  int code = TASK_ENG_OK;
  for (int attempt = 0; attempt < pageAttempts; ++attempt) {
    const std::optional<unsigned int> first =
        listing.after ? listing.after : questions.firstTask(listing.sort);
    if (!first)
      return {};
    ZTASK_ENG_Task start;
    if (listing.after) {
      start = session.task(*first);
    } else if (code = session.store().getTask(*first, start); code == TASK_ENG_NOT_FOUND) {
      continue;
    } else {
      require(code, "reading the first task");
    }
    QValueList<ZTASK_ENG_Task> tasks;
    code = session.store().getTasks(tasks, start, count, listing.view, listing.sort);
    if (code == TASK_ENG_OK) {
      require(code, "reading the tasks");
      if (listing.after && uidOf(tasks[0]) == *listing.after)
        tasks.remove(tasks.begin());
      else if (listing.limit && tasks.count() > static_cast<uint>(limit))
        tasks.remove(tasks.end() - 1);
      return tasks;
    }
    if (code != TASK_ENG_NOT_FOUND)
      require(code, "reading the tasks");
    // Either nothing from there on passes the filter, or the task has moved.
    if (listing.view != ZTASK_ENG_Model::TASK_CATEGORY_ALL &&
        isInPlace(session, start, listing.sort))
      return {};
  }
  require(code, "reading the tasks, which change all the time,");
  return {};
}

}  // namespace

QValueList<ZTASK_ENG_Task> tasksOf(Session& session, const Listing& listing) {
  return listing.category ? tasksOfCategory(session, listing) : page(session, listing);
}

}  // namespace ulotask
