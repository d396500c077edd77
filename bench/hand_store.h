// The work of the store's operations, written by hand with SQLite's C interface, as a developer who
// knows SQLite well would write it. Schema, indexes, pragmas and durability are the same as in the
// store, statements are prepared once and kept, and the results are the same records.
#pragma once

#include "ZTASK_ENG_Model.h"
#include "sqlite_handles.h"

#include <memory>
#include <optional>
#include <string>

namespace bench {

using Task = ZTASK_ENG_Task;
using Tasks = QValueList<Task>;
using Uids = QValueList<unsigned int>;
using View = ZTASK_ENG_Model::TASK_CATEGORY;
using Sort = ZTASK_ENG_Model::TASK_SORT_FIELD;
using Field = ZTASK_ENG_Task::TASK_FIELD_T;

class HandStore {
public:
  // Opens the store in the directory, which must have been filled.
  explicit HandStore(const std::string& directory);
  HandStore(const HandStore&) = delete;
  HandStore& operator=(const HandStore&) = delete;
  ~HandStore();

  // The operations as described in ZTASK_ENG_Model.h. They return false if the store returns
  // TASK_ENG_NOT_FOUND, and throw on any other failure. They append to lists.
  void add(Task& task);
  bool get(unsigned int uid, Task& task);
  bool update(Task& task);
  bool remove(unsigned int uid);
  void removeAll();

  int count();
  int count(View view);
  void ids(Uids& uids);
  void ids(Uids& uids, View view, Sort sort);

  bool range(Tasks& tasks, Field field, int from, int to);
  bool ofCategory(Tasks& tasks, const QString& category);
  bool page(Tasks& tasks, const Task& start, int count, View view, Sort sort);
  void mentioning(Tasks& tasks, const QString& text);
  void resembling(Tasks& tasks, const Task& example);
  void all(Tasks& tasks);
  // The same, with the category's name read by a join instead of a separate statement.
  void allJoined(Tasks& tasks);

  // For filling: add only the category or the task.
  void insertCategory(const QString& name);
  int insert(const Task& task, int categoryUid);
  std::optional<int> categoryUid(const QString& name);

  [[nodiscard]] const Database& database() const { return database_; }

private:
  struct Statements;

  bool exists(unsigned int uid, int due, int priority);
  QString categoryName(int uid);
  void read(const Run& row, Task& task);
  void readAll(Run& rows, Tasks& tasks);

  Database database_;
  std::unique_ptr<Statements> sql_;
};

}  // namespace bench
