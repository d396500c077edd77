#include "store_questions.h"

#include "database.h"
#include "exit_codes.h"
#include "session.h"
#include "store_steps.h"
#include "ulodb2.h"
#include "write_transaction.h"

namespace ulotask {
namespace {

// Argument: the name of the index.
constexpr const char* firstScript = "sml:declare schema first (uid integer);\n"
                                    "declare buffer schema first;\n"
                                    "cursor $task = open_cursor('%s');\n"
                                    "if ($task->move_next()) {\n"
                                    "buffer_put(uid, $task->get_field('UID'));\n"
                                    "buffer_move_next();\n"
                                    "};";
struct First {
  enum Column { uid };
};

constexpr const char* categoriesScript =
    "sml:declare schema categories (uid integer, name varchar, flag bool, tasks integer);\n"
    "declare buffer schema categories;\n"
    "cursor $category = open_cursor('task_table_category');\n"
    "cursor $task = open_cursor('task_index_categoryId');\n"
    "tuple $key = $task->new_empty_key_tuple();\n"
    "bool $more = true;\n"
    "int $tasks = 0;\n"
    "while ($category->move_next()) {\n"
    "$key->set_field(0, $category->get_field('UID'));\n"
    "$tasks = 0;\n"
    "$more = $task->find($key);\n"
    "while ($more) {\n"
    "$tasks = $tasks + 1;\n"
    "$more = $task->move_next_in_dup();\n"
    "};\n"
    "buffer_put(uid, $category->get_field('UID'));\n"
    "buffer_put(name, $category->get_field('name'));\n"
    "buffer_put(flag, $category->get_field('flag'));\n"
    "buffer_put(tasks, $tasks);\n"
    "buffer_move_next();\n"
    "};";
struct Categories {
  enum Column { uid, name, flag, tasks };
};

constexpr const char* orphansScript = "sml:declare schema orphans (uid integer);\n"
                                      "declare buffer schema orphans;\n"
                                      "cursor $task = open_cursor('task_table_task');\n"
                                      "cursor $category = open_cursor('task_table_category');\n"
                                      "tuple $key = $category->new_empty_key_tuple();\n"
                                      "while ($task->move_next()) {\n"
                                      "$key->set_field('UID', $task->get_field('categoryUid'));\n"
                                      "if ($category->find($key) == false) {\n"
                                      "buffer_put(uid, $task->get_field('UID'));\n"
                                      "buffer_move_next();\n"
                                      "};\n"
                                      "};";
struct Orphans {
  enum Column { uid };
};

// As the store names the category of a task.
QString nameOfCategory(unsigned int uid) {
  ParameterBlock block(1);
  ResultRows rows;
  block.bindInteger(0, static_cast<int>(uid));
  requireDatabase(block.query(rows, task_scripts::categoryNameByUid), "reading a category");
  return rows.varchar(task_scripts::Name::name);
}

void requireRows(int code, const char* what) {
  if (code != DB_OK)
    throw Failure(Exit::failed, std::string(what) + " failed" + databaseReason());
}

}  // namespace

StoreQuestions::StoreQuestions() {
  if (DB_Open(ulo::storeDatabase) != DB_OK)
    throw Failure(Exit::storeClosed, std::string("the store can't be opened") + databaseReason());
}

StoreQuestions::~StoreQuestions() {
  DB_Close();
}

std::optional<unsigned int> StoreQuestions::firstTask(ZTASK_ENG_Model::TASK_SORT_FIELD sort) const {
  ResultRows rows;
  requireRows(rows.query(firstScript, sortIndex(sort)), "looking for the first task");
  if (rows.atEnd())
    return std::nullopt;
  return rows.uid(First::uid);
}

QValueList<ZTASK_ENG_Task> StoreQuestions::tasksAfter(unsigned int uid, int count,
                                                      CategoryNames& names) const {
  using Columns = task_scripts::PlainTask;
  ParameterBlock block(2);
  block.bindInteger(0, static_cast<int>(uid));
  block.bindInteger(1, count);
  ResultRows rows;
  requireRows(block.query(rows, task_scripts::tasksAfter), "reading the tasks");
  const TaskReader<Columns> reader(true, rows);
  QValueList<ZTASK_ENG_Task> tasks;
  for (; !rows.atEnd(); rows.next()) {
    const unsigned int category = rows.uid(Columns::category);
    const auto [name, isNew] = names.try_emplace(category);
    if (isNew)
      name->second = nameOfCategory(category);
    reader.append(tasks, name->second);
  }
  // The database may have run out of memory while the fields were read.
  require(TASK_ENG_OK, "reading the tasks");
  return tasks;
}

std::vector<StoreQuestions::Category> StoreQuestions::categories() const {
  ResultRows rows;
  requireRows(rows.query(categoriesScript), "counting the tasks of the categories");
  std::vector<Category> found;
  for (; !rows.atEnd(); rows.next())
    found.push_back({rows.uid(Categories::uid), rows.varchar(Categories::name),
                     rows.boolean(Categories::flag), rows.integer(Categories::tasks)});
  return found;
}

std::vector<unsigned int> StoreQuestions::tasksWithoutCategory() const {
  ResultRows rows;
  requireRows(rows.query(orphansScript), "looking for categories that are gone");
  std::vector<unsigned int> uids;
  for (; !rows.atEnd(); rows.next())
    uids.push_back(rows.uid(Orphans::uid));
  return uids;
}

}  // namespace ulotask
