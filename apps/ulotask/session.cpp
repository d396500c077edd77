#include "session.h"

#include "change_task.h"
#include "data_directory.h"
#include "exit_codes.h"
#include "task_format.h"
#include "write_transaction.h"

#include <QDateTime>

#include <algorithm>

namespace ulotask {
namespace {

constexpr int statusNone = -1;

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

int Session::add(ZTASK_ENG_Task& task) {
  if (task.getStatusValue() == statusNone)
    task.setStatus(statusNeedsAction);
  task.setDateTime(ZTASK_ENG_Task::TASK_FIELD_REVISION, QDateTime::currentDateTime());

  ZTASK_ENG_Model& opened = store();
  ulo::WriteTransaction transaction;
  if (!transaction)
    return ulo::storeCode(transaction.result());
  // Adding a task would make its category too, but would go on without one when that fails.
  int code = makeCategory(task.getString(ZTASK_ENG_Task::TASK_FIELD_CATEGORY));
  if (code == TASK_ENG_OK)
    code = opened.addTask(task);
  return code == TASK_ENG_OK ? ulo::storeCode(transaction.commit()) : code;
}

bool Session::hasCategory(const QString& name) {
  QValueList<QString> names;
  require(store().getAllCategories(names), "reading the categories");
  return std::any_of(names.begin(), names.end(), [&](const QString& each) {
    return each == name && each.isNull() == name.isNull();
  });
}

void Session::requireCategory(const QString& name) {
  if (!hasCategory(name))
    throw Failure(Exit::notFound, "no category has the name \"" + name.toStdString() + "\"");
}

int Session::makeCategory(const QString& name) {
  if (name.isNull() || knownCategories_.contains(name))
    return TASK_ENG_OK;
  const int code = ulo::ensureCategory(store(), name);
  if (code == TASK_ENG_OK)
    knownCategories_.insert(name);
  return code;
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
