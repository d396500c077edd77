#include "session.h"

#include "exit_codes.h"
#include "store_files.h"
#include "stored_text.h"
#include "ulo/data_directory.h"
#include "ulodb2.h"
#include "ulodb2_files.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace ulotask {
namespace {

std::string reasonOf(int result) {
  switch (result) {
  case DB_CORRUPT:
    return ": the file is damaged or not a store; try \"ulotask db rescue\", or \"ulotask db "
           "restore FILE\" with a backup";
  case DB_BUSY:
    return ": another program keeps it locked";
  case DB_OK:
    return "; \"ulotask db check\" examines it";
  default:
    return databaseReason();
  }
}

}  // namespace

void keepLine(void* text, const char* utf8) {
  *static_cast<std::string*>(text) = utf8;
}

Failure noTask(unsigned int uid) {
  return {Exit::notFound, "no task has the UID " + std::to_string(uid)};
}

std::string databaseReason() {
  const std::string said = DB_LastFailure();
  return said.empty() ? "; the log says why" : ": " + said;
}

Failure closedStore() {
  const std::string name = storeDirectoryName();
  if (name.empty())
    return {Exit::storeClosed, "cannot open the store: HOME is not set and ULO_DATA_DIR is empty"};
  const std::string closed = "the store in \"" + name + "\" can't be opened";
  if (ulo::dataDirectory().empty())
    return {Exit::storeClosed, closed + ": " + std::strerror(errno)};
  std::string lost;
  if (DB_FindLost(ulo::storeDatabase, keepLine, &lost) == DB_CORRUPT)
    return {Exit::storeClosed, closed + ": " + lost +
                                   "; try \"ulotask db rescue\", or \"ulotask db restore FILE\" "
                                   "with a backup"};
  const int result = DB_Open(ulo::storeDatabase);
  if (result == DB_OK)
    DB_Close();
  return {Exit::storeClosed, closed + reasonOf(result)};
}

ZTASK_ENG_Model& Session::store() {
  if (store_ == nullptr) {
    auto store = std::make_unique<ZTASK_ENG_Model>();
    int count = 0;
    if (store->getCount(count) == TASK_ENG_NOT_OPEN)
      throw closedStore();
    store_ = std::move(store);
  }
  return *store_;
}

std::size_t Session::countTasks() {
  int count = 0;
  require(store().getCount(count), "counting the tasks");
  return static_cast<std::size_t>(count);
}

ZTASK_ENG_Task Session::task(unsigned int uid) {
  ZTASK_ENG_Task task;
  const int code = store().getTask(uid, task);
  if (code == TASK_ENG_NOT_FOUND)
    throw noTask(uid);
  require(code, "reading task " + std::to_string(uid));
  return task;
}

QString Session::repetition(unsigned int uid) {
  store();
  ulo::Repetition repetition;
  require(ulo::readRepetition(uid, repetition),
          "reading how task " + std::to_string(uid) + " repeats");
  return ulo::englishText(repetition);
}

void Session::inTransaction(const std::string& what, const std::function<void()>& work,
                            ulo::WriteTransaction::Changes changes) {
  store();
  ulo::WriteTransaction transaction(changes);
  requireDatabase(transaction.result(), what);
  work();
  requireDatabase(transaction.commit(), what);
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

Failure noRoom(const std::string& what) {
  if (DB_LastResult() == DB_FULL)
    return {Exit::storeFull, what + ": the store is full" + databaseReason()};
  return {Exit::failed, what + ": memory is exhausted"};
}

void require(int storeCode, const std::string& what) {
  if (storeCode == TASK_ENG_OK && DB_LastResult() != DB_NO_MEMORY)
    return;
  if (storeCode == TASK_ENG_MEMORY_FULL)
    throw noRoom(what + " failed");
  throw Failure(Exit::failed, what + " failed: the store returned " + std::to_string(storeCode) +
                                  databaseReason());
}

void requireDatabase(int result, const std::string& what) {
  switch (result) {
  case DB_OK:
    return;
  case DB_FULL:
    throw Failure(Exit::storeFull, what + " failed: the store is full" + databaseReason());
  case DB_BUSY:
    throw Failure(Exit::failed, what + " failed: another program keeps the store locked");
  default:
    throw Failure(Exit::failed, what + " failed: the database returned " + std::to_string(result) +
                                    databaseReason());
  }
}

}  // namespace ulotask
