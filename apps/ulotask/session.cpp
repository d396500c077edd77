#include "session.h"

#include "data_directory.h"
#include "exit_codes.h"

#include <QDateTime>

namespace ulotask {
namespace {

constexpr int statusNone = -1;
constexpr int statusNeedsAction = 1;

// The first task of a list can be changed by another program between two questions; then they
// are asked again.
constexpr int listAttempts = 10;

}  // namespace

ZTASK_ENG_Model& Session::store() {
  if (store_ == nullptr) {
    auto store = std::make_unique<ZTASK_ENG_Model>();
    int count = 0;
    if (store->getCount(count) == TASK_ENG_NOT_OPEN)
      throw Failure(Exit::storeClosed, "the store in \"" + ulo::dataDirectory() +
                                           "\" can't be opened; the log says why");
    store_ = std::move(store);
  }
  return *store_;
}

ZTASK_ENG_Task Session::task(unsigned int uid) {
  ZTASK_ENG_Task task;
  const int code = store().getTask(uid, task);
  if (code == TASK_ENG_NOT_FOUND)
    throw Failure(Exit::notFound, "no task has the UID " + std::to_string(uid));
  require(code, "reading task " + std::to_string(uid));
  return task;
}

QValueList<ZTASK_ENG_Task> Session::allTasks(ZTASK_ENG_Model::TASK_SORT_FIELD sort) {
  int code = TASK_ENG_OK;
  for (int attempt = 0; attempt < listAttempts; ++attempt) {
    QValueList<unsigned int> uids;
    require(store().getAllIDs(uids, ZTASK_ENG_Model::TASK_CATEGORY_ALL, sort), "listing the tasks");
    QValueList<ZTASK_ENG_Task> tasks;
    if (uids.isEmpty())
      return tasks;
    ZTASK_ENG_Task first;
    code = store().getTask(uids.at(0), first);
    if (code == TASK_ENG_OK)
      code = store().getTasks(tasks, first, static_cast<int>(uids.count()),
                              ZTASK_ENG_Model::TASK_CATEGORY_ALL, sort);
    if (code != TASK_ENG_NOT_FOUND) {
      require(code, "reading the tasks");
      return tasks;
    }
  }
  require(code, "reading the tasks, which change all the time,");
  return {};
}

int Session::add(ZTASK_ENG_Task& task) {
  if (task.getStatusValue() == statusNone)
    task.setStatus(statusNeedsAction);
  task.setDateTime(ZTASK_ENG_Task::TASK_FIELD_REVISION, QDateTime::currentDateTime());

  // Adding a task would make its category too, but would go on without one when that fails.
  QString category = task.getString(ZTASK_ENG_Task::TASK_FIELD_CATEGORY);
  if (!category.isNull() && !knownCategories_.contains(category)) {
    unsigned int uid = 0;
    const int code = store().addCategory(category, uid);
    if (code != TASK_ENG_OK && code != TASK_ENG_EXISTS)
      return code;
    knownCategories_.insert(category);
  }
  return store().addTask(task);
}

void require(int storeCode, const std::string& what) {
  if (storeCode == TASK_ENG_OK)
    return;
  if (storeCode == TASK_ENG_MEMORY_FULL)
    throw Failure(Exit::storeFull, what + " failed: the store is full");
  throw Failure(Exit::failed, what + " failed: the store answers " + std::to_string(storeCode) +
                                  "; the log says why");
}

}  // namespace ulotask
