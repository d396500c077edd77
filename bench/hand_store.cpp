#include "hand_store.h"

#include <QDateTime>

#include <algorithm>
#include <ctime>
#include <deque>
#include <stdexcept>
#include <utility>

namespace bench {
namespace {

constexpr int noDate = ZTASK_ENG_Task::noDateSeconds;
constexpr int busyTimeoutMs = 10000;

#define ULO_BENCH_COLUMNS                                                                          \
  "t.UID, t.priority, t.status, t.note, t.summary, t.uuid, t.alarm, t.due, t.\"end\", "            \
  "t.revision, t.categoryUid"
#define ULO_BENCH_TASKS "SELECT " ULO_BENCH_COLUMNS " FROM task_table_task t"
#define ULO_BENCH_BY_DUE " ORDER BY due, priority, UID DESC"
#define ULO_BENCH_BY_PRIORITY " ORDER BY priority, due, UID DESC"
constexpr int nameColumn = 11;
// The ranges of an index from which a page is read; see stretchSql.
constexpr int stretchCount = 3;

int seconds(const QDateTime& dateTime) {
  return static_cast<int>(dateTime.toSecsSinceEpoch());
}

int endOfToday() {
  QDateTime today = QDateTime::currentDateTime();
  today.setTime(QTime(23, 59, 59, 999));
  return seconds(today);
}

int statusOf(View view) {
  return view == ZTASK_ENG_Model::TASK_CATEGORY_INCOMPLETE ? 1 : 0;
}

bool isDue(View view) {
  return view == ZTASK_ENG_Model::TASK_CATEGORY_DUE;
}

// Reads all fields except the category's name.
void readFields(const Run& row, Task& task) {
  task.setUINT32(Task::TASK_FIELD_UID, static_cast<unsigned int>(row.integer(0)));
  task.setPriority(row.integer(1));
  task.setStatus(row.integer(2));
  task.setString(Task::TASK_FIELD_NOTE, row.text(3));
  task.setString(Task::TASK_FIELD_SUMMARY, row.text(4));
  task.setString(Task::TASK_FIELD_UUID, row.text(5));
  task.setSeconds(Task::TASK_FIELD_ALARM, row.integer(6));
  task.setSeconds(Task::TASK_FIELD_DUE, row.integer(7));
  task.setSeconds(Task::TASK_FIELD_END, row.integer(8));
  task.setSeconds(Task::TASK_FIELD_REVISION, row.integer(9));
}

std::string idsSql(View view, Sort sort) {
  const std::string filter = view == ZTASK_ENG_Model::TASK_CATEGORY_ALL ? ""
                             : isDue(view)                              ? " WHERE due < ?"
                                                                        : " WHERE status = ?";
  return "SELECT UID FROM task_table_task" + filter +
         (sort == ZTASK_ENG_Model::TASK_SORT_DUE ? ULO_BENCH_BY_DUE : ULO_BENCH_BY_PRIORITY);
}

// A page is read from up to three ranges of the index: the remaining rows with the key of the
// start, the remaining rows with the key's first column, and all following rows. Each is one seek.
std::string stretchSql(View view, Sort sort, int stretch) {
  const bool byDue = sort == ZTASK_ENG_Model::TASK_SORT_DUE;
  const std::string first = byDue ? "due" : "priority";
  const std::string second = byDue ? "priority" : "due";
  std::string sql = ULO_BENCH_TASKS " WHERE ";
  switch (stretch) {
  case 0:
    sql += first + " = ?1 AND " + second + " = ?2 AND UID <= ?3";
    break;
  case 1:
    sql += first + " = ?1 AND " + second + " > ?2";
    break;
  default:
    sql += first + " > ?1";
  }
  if (view != ZTASK_ENG_Model::TASK_CATEGORY_ALL)
    sql += isDue(view) ? " AND due < ?5" : " AND status = ?5";
  return sql + (byDue ? ULO_BENCH_BY_DUE : ULO_BENCH_BY_PRIORITY) + " LIMIT ?4";
}

// The operands of a search by example, read from the record once.
struct Wanted {
  explicit Wanted(const Task& example)
      : due(seconds(example.getDateTime(Task::TASK_FIELD_DUE))),
        end(seconds(example.getDateTime(Task::TASK_FIELD_END))),
        priority(example.getPriorityValue()), status(example.getStatusValue()),
        note(example.getString(Task::TASK_FIELD_NOTE)),
        summary(example.getString(Task::TASK_FIELD_SUMMARY)) {}

  [[nodiscard]] bool isIn(const Run& row, const Task& task) const {
    return (due == noDate || row.integer(7) == due) && (end == noDate || row.integer(8) == end) &&
           (priority == 0 || row.integer(1) == priority) &&
           (status == -1 || row.integer(2) == status) && has(task, Task::TASK_FIELD_NOTE, note) &&
           has(task, Task::TASK_FIELD_SUMMARY, summary);
  }
  static bool has(const Task& task, Field field, const QString& text) {
    return text.isEmpty() || task.getString(field).contains(text, Qt::CaseInsensitive);
  }

  int due;
  int end;
  int priority;
  int status;
  QString note;
  QString summary;
};

bool mentions(const Task& task, const QString& text) {
  for (const Field field : {Task::TASK_FIELD_CATEGORY, Task::TASK_FIELD_NOTE,
                            Task::TASK_FIELD_SUMMARY, Task::TASK_FIELD_UUID})
    if (const QString value = task.getString(field); !value.isEmpty() && value.contains(text))
      return true;
  return false;
}

}  // namespace

// All statements of the store, each prepared at its first use.
struct HandStore::Statements {
  explicit Statements(const Database& opened) : database(opened) {
    for (const Sort sort : {ZTASK_ENG_Model::TASK_SORT_DUE, ZTASK_ENG_Model::TASK_SORT_PRIORITY})
      for (const View view :
           {ZTASK_ENG_Model::TASK_CATEGORY_ALL, ZTASK_ENG_Model::TASK_CATEGORY_DUE,
            ZTASK_ENG_Model::TASK_CATEGORY_INCOMPLETE}) {
        idLists.emplace_back(database, idsSql(view, sort));
        for (int stretch = 0; stretch < stretchCount; ++stretch)
          stretches.emplace_back(database, stretchSql(view, sort, stretch));
      }
  }
  // The two views by status share their statements.
  static std::size_t place(View view, Sort sort) {
    return static_cast<std::size_t>(sort) * 3 + std::min<std::size_t>(view, 2);
  }
  KeptStatement& ids(View view, Sort sort) { return idLists[place(view, sort)]; }
  KeptStatement& stretch(View view, Sort sort, int number) {
    return stretches[place(view, sort) * stretchCount + static_cast<std::size_t>(number)];
  }

  const Database& database;
  KeptStatement begin{database, "BEGIN"};
  KeptStatement beginWrite{database, "BEGIN IMMEDIATE"};
  KeptStatement commit{database, "COMMIT"};

  KeptStatement tablesPresent{database,
                              "SELECT count(*) FROM sqlite_schema WHERE type = 'table' AND "
                              "name IN ('task_table_task', 'task_table_category')"};
  KeptStatement nullCategory{database,
                             "SELECT 1 FROM task_table_category WHERE name IS NULL LIMIT 1"};

  KeptStatement categoryUid{
      database, "SELECT UID FROM task_table_category WHERE name IS ? ORDER BY UID LIMIT 1"};
  KeptStatement categoryName{database, "SELECT name FROM task_table_category WHERE UID = ?"};
  KeptStatement insertCategory{database,
                               "INSERT INTO task_table_category (name, flag) VALUES (?, 0)"};

  KeptStatement insertTask{
      database, "INSERT INTO task_table_task (priority, status, note, summary, uuid, alarm, due, "
                "\"end\", revision, categoryUid) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"};
  KeptStatement getTask{database, ULO_BENCH_TASKS " WHERE UID = ?"};
  KeptStatement updateTask{
      database, "UPDATE task_table_task SET priority = ?, status = ?, note = ?, summary = ?, "
                "alarm = ?, due = ?, \"end\" = ?, revision = ?, categoryUid = ? WHERE UID = ?"};
  KeptStatement removeTask{database, "DELETE FROM task_table_task WHERE UID = ?"};
  KeptStatement removeAll{database, "DELETE FROM task_table_task"};

  KeptStatement count{database, "SELECT count(*) FROM task_table_task"};
  KeptStatement countDue{database, "SELECT count(*) FROM task_table_task WHERE due <= ?"};
  KeptStatement countByStatus{database, "SELECT count(*) FROM task_table_task WHERE status = ?"};
  KeptStatement allIds{database, "SELECT UID FROM task_table_task ORDER BY UID"};
  std::deque<KeptStatement> idLists;

  KeptStatement rangeByDue{database,
                           ULO_BENCH_TASKS " WHERE due >= ? AND due <= ?" ULO_BENCH_BY_DUE};
  KeptStatement rangeByEnd{database, ULO_BENCH_TASKS
                           " WHERE \"end\" >= ? AND \"end\" <= ? ORDER BY \"end\", UID DESC"};
  KeptStatement ofCategory{database, ULO_BENCH_TASKS " WHERE categoryUid = ? ORDER BY UID"};
  KeptStatement all{database, ULO_BENCH_TASKS ULO_BENCH_BY_DUE};
  KeptStatement allJoined{database, "SELECT " ULO_BENCH_COLUMNS
                                    ", iif(c.UID IS NULL, 'None', c.name) FROM task_table_task t "
                                    "LEFT JOIN task_table_category c ON c.UID = t.categoryUid "
                                    "ORDER BY t.due, t.priority, t.UID DESC"};

  KeptStatement exists{database,
                       "SELECT 1 FROM task_table_task WHERE UID = ? AND due = ? AND priority = ?"};
  std::deque<KeptStatement> stretches;
};

// HandStore

HandStore::HandStore(const std::string& directory)
    : database_(openDatabase(directory + "/tasks.db")),
      sql_(std::make_unique<Statements>(database_)) {
  sqlite3_busy_timeout(database_.get(), busyTimeoutMs);
  execute(database_, "PRAGMA encoding = 'UTF-16'; PRAGMA journal_mode = WAL; "
                     "PRAGMA synchronous = FULL");
  Run tables(sql_->tablesPresent);
  if (!tables.step() || tables.integer(0) != 2)
    throw std::runtime_error("there is no store in " + directory);
  if (!Run(sql_->nullCategory).step())
    insertCategory(QString());
}

HandStore::~HandStore() = default;

std::optional<int> HandStore::categoryUid(const QString& name) {
  Run run(sql_->categoryUid);
  return run.bind(1, name).step() ? std::optional(run.integer(0)) : std::nullopt;
}

QString HandStore::categoryName(int uid) {
  Run run(sql_->categoryName);
  return run.bind(1, uid).step() ? run.text(0) : QStringLiteral("None");
}

void HandStore::insertCategory(const QString& name) {
  Run(sql_->insertCategory).bind(1, name).step();
}

int HandStore::insert(const Task& task, int categoryUid) {
  const QString note = task.getString(Task::TASK_FIELD_NOTE);
  const QString summary = task.getString(Task::TASK_FIELD_SUMMARY);
  const QString uuid = task.getString(Task::TASK_FIELD_UUID);
  Run(sql_->insertTask)
      .bind(1, task.getPriorityValue())
      .bind(2, task.getStatusValue())
      .bind(3, note)
      .bind(4, summary)
      .bind(5, uuid)
      .bind(6, seconds(task.getDateTime(Task::TASK_FIELD_ALARM)))
      .bind(7, seconds(task.getDateTime(Task::TASK_FIELD_DUE)))
      .bind(8, seconds(task.getDateTime(Task::TASK_FIELD_END)))
      .bind(9, seconds(task.getDateTime(Task::TASK_FIELD_REVISION)))
      .bind(10, categoryUid)
      .step();
  return static_cast<int>(sqlite3_last_insert_rowid(database_.get()));
}

void HandStore::add(Task& task) {
  const QString category = task.getString(Task::TASK_FIELD_CATEGORY);
  std::optional<int> categoryOf = categoryUid(category);
  if (!categoryOf) {
    insertCategory(category);
    categoryOf = static_cast<int>(sqlite3_last_insert_rowid(database_.get()));
  }
  const auto uid = static_cast<unsigned int>(insert(task, *categoryOf));
  task.setUINT32(Task::TASK_FIELD_UID, uid);
}

void HandStore::read(const Run& row, Task& task) {
  readFields(row, task);
  task.setString(Task::TASK_FIELD_CATEGORY, categoryName(row.integer(10)));
}

void HandStore::readAll(Run& rows, Tasks& tasks) {
  while (rows.step()) {
    Task task;
    read(rows, task);
    tasks.append(task);
  }
}

bool HandStore::get(unsigned int uid, Task& task) {
  Run run(sql_->getTask);
  if (!run.bind(1, uid).step())
    return false;
  read(run, task);
  return true;
}

bool HandStore::update(Task& task) {
  const QDateTime now = QDateTime::currentDateTime();
  const std::optional<int> category = categoryUid(task.getString(Task::TASK_FIELD_CATEGORY));
  if (!category)
    return false;
  const bool ended = seconds(task.getDateTime(Task::TASK_FIELD_END)) != noDate;
  if (task.getStatusValue() == 0 && !ended)
    task.setDateTime(Task::TASK_FIELD_END, now);
  else if (task.getStatusValue() == 1 && ended)
    task.setDateTime(Task::TASK_FIELD_END, Task::noDate());
  task.setDateTime(Task::TASK_FIELD_REVISION, now);

  const unsigned int uid = task.getUINT32(Task::TASK_FIELD_UID);
  const QString note = task.getString(Task::TASK_FIELD_NOTE);
  const QString summary = task.getString(Task::TASK_FIELD_SUMMARY);
  Run(sql_->updateTask)
      .bind(1, task.getPriorityValue())
      .bind(2, task.getStatusValue())
      .bind(3, note)
      .bind(4, summary)
      .bind(5, seconds(task.getDateTime(Task::TASK_FIELD_ALARM)))
      .bind(6, seconds(task.getDateTime(Task::TASK_FIELD_DUE)))
      .bind(7, seconds(task.getDateTime(Task::TASK_FIELD_END)))
      .bind(8, seconds(task.getDateTime(Task::TASK_FIELD_REVISION)))
      .bind(9, *category)
      .bind(10, uid)
      .step();
  if (sqlite3_changes(database_.get()) == 0)
    return false;
  return true;
}

bool HandStore::remove(unsigned int uid) {
  Run(sql_->removeTask).bind(1, uid).step();
  if (sqlite3_changes(database_.get()) == 0)
    return false;
  return true;
}

void HandStore::removeAll() {
  Run(sql_->beginWrite).step();
  Uids uids;
  ids(uids);
  Run(sql_->removeAll).step();
  Run(sql_->commit).step();
}

int HandStore::count() {
  Run run(sql_->count);
  run.step();
  return run.integer(0);
}

int HandStore::count(View view) {
  if (view == ZTASK_ENG_Model::TASK_CATEGORY_ALL)
    return count();
  Run run(isDue(view) ? sql_->countDue : sql_->countByStatus);
  run.bind(1, isDue(view) ? endOfToday() : statusOf(view)).step();
  return run.integer(0);
}

void HandStore::ids(Uids& uids) {
  Run run(sql_->allIds);
  while (run.step())
    uids.append(static_cast<unsigned int>(run.integer(0)));
}

void HandStore::ids(Uids& uids, View view, Sort sort) {
  Run run(sql_->ids(view, sort));
  if (view != ZTASK_ENG_Model::TASK_CATEGORY_ALL)
    run.bind(1, isDue(view) ? endOfToday() : statusOf(view));
  while (run.step())
    uids.append(static_cast<unsigned int>(run.integer(0)));
}

bool HandStore::range(Tasks& tasks, Field field, int from, int to) {
  Run run(field == Task::TASK_FIELD_DUE ? sql_->rangeByDue : sql_->rangeByEnd);
  run.bind(1, from).bind(2, to);
  const uint before = tasks.count();
  readAll(run, tasks);
  return tasks.count() > before;
}

bool HandStore::ofCategory(Tasks& tasks, const QString& category) {
  const std::optional<int> uid = categoryUid(category);
  if (!uid)
    return false;
  Run run(sql_->ofCategory);
  run.bind(1, *uid);
  const uint before = tasks.count();
  readAll(run, tasks);
  return tasks.count() > before;
}

bool HandStore::exists(unsigned int uid, int due, int priority) {
  return Run(sql_->exists).bind(1, uid).bind(2, due).bind(3, priority).step();
}

bool HandStore::page(Tasks& tasks, const Task& start, int count, View view, Sort sort) {
  const unsigned int uid = start.getUINT32(Task::TASK_FIELD_UID);
  const int due = seconds(start.getDateTime(Task::TASK_FIELD_DUE));
  const int priority = start.getPriorityValue();
  const bool byDue = sort == ZTASK_ENG_Model::TASK_SORT_DUE;
  const bool filtered = view != ZTASK_ENG_Model::TASK_CATEGORY_ALL;
  const int wanted = !filtered ? 0 : isDue(view) ? endOfToday() : statusOf(view);
  const uint end = tasks.count() + static_cast<uint>(count);
  const uint before = tasks.count();

  // Reads everything from one state of the file.
  Run(sql_->begin).step();
  if (exists(uid, due, priority)) {
    for (int stretch = 0; stretch < stretchCount && tasks.count() < end; ++stretch) {
      Run run(sql_->stretch(view, sort, stretch));
      run.bind(1, byDue ? due : priority).bind(4, end - tasks.count());
      if (stretch < 2)
        run.bind(2, byDue ? priority : due);
      if (stretch == 0)
        run.bind(3, uid);
      if (filtered)
        run.bind(5, wanted);
      readAll(run, tasks);
    }
  }
  Run(sql_->commit).step();
  return tasks.count() > before;
}

void HandStore::mentioning(Tasks& tasks, const QString& text) {
  Run run(sql_->all);
  while (run.step()) {
    Task task;
    read(run, task);
    if (mentions(task, text))
      tasks.append(task);
  }
}

void HandStore::resembling(Tasks& tasks, const Task& example) {
  const Wanted wanted(example);
  Run run(sql_->all);
  while (run.step()) {
    Task task;
    read(run, task);
    if (wanted.isIn(run, task))
      tasks.append(task);
  }
}

void HandStore::all(Tasks& tasks) {
  Run run(sql_->all);
  readAll(run, tasks);
}

void HandStore::allJoined(Tasks& tasks) {
  Run run(sql_->allJoined);
  while (run.step()) {
    Task task;
    readFields(run, task);
    task.setString(Task::TASK_FIELD_CATEGORY, run.text(nameColumn));
    tasks.append(task);
  }
}

}  // namespace bench
