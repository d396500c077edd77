#include "listing.h"

#include "UTIL_TimeConversion.h"
#include "database.h"
#include "exit_codes.h"
#include "session.h"
#include "store_questions.h"
#include "task_pages.h"
#include "task_words.h"

#include <QDateTime>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <tuple>

namespace ulotask {
namespace {

constexpr int unlimited = std::numeric_limits<int>::max();

unsigned int uidOf(const ZTASK_ENG_Task& task) {
  return task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID);
}

long dueOf(const ZTASK_ENG_Task& task) {
  return UTIL_TimeConversion::toUTC(task.getInstant(ZTASK_ENG_Task::TASK_FIELD_DUE));
}

// Tasks with smaller keys come first in lists.
using Key = std::tuple<std::int64_t, std::int64_t, std::int64_t>;
Key keyOf(const ZTASK_ENG_Task& task, ZTASK_ENG_Model::TASK_SORT_FIELD sort) {
  const std::int64_t due = dueOf(task);
  const std::int64_t priority = task.getPriorityValue();
  const std::int64_t newestFirst = -std::int64_t{uidOf(task)};
  return sort == ZTASK_ENG_Model::TASK_SORT_DUE ? Key(due, priority, newestFirst)
                                                : Key(priority, due, newestFirst);
}

// In seconds since 1970. Tasks with earlier due dates are due.
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
    return task.getStatusValue() == codeOf(ulo::Status::needsAction);
  case ZTASK_ENG_Model::TASK_CATEGORY_COMPLETED:
    break;
  }
  return task.getStatusValue() == codeOf(ulo::Status::completed);
}

// Returns the first `limit` tasks after the key `last`, in the order of their keys.
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

// All tasks by due date. A match is one query, while a page takes the task that it begins at, too.
QValueList<ZTASK_ENG_Task> allTasks(Session& session) {
  ZTASK_ENG_Task anyTask;
  QValueList<ZTASK_ENG_Task> tasks;
  const int code = session.store().getMatchTasks(tasks, anyTask);
  if (code != TASK_ENG_NOT_FOUND)
    require(code, "reading the tasks");
  return tasks;
}

// Returns true if the listing is that of all tasks.
bool isComplete(const Listing& listing) {
  return listing.view == ZTASK_ENG_Model::TASK_CATEGORY_ALL &&
         listing.sort == ZTASK_ENG_Model::TASK_SORT_DUE && !listing.category && !listing.limit &&
         !listing.after;
}

// A page of the list, which begins at a task: the store leaves that out if the view does not show
// it.
QValueList<ZTASK_ENG_Task> page(Session& session, const Listing& listing) {
  std::optional<unsigned int> start = listing.after;
  if (start)
    session.task(*start);
  else
    start = StoreQuestions().firstTask(listing.sort);
  if (!start)
    return {};
  const int limit = listing.limit.value_or(unlimited);
  const int count = listing.after && limit < unlimited ? limit + 1 : limit;
  QValueList<ZTASK_ENG_Task> tasks;
  require(ulo::readPage(session.store(), *start, count, {listing.view, listing.sort}, tasks),
          "reading the tasks");
  if (listing.after && !tasks.isEmpty() && uidOf(tasks[0]) == *listing.after)
    tasks.remove(tasks.begin());
  tasks.truncate(static_cast<uint>(limit));
  return tasks;
}

}  // namespace

QValueList<ZTASK_ENG_Task> tasksOf(Session& session, const Listing& listing) {
  session.store();
  const ReadSnapshot snapshot;
  if (listing.category)
    return tasksOfCategory(session, listing);
  return isComplete(listing) ? allTasks(session) : page(session, listing);
}

}  // namespace ulotask
