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
Records sorted(const Records& tasks, ZTASK_ENG_Model::TASK_SORT_FIELD sort,
               const std::optional<Key>& last, std::size_t limit) {
  std::vector<std::pair<Key, const ZTASK_ENG_Task*>> order;
  for (const ZTASK_ENG_Task& task : tasks) {
    const Key key = keyOf(task, sort);
    if (!last || key > *last)
      order.emplace_back(key, &task);
  }
  std::sort(order.begin(), order.end());
  order.resize(std::min(order.size(), limit));
  Records result;
  for (const auto& [key, task] : order)
    result.append(*task);
  return result;
}

Records tasksOfCategory(Session& session, const Listing& listing) {
  std::optional<Key> last;
  if (listing.after)
    last = keyOf(session.task(*listing.after), listing.sort);
  Records tasks;
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

// Returns true if the listing is that of all tasks, and these are not more than a page has.
bool isOnePage(Session& session, const Listing& listing) {
  if (listing.view != ZTASK_ENG_Model::TASK_CATEGORY_ALL ||
      listing.sort != ZTASK_ENG_Model::TASK_SORT_DUE || listing.limit || listing.after)
    return false;
  return session.countTasks() <= std::size_t{pageSize};
}

// All tasks by due date. A match is one query, while a page takes the task that it begins at, too.
Records allTasks(Session& session) {
  ZTASK_ENG_Task anyTask;
  Records tasks;
  const int code = session.store().getMatchTasks(tasks, anyTask);
  if (code != TASK_ENG_NOT_FOUND)
    require(code, "reading the tasks");
  return tasks;
}

// A page that begins at a task contains that one only if the view shows it.
void forEachPageOfView(Session& session, const Listing& listing, const PageVisitor& visit) {
  std::optional<unsigned int> last = listing.after;
  if (last)
    session.task(*last);
  const std::optional<unsigned int> first = last ? last : StoreQuestions().firstTask(listing.sort);
  if (!first)
    return;
  int left = listing.limit.value_or(unlimited);
  for (int wanted = std::min(left, pageSize); wanted > 0; wanted = std::min(left, pageSize)) {
    Records page;
    require(ulo::readPage(session.store(), last.value_or(*first), last ? wanted + 1 : wanted,
                          {listing.view, listing.sort}, page),
            "reading the tasks");
    if (last && !page.isEmpty() && uidOf(page[0]) == *last)
      page.remove(page.begin());
    page.truncate(static_cast<uint>(wanted));
    if (page.isEmpty())
      return;
    const int count = static_cast<int>(page.count());
    left = count < wanted ? 0 : left - count;
    last = uidOf(page[page.count() - 1]);
    visit(page);
  }
}

}  // namespace

void forEachPage(Session& session, const Listing& listing, const PageVisitor& visit) {
  session.store();
  const ReadSnapshot snapshot;
  if (listing.category)
    visit(tasksOfCategory(session, listing));
  else if (isOnePage(session, listing))
    visit(allTasks(session));
  else
    forEachPageOfView(session, listing, visit);
}

void forEachPageByUid(Session& session, const PageVisitor& visit) {
  session.store();
  const ReadSnapshot snapshot;
  const StoreQuestions questions;
  StoreQuestions::CategoryNames names;
  unsigned int last = 0;
  while (true) {
    const Records page = questions.tasksAfter(last, pageSize, names);
    if (page.isEmpty())
      return;
    last = uidOf(page[page.count() - 1]);
    visit(page);
  }
}

}  // namespace ulotask
