// The log texts in this file are contracts: see docs/compatibility.md.
#include "store_steps.h"

#include "clock.h"

#include <QVarLengthArray>

namespace {

// In units. Texts up to this length are bound without heap memory.
constexpr int usualText = 512;

}  // namespace

int createTaskTable() {
  DB_BeginTransaction(0);
  bool created = DB_Exec(task_scripts::createTaskTable) == DB_OK;
  if (created) {
    for (const char* index : task_scripts::createTaskIndexes)
      created = execText(index) == DB_OK && created;
  }
  if (!created) {
    DB_AbortTransaction();
    return TASK_ENG_DATABASE_FAILURE;
  }
  DB_CommitTransaction();
  return TASK_ENG_OK;
}

int createCategoryTable(LogPlace place) {
  DB_BeginTransaction(0);
  if (DB_Exec(task_scripts::createCategoryTable) != DB_OK ||
      DB_Exec(task_scripts::createCategoryIndex) != DB_OK) {
    DB_AbortTransaction();
    return TASK_ENG_DATABASE_FAILURE;
  }
  DB_CommitTransaction();

  DB_BeginTransaction(0);
  if (const int ret = DB_Exec(task_scripts::insertNullCategory); ret != DB_OK) {
    ULO_LOG_ERROR_AT(place, "Insert null category failed!! The ret is %d", ret);
    DB_AbortTransaction();
    return TASK_ENG_DATABASE_FAILURE;
  }
  for (const char* name : task_scripts::defaultCategories)
    DB_Exec(task_scripts::insertDefaultCategory, name, "true");
  DB_CommitTransaction();
  return TASK_ENG_OK;
}

int noMemory(LogPlace place) {
  ULO_LOG_ERROR_AT(place, "Db memary is full!");
  return TASK_ENG_MEMORY_FULL;
}

int findCategory(const QString& name, unsigned int& uid, LogPlace place) {
  using Columns = task_scripts::FlagUid;
  ParameterBlock block(1);
  if (!block)
    return noMemory(place);
  block.bindVarchar(0, name);
  ResultRows rows;
  if (const int ret = block.query(rows, task_scripts::categoryUidByName); ret != DB_OK) {
    ULO_LOG_ERROR_AT(place, "GetCategoryId failed! [ret=%d]", ret);
    return TASK_ENG_DATABASE_FAILURE;
  }
  if (rows.boolean(Columns::flag)) {
    ULO_LOG_ERROR_AT(place, "The category %s is not exist!", name.toUtf8().constData());
    return TASK_ENG_NOT_FOUND;
  }
  uid = rows.uid(Columns::uid);
  return TASK_ENG_OK;
}

int findCategoryName(bool open, unsigned int uid, QString& name, LogPlace place) {
  if (!open)
    return TASK_ENG_NOT_OPEN;
  ParameterBlock block(1);
  if (!block)
    return noMemory(place);
  block.bindInteger(0, static_cast<int>(uid));
  ResultRows rows;
  if (const int ret = block.query(rows, task_scripts::categoryNameByUid); ret != DB_OK) {
    ULO_LOG_ERROR_AT(place, "GetCategory failed! [ret=%d]", ret);
    return TASK_ENG_DATABASE_FAILURE;
  }
  name = rows.varchar(task_scripts::Name::name);
  return TASK_ENG_OK;
}

void toExchangedUnits(const QString& text, unsigned short* units, LogPlace place) {
  if (text.isNull()) {
    ULO_LOG_ERROR_AT(place, "The qstring is null!");
    return;
  }
  for (const QChar character : text)
    *units++ = static_cast<unsigned short>(character.cell() << 8 | character.row());
  *units = 0;
}

void bindText(ParameterBlock& block, int index, const QString& text) {
  if (text.isNull()) {
    block.bindUnicode(index, nullptr);
    return;
  }
  QVarLengthArray<unsigned short, usualText + 1> units(text.length() + 1);
  toExchangedUnits(text, units.data());
  block.bindUnicode(index, units.constData());
}

void bindPriorityToNote(ParameterBlock& block, int first, const ZTASK_ENG_Task& task) {
  block.bindInteger(first, task.getPriorityValue());
  block.bindInteger(first + 1, task.getStatusValue());
  bindText(block, first + 2, task.getString(ZTASK_ENG_Task::TASK_FIELD_NOTE));
}

void bindAlarmToRevision(ParameterBlock& block, int first, const ZTASK_ENG_Task& task,
                         unsigned int categoryUid) {
  block.bindDate(first, task.getInstant(ZTASK_ENG_Task::TASK_FIELD_ALARM));
  block.bindDate(first + 1, task.getInstant(ZTASK_ENG_Task::TASK_FIELD_DUE));
  block.bindDate(first + 2, task.getInstant(ZTASK_ENG_Task::TASK_FIELD_END));
  block.bindInteger(first + 3, static_cast<int>(categoryUid));
  block.bindDate(first + 4, task.getInstant(ZTASK_ENG_Task::TASK_FIELD_REVISION));
}

void bindFilter(ParameterBlock& block, int index, ZTASK_ENG_Model::TASK_CATEGORY category) {
  switch (category) {
  case ZTASK_ENG_Model::TASK_CATEGORY_ALL:
    break;
  case ZTASK_ENG_Model::TASK_CATEGORY_DUE:
    block.bindDate(index, UTIL_TimeConversion::lastSecondOf(engineNow().date()));
    break;
  case ZTASK_ENG_Model::TASK_CATEGORY_INCOMPLETE:
    block.bindInteger(index, 1);
    break;
  default:
    block.bindInteger(index, 0);
  }
}

void appendMarkedTasks(bool open, ResultRows& rows, bool endMark, QValueList<ZTASK_ENG_Task>& tasks,
                       LogPlace place) {
  using Columns = task_scripts::MarkedTask;
  Growth growth(tasks);
  const TaskReader<Columns> reader(open, rows, place);
  for (; !rows.atEnd() && rows.boolean(Columns::flag) != endMark; rows.next())
    reader.append(tasks);
  growth.keep();
}
