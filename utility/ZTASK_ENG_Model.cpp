// The log texts in this file are contracts: see docs/compatibility.md.
#include "ZTASK_ENG_Model.h"

#include "SVC_CT_ChangeReporter.h"
#include "UTIL_TimeConversion.h"
#include "clock.h"
#include "log_ports.h"
#include "module_log.h"
#include "store_steps.h"
#include "task_match.h"
#include "task_words.h"
#include "uuid.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <new>

namespace {

constexpr int storeDatabase = 1;

bool hasDate(const QDateTime& dateTime) {
  return UTIL_TimeConversion::toUTC(dateTime) != ZTASK_ENG_Task::noDateSeconds;
}

// A range of stored dates, which have 32 bits. A range beyond 32 bits becomes an empty one, whose
// end precedes its start.
struct StoredRange {
  StoredRange(std::int64_t first, std::int64_t last) {
    if (first > latest || last < earliest)
      return;
    from = static_cast<int>(std::max(first, earliest));
    to = static_cast<int>(std::min(last, latest));
  }

  static constexpr std::int64_t earliest = std::numeric_limits<int>::min();
  static constexpr std::int64_t latest = std::numeric_limits<int>::max();
  int from = std::numeric_limits<int>::max();
  int to = std::numeric_limits<int>::min();
};

int taskNotAdded(int databaseResult, LogPlace place = LogPlace::current()) {
  ULO_LOG_ERROR_AT(place, "AddTask failed! [ret=%d]", databaseResult);
  return changeFailed(databaseResult);
}

int taskNotUpdated(int databaseResult, LogPlace place = LogPlace::current()) {
  ULO_LOG_ERROR_AT(place, "UpdateTask failed! [ret=%d]", databaseResult);
  if (databaseResult == DB_FULL)
    ULO_LOG_ERROR_AT(place, "DB Memory full!");
  return changeFailed(databaseResult);
}

// Adds a category to the open store. Throws std::bad_alloc, after which nothing has been added.
int storeCategory(const QString& name, unsigned int& uid) {
  // If several programs add a name at once, the first adds it and the others find it.
  WriteScope write;
  unsigned int present = 0;
  const int found = findCategory(name, present);
  if (found == TASK_ENG_OK && static_cast<int>(present) > -1)
    return TASK_ENG_EXISTS;
  if (found != TASK_ENG_NOT_FOUND)
    return TASK_ENG_DATABASE_FAILURE;
  ParameterBlock block(1);
  if (!block)
    return noMemory();
  if (name.isNull())
    ULO_LOG_ERROR("the category is null");
  block.bindVarchar(0, name);
  int ret = write.result() == DB_OK ? block.exec(task_scripts::insertCategory) : write.result();
  if (ret == DB_OK)
    ret = write.keep();
  if (ret != DB_OK) {
    ULO_LOG_ERROR("AddCategory failed! [ret=%d]", ret);
    return changeFailed(ret);
  }
  uid = static_cast<unsigned int>(DB_GetTag());
  return TASK_ENG_OK;
}

}  // namespace

ZTASK_ENG_Model::ZTASK_ENG_Model() {
  openLogPorts();
  if (const int ret = DB_Open(storeDatabase); ret != DB_OK) {
    open_ = false;
    ULO_LOG_ERROR("Open db failed! [ret=%d]", ret);
  } else if (const int checked = checkTables(); checked != TASK_ENG_OK) {
    open_ = false;
    DB_Close();
    ULO_LOG_ERROR("Create task table failed! [ret=%d]", checked);
  }
  reporter_ = new (std::nothrow) SVC_CT_ChangeReporter;
  if (reporter_ == nullptr)
    ULO_LOG_ERROR("<<< changeReporter new is failing");
}

ZTASK_ENG_Model::~ZTASK_ENG_Model() {
  moduleLog(logTrace, "Entering function %s\n", "~ZTASK_ENG_Model");
  if (open_)
    DB_Close();
  delete reporter_;
  reporter_ = nullptr;
  closeLogPorts();
  moduleLog(logTrace, "Exiting function %s\n", "~ZTASK_ENG_Model");
}

bool ZTASK_ENG_Model::getTaskWritePath(QString& path) try {
  QDir directory(QFile::decodeName(std::getenv("ULO_APP_WRITE_PATH")));
  if (!directory.cd("tasks")) {
    if (!directory.mkdir("tasks")) {
      ULO_LOG_ERROR("Make dir tasks failed!!!");
      return false;
    }
    directory.cd("tasks");
  }
  path = directory.path();
  return true;
} catch (const std::bad_alloc&) {
  noMemory();
  return false;
}

int ZTASK_ENG_Model::checkTables() try {
  using Columns = task_scripts::TablesPresent;
  ResultRows rows;
  if (rows.query(task_scripts::checkTables) != DB_OK)
    return TASK_ENG_DATABASE_FAILURE;
  const bool haveTasks = rows.boolean(Columns::tasks);
  const bool haveCategories = rows.boolean(Columns::categories);
  rows.close();

  int result = TASK_ENG_OK;
  if (haveTasks) {
    ULO_LOG_ERROR("OK, DB task_table_task table do exit!");
  } else {
    ULO_LOG_ERROR("DB task_table_task table is not exit!Creating task table...");
    result = createTaskTable();
  }
  // A failure to create the task table is lost if the category table can be created: a contract.
  if (!haveCategories) {
    ULO_LOG_ERROR("DB task_table_category table is not exit!Creating event table...");
    return createCategoryTable();
  }

  ULO_LOG_ERROR("OK, DB task_table_category table do exit!Checking records in category table...");
  QValueList<QString> names;
  if (const int listed = getAllCategories(names); listed != TASK_ENG_OK) {
    ULO_LOG_ERROR("Get all categories failed when initialise db.");
    return listed;
  }
  ULO_LOG_ERROR("Checking complete, The record in category table is %d",
                static_cast<int>(names.count()));
  if (std::any_of(names.begin(), names.end(), [](const QString& name) { return name.isNull(); })) {
    ULO_LOG_ERROR("OK! the null category exists!!");
    return result;
  }
  if (names.isEmpty()) {
    ULO_LOG_ERROR("Attention Please, No record in category table!!!");
    ULO_LOG_ERROR("We have to add 'null' category to make calendar work!");
  }
  unsigned int uid = 0;
  const int added = storeCategory(QString(), uid);
  if (added == TASK_ENG_EXISTS) {
    ULO_LOG_ERROR("OK! the null category exists!!");
  } else if (added != TASK_ENG_OK) {
    ULO_LOG_ERROR("Add null category failed!! The db ret is %d", added);
    return added;
  }
  return result;
} catch (const std::bad_alloc&) {
  return noMemory();
}

// Without a reporter, programs that follow the changes find this one with the next. The change is
// stored: reporting it allocates nothing, so that it cannot fail.
void ZTASK_ENG_Model::report(unsigned int uid, int changeType) noexcept {
  if (reporter_ == nullptr)
    return;
  SVC_CT_ChangeRecord record;
  record.source = QByteArray::fromRawData(identifier, sizeof identifier - 1);
  record.uid = uid;
  record.changeType = changeType;
  reporter_->report(record, reporterHandle_);
}

int ZTASK_ENG_Model::addTask(ZTASK_ENG_Task& task) try {
  if (!open_)
    return TASK_ENG_NOT_OPEN;
  // No other program may add or remove the category before the task is stored.
  WriteScope write;
  if (write.result() != DB_OK)
    return taskNotAdded(write.result());
  const QString category = task.getString(ZTASK_ENG_Task::TASK_FIELD_CATEGORY);
  unsigned int categoryUid = 0;
  if (const int found = findCategory(category, categoryUid); found == TASK_ENG_NOT_FOUND) {
    ULO_LOG_ERROR("No such category!Add it to DB.");
    if (const int added = storeCategory(category, categoryUid); added != TASK_ENG_OK) {
      // The failure may have ended the transaction. The caller's transaction cannot be restarted.
      write.restart();
      if (write.result() != DB_OK) {
        taskNotAdded(write.result());
        return added;
      }
    }
  } else if (found != TASK_ENG_OK) {
    ULO_LOG_ERROR("Get category id failed!");
    return found;
  }
  if (task.getString(ZTASK_ENG_Task::TASK_FIELD_UUID).isNull())
    task.setString(ZTASK_ENG_Task::TASK_FIELD_UUID, generateUuid());

  ParameterBlock block(10);
  if (!block)
    return noMemory();
  bindPriorityToNote(block, 0, task);
  bindText(block, 3, task.getString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY));
  bindText(block, 4, task.getString(ZTASK_ENG_Task::TASK_FIELD_UUID));
  bindAlarmToRevision(block, 5, task, categoryUid);
  int ret = block.exec(task_scripts::insertTask);
  if (ret == DB_OK)
    ret = write.keep();
  if (ret != DB_OK)
    return taskNotAdded(ret);
  const auto uid = static_cast<unsigned int>(DB_GetTag());
  task.setUINT32(ZTASK_ENG_Task::TASK_FIELD_UID, uid);
  report(uid, SVC_CT_ADDED);
  return TASK_ENG_OK;
} catch (const std::bad_alloc&) {
  return noMemory();
}

int ZTASK_ENG_Model::getTask(unsigned int uid, ZTASK_ENG_Task& task) try {
  if (!open_)
    return TASK_ENG_NOT_OPEN;
  const ReadSnapshot snapshot;
  ResultRows rows;
  if (const int ret = rows.query(task_scripts::getTask, static_cast<int>(uid)); ret != DB_OK) {
    ULO_LOG_ERROR("GetTask failed! [ret=%d]", ret);
    return TASK_ENG_DATABASE_FAILURE;
  }
  if (DB_GetTag() == 0) {
    ULO_LOG_ERROR("The task with uid %d is not exist!", static_cast<int>(uid));
    return TASK_ENG_NOT_FOUND;
  }
  TaskReader<task_scripts::MarkedTask>(open_, rows).read(uid, task);
  return TASK_ENG_OK;
} catch (const std::bad_alloc&) {
  return noMemory();
}

int ZTASK_ENG_Model::updateTask(ZTASK_ENG_Task& task) try {
  if (!open_)
    return TASK_ENG_NOT_OPEN;
  // No other program may remove the category before the task is stored.
  WriteScope write;
  if (write.result() != DB_OK)
    return taskNotUpdated(write.result());
  const QDateTime now = engineNow();
  unsigned int categoryUid = 0;
  if (const int found =
          findCategory(task.getString(ZTASK_ENG_Task::TASK_FIELD_CATEGORY), categoryUid);
      found != TASK_ENG_OK) {
    ULO_LOG_ERROR("Get categoryid failed![ret=%d]", found);
    return found;
  }
  const bool ended = hasDate(task.getInstant(ZTASK_ENG_Task::TASK_FIELD_END));
  const int status = task.getStatusValue();
  if (status == codeOf(ulo::Status::completed) && !ended)
    task.setDateTime(ZTASK_ENG_Task::TASK_FIELD_END, now);
  else if (status == codeOf(ulo::Status::needsAction) && ended)
    task.setSeconds(ZTASK_ENG_Task::TASK_FIELD_END, ZTASK_ENG_Task::noDateSeconds);
  task.setDateTime(ZTASK_ENG_Task::TASK_FIELD_REVISION, now);

  ParameterBlock block(11);
  if (!block)
    return noMemory();
  const unsigned int uid = task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID);
  block.bindInteger(0, static_cast<int>(uid));
  bindPriorityToNote(block, 1, task);
  if (task.getString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY).isNull())
    ULO_LOG_ERROR("The summary isNull!!!");
  bindText(block, 4, task.getString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY));
  if (task.getString(ZTASK_ENG_Task::TASK_FIELD_UUID).isNull()) {
    task.setString(ZTASK_ENG_Task::TASK_FIELD_UUID, generateUuid());
    if (task.getString(ZTASK_ENG_Task::TASK_FIELD_UUID).isNull())
      ULO_LOG_ERROR("The uuid isNull!!!");
  }
  bindText(block, 5, task.getString(ZTASK_ENG_Task::TASK_FIELD_UUID));
  bindAlarmToRevision(block, 6, task, categoryUid);
  ResultRows rows;
  if (const int ret = block.query(rows, task_scripts::updateTask); ret != DB_OK)
    return taskNotUpdated(ret);
  if (!rows.boolean(task_scripts::Flag::flag)) {
    ULO_LOG_ERROR("The task with uid %d is not exist!", static_cast<int>(uid));
    return TASK_ENG_NOT_FOUND;
  }
  if (const int ret = write.keep(); ret != DB_OK)
    return taskNotUpdated(ret);
  report(uid, SVC_CT_UPDATED);
  return TASK_ENG_OK;
} catch (const std::bad_alloc&) {
  return noMemory();
}

int ZTASK_ENG_Model::removeTask(unsigned int uid) {
  if (!open_)
    return TASK_ENG_NOT_OPEN;
  ParameterBlock block(1);
  if (!block)
    return noMemory();
  block.bindInteger(0, static_cast<int>(uid));
  ResultRows rows;
  if (const int ret = block.query(rows, task_scripts::removeTask); ret != DB_OK) {
    ULO_LOG_ERROR("RemoveTask failed! [ret=%d]", ret);
    return TASK_ENG_DATABASE_FAILURE;
  }
  if (!rows.boolean(task_scripts::Flag::flag)) {
    ULO_LOG_ERROR("The task with uid %d is not exist!", static_cast<int>(uid));
    return TASK_ENG_NOT_FOUND;
  }
  report(uid, SVC_CT_REMOVED);
  return TASK_ENG_OK;
}

int ZTASK_ENG_Model::removeTasks(QValueList<unsigned int>& uids) {
  if (!open_)
    return TASK_ENG_NOT_OPEN;
  if (uids.isEmpty()) {
    ULO_LOG_ERROR("The parameter taskList is null!");
    return TASK_ENG_BAD_PARAMETER;
  }
  for (const unsigned int uid : uids) {
    if (removeTask(uid) != TASK_ENG_OK) {
      ULO_LOG_ERROR("Remove task with uid %d failed!", static_cast<int>(uid));
      return TASK_ENG_DATABASE_FAILURE;
    }
  }
  return TASK_ENG_OK;
}

int ZTASK_ENG_Model::addCategory(QString& name, unsigned int& uid) try {
  return open_ ? storeCategory(name, uid) : TASK_ENG_NOT_OPEN;
} catch (const std::bad_alloc&) {
  return noMemory();
}

int ZTASK_ENG_Model::renameCategory(QString& oldName, QString& newName) try {
  if (!open_)
    return TASK_ENG_NOT_OPEN;
  ParameterBlock block(2);
  if (!block)
    return noMemory();
  block.bindVarchar(0, oldName.toLower());
  block.bindVarchar(1, newName.toLower());
  if (const int ret = block.exec(task_scripts::renameCategory); ret != DB_OK) {
    ULO_LOG_ERROR("RenameCategory failed! [ret=%d]", ret);
    return changeFailed(ret);
  }
  return TASK_ENG_OK;
} catch (const std::bad_alloc&) {
  return noMemory();
}

int ZTASK_ENG_Model::removeCategory(QString& name, bool withTasks) try {
  if (!open_)
    return TASK_ENG_NOT_OPEN;
  if (withTasks) {
    unsigned int uid = 0;
    const int found = findCategory(name, uid);
    if (found == TASK_ENG_NOT_FOUND) {
      ULO_LOG_ERROR("No such category!!");
      return TASK_ENG_OK;
    }
    if (found != TASK_ENG_OK)
      return found;
    if (const int removed = removeTasksWithCategoryId(static_cast<int>(uid));
        removed != TASK_ENG_OK)
      return removed;
  }
  ParameterBlock block(1);
  if (!block)
    return noMemory();
  block.bindVarchar(0, name);
  if (const int ret = block.exec(task_scripts::removeCategory); ret != DB_OK) {
    ULO_LOG_ERROR("RemoveCategory failed! [ret=%d]", ret);
    return TASK_ENG_DATABASE_FAILURE;
  }
  return TASK_ENG_OK;
} catch (const std::bad_alloc&) {
  return noMemory();
}

int ZTASK_ENG_Model::removeTasksWithCategoryId(int categoryUid) {
  using Columns = task_scripts::FlagUid;
  if (!open_)
    return TASK_ENG_NOT_OPEN;
  ParameterBlock block(1);
  if (!block)
    return noMemory();
  block.bindInteger(0, categoryUid);
  ResultRows rows;
  if (const int ret = block.query(rows, task_scripts::removeTasksOfCategory); ret != DB_OK) {
    ULO_LOG_ERROR("RemoveAll failed! [ret=%d]", ret);
    DB_AbortTransaction();
    return changeFailed(ret);
  }
  if (rows.boolean(Columns::flag)) {
    rows.close();
    ULO_LOG_ERROR("No task with such category!");
    return TASK_ENG_OK;
  }
  QValueList<unsigned int> removed;
  try {
    for (; !rows.atEnd() && !rows.boolean(Columns::flag); rows.next())
      removed.append(rows.uid(Columns::uid));
  } catch (const std::bad_alloc&) {
    // All tasks are removed, and those without a report are in the journal.
    noMemory();
  }
  for (const unsigned int uid : removed)
    report(uid, SVC_CT_REMOVED);
  return TASK_ENG_OK;
}

int ZTASK_ENG_Model::getAllCategories(QValueList<QString>& names) try {
  using Columns = task_scripts::NameFlag;
  if (!open_)
    return TASK_ENG_NOT_OPEN;
  ResultRows rows;
  if (const int ret = rows.query(task_scripts::allCategories); ret != DB_OK) {
    ULO_LOG_ERROR("GetCategory failed! [ret=%d]", ret);
    return TASK_ENG_DATABASE_FAILURE;
  }
  if (!rows.boolean(Columns::flag)) {
    ULO_LOG_ERROR("The category table is empty!");
    return TASK_ENG_OK;
  }
  Growth growth(names);
  for (; !rows.atEnd() && rows.boolean(Columns::flag); rows.next())
    names.append(rows.varchar(Columns::name));
  growth.keep();
  return TASK_ENG_OK;
} catch (const std::bad_alloc&) {
  return noMemory();
}

int ZTASK_ENG_Model::getCount(int& count) {
  if (!open_)
    return TASK_ENG_NOT_OPEN;
  ResultRows rows;
  if (const int ret = rows.query(task_scripts::countTasks); ret != DB_OK) {
    ULO_LOG_ERROR("GetCount failed! [ret=%d]", ret);
    return TASK_ENG_DATABASE_FAILURE;
  }
  count = rows.integer(task_scripts::Count::count);
  return TASK_ENG_OK;
}

int ZTASK_ENG_Model::getCount(int& count, TASK_CATEGORY category) try {
  if (!open_) {
    count = 0;
    return TASK_ENG_NOT_OPEN;
  }
  if (category == TASK_CATEGORY_ALL)
    return getCount(count);
  const bool due = category == TASK_CATEGORY_DUE;
  ParameterBlock block(1);
  // With another filter, the query fails without a block: a contract.
  if (due && !block)
    return noMemory();
  bindFilter(block, 0, category);
  ResultRows rows;
  if (const int ret =
          block.query(rows, due ? task_scripts::countDueTasks : task_scripts::countTasksByStatus);
      ret != DB_OK) {
    ULO_LOG_ERROR("GetTasks failed! [ret=%d]", ret);
    return TASK_ENG_DATABASE_FAILURE;
  }
  count = rows.integer(task_scripts::Count::count);
  return TASK_ENG_OK;
} catch (const std::bad_alloc&) {
  return noMemory();
}

int ZTASK_ENG_Model::getAllIDs(QValueList<unsigned int>& ids) try {
  if (!open_)
    return TASK_ENG_NOT_OPEN;
  ResultRows rows;
  if (const int ret = rows.query(task_scripts::allUids); ret != DB_OK) {
    ULO_LOG_ERROR("GetAllIDs failed! [ret=%d]", ret);
    return TASK_ENG_DATABASE_FAILURE;
  }
  Growth growth(ids);
  for (; !rows.atEnd(); rows.next())
    ids.append(rows.uid(task_scripts::Uid::uid));
  growth.keep();
  return TASK_ENG_OK;
} catch (const std::bad_alloc&) {
  return noMemory();
}

int ZTASK_ENG_Model::getAllIDs(QValueList<unsigned int>& ids, TASK_CATEGORY category,
                               TASK_SORT_FIELD sort) try {
  using Columns = task_scripts::UidFlag;
  if (!open_)
    return TASK_ENG_NOT_OPEN;
  ResultRows rows;
  int ret = DB_OK;
  if (category == TASK_CATEGORY_ALL) {
    ret = rows.query(task_scripts::uidsInOrder, sortIndex(sort));
  } else {
    const bool due = category == TASK_CATEGORY_DUE;
    ParameterBlock block(1);
    if (due && !block)
      return noMemory();
    bindFilter(block, 0, category);
    ret = block.query(rows, due ? task_scripts::dueUids : task_scripts::uidsByStatus,
                      sortIndex(sort));
  }
  if (ret != DB_OK) {
    ULO_LOG_ERROR("GetTasks failed! [ret=%d]", ret);
    return TASK_ENG_DATABASE_FAILURE;
  }
  Growth growth(ids);
  // After the last row, the flag is false.
  for (; rows.boolean(Columns::flag); rows.next())
    ids.append(rows.uid(Columns::uid));
  growth.keep();
  return TASK_ENG_OK;
} catch (const std::bad_alloc&) {
  return noMemory();
}

int ZTASK_ENG_Model::removeAll() {
  if (!open_)
    return TASK_ENG_NOT_OPEN;
  DB_BeginTransaction(0);
  QValueList<unsigned int> uids;
  if (const int listed = getAllIDs(uids); listed != TASK_ENG_OK) {
    DB_AbortTransaction();
    ULO_LOG_ERROR("GetAllIDs failed! [ret=%d]", listed);
    return TASK_ENG_DATABASE_FAILURE;
  }
  if (uids.isEmpty()) {
    DB_AbortTransaction();
    return TASK_ENG_OK;
  }
  if (const int ret = DB_Exec(task_scripts::removeAllTasks); ret != DB_OK) {
    ULO_LOG_ERROR("RemoveAll failed! [ret=%d]", ret);
    DB_AbortTransaction();
    return changeFailed(ret);
  }
  DB_CommitTransaction();
  if (reporter_ == nullptr)
    return TASK_ENG_OK;
  reporter_->beginBatch(identifier);
  for (const unsigned int uid : uids)
    report(uid, SVC_CT_REMOVED);
  reporter_->endBatch(identifier);
  return TASK_ENG_OK;
}

int ZTASK_ENG_Model::getTasks(QValueList<ZTASK_ENG_Task>& tasks, ZTASK_ENG_Task::TASK_FIELD_T field,
                              long from, long to) try {
  if (from > to)
    return TASK_ENG_BAD_PARAMETER;
  const bool due = field == ZTASK_ENG_Task::TASK_FIELD_DUE;
  const char* index = due ? "task_index_due" : "task_index_end";
  const char* column = due ? "due" : "end";
  ParameterBlock block(2);
  if (!block)
    return noMemory();
  const StoredRange range(from, to);
  block.bindInteger(0, range.from);
  block.bindInteger(1, range.to);
  const ReadSnapshot snapshot;
  ResultRows rows;
  if (const int ret = block.query(rows, task_scripts::tasksInRange, index, column, column);
      ret != DB_OK) {
    ULO_LOG_ERROR("GetTasks failed! [ret=%d]", ret);
    return TASK_ENG_DATABASE_FAILURE;
  }
  if (rows.boolean(task_scripts::MarkedTask::flag))
    return TASK_ENG_NOT_FOUND;
  appendMarkedTasks(open_, rows, true, tasks);
  return TASK_ENG_OK;
} catch (const std::bad_alloc&) {
  return noMemory();
}

int ZTASK_ENG_Model::getTasks(QValueList<ZTASK_ENG_Task>& tasks, QString& category) try {
  const ReadSnapshot snapshot;
  unsigned int uid = 0;
  if (const int found = findCategory(category, uid); found != TASK_ENG_OK)
    return found;
  ParameterBlock block(1);
  if (!block)
    return noMemory();
  block.bindInteger(0, static_cast<int>(uid));
  ResultRows rows;
  if (const int ret = block.query(rows, task_scripts::tasksOfCategory); ret != DB_OK) {
    ULO_LOG_ERROR("GetTasks failed! [ret=%d]", ret);
    return TASK_ENG_DATABASE_FAILURE;
  }
  if (rows.boolean(task_scripts::MarkedTask::flag))
    return TASK_ENG_NOT_FOUND;
  appendMarkedTasks(open_, rows, true, tasks);
  return TASK_ENG_OK;
} catch (const std::bad_alloc&) {
  return noMemory();
}

int ZTASK_ENG_Model::getTasks(QValueList<ZTASK_ENG_Task>& tasks, ZTASK_ENG_Task& start, int count,
                              TASK_CATEGORY category, TASK_SORT_FIELD sort) try {
  if (!open_) {
    ULO_LOG_ERROR("DB is not alive!!!");
    return TASK_ENG_NOT_OPEN;
  }
  if (count <= 0) {
    ULO_LOG_ERROR("The parameter is wrong!");
    return TASK_ENG_BAD_PARAMETER;
  }
  const bool filtered = category != TASK_CATEGORY_ALL;
  ParameterBlock block(filtered ? 5 : 4);
  if (!block)
    return noMemory();
  const QDateTime due = start.getInstant(ZTASK_ENG_Task::TASK_FIELD_DUE);
  if (sort == TASK_SORT_DUE) {
    block.bindDate(0, due);
    block.bindInteger(1, start.getPriorityValue());
  } else {
    block.bindInteger(0, start.getPriorityValue());
    block.bindDate(1, due);
  }
  block.bindInteger(2, static_cast<int>(start.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID)));
  block.bindInteger(3, count);
  bindFilter(block, 4, category);
  const char* script = !filtered                       ? task_scripts::pageOfTasks
                       : category == TASK_CATEGORY_DUE ? task_scripts::pageOfDueTasks
                                                       : task_scripts::pageByStatus;
  const ReadSnapshot snapshot;
  ResultRows rows;
  const int ret = block.query(rows, script, sortIndex(sort));
  if (ret != DB_OK) {
    ULO_LOG_ERROR("GetTasks failed! [ret=%d]", ret);
    return TASK_ENG_DATABASE_FAILURE;
  }
  if (!rows.boolean(task_scripts::MarkedTask::flag)) {
    rows.close();
    ULO_LOG_ERROR("Record not found!! [ret=%d]", ret);
    return TASK_ENG_NOT_FOUND;
  }
  appendMarkedTasks(open_, rows, false, tasks);
  return TASK_ENG_OK;
} catch (const std::bad_alloc&) {
  return noMemory();
}

int ZTASK_ENG_Model::getMatchTasks(QValueList<ZTASK_ENG_Task>& tasks, QString& text) try {
  const ReadSnapshot snapshot;
  int count = 0;
  if (const int counted = getCount(count); counted != TASK_ENG_OK)
    return counted;
  if (count == 0)
    return TASK_ENG_NOT_FOUND;
  ResultRows rows;
  if (rows.query(task_scripts::allTasks) != DB_OK)
    return TASK_ENG_DATABASE_FAILURE;
  Growth growth(tasks);
  const TaskReader<task_scripts::PlainTask> reader(open_, rows);
  for (; !rows.atEnd(); rows.next()) {
    const bool isInRow = mentions(rows, text);
    const QString category = reader.category();
    if (isInRow || contains(category, text))
      reader.append(tasks, category);
  }
  growth.keep();
  return TASK_ENG_OK;
} catch (const std::bad_alloc&) {
  return noMemory();
}

int ZTASK_ENG_Model::getMatchTasks(QValueList<ZTASK_ENG_Task>& tasks, ZTASK_ENG_Task& example) try {
  const ReadSnapshot snapshot;
  int count = 0;
  if (const int counted = getCount(count); counted != TASK_ENG_OK)
    return counted;
  if (count == 0)
    return TASK_ENG_NOT_FOUND;
  const Example wanted(example);
  ResultRows rows;
  if (rows.query(task_scripts::allTasks) != DB_OK) {
    ULO_LOG_ERROR("GetTasks failed! [ret=%d]", TASK_ENG_DATABASE_FAILURE);
    return TASK_ENG_DATABASE_FAILURE;
  }
  tasks.removeIf([&wanted](const ZTASK_ENG_Task& task) { return !wanted.isMetBy(task); });
  Growth growth(tasks);
  const TaskReader<task_scripts::PlainTask> reader(open_, rows);
  for (; !rows.atEnd(); rows.next()) {
    const bool isMet = wanted.isMetBy(rows);
    const QString category = reader.category();
    if (isMet)
      reader.append(tasks, category);
  }
  growth.keep();
  return TASK_ENG_OK;
} catch (const std::bad_alloc&) {
  return noMemory();
}
