#include "task_uuids.h"

#include "ZTASK_ENG_Model.h"
#include "database.h"

namespace ulo {
namespace {

// Parameter 0: the uuid. SQLite finds the tasks for the outer condition.
constexpr const char* uidsOfUuid = "sml:declare schema found (uid integer);\n"
                                   "declare buffer schema found;\n"
                                   "cursor $c = open_cursor('task_table_task');\n"
                                   "while ($c->move_next()) {\n"
                                   "if (contains($c->get_field('uuid'), :0)) {\n"
                                   "if ($c->get_field('uuid') == :0) {\n"
                                   "buffer_put(uid, $c->get_field('UID'));\n"
                                   "buffer_move_next();\n"
                                   "};\n"
                                   "};\n"
                                   "};";
// Parameter 0: the UID of the task in front of the page, or 0; 1: the number of tasks.
constexpr const char* pageOfUuids = "sml:declare schema found (uid integer, uuid unicode);\n"
                                    "declare buffer schema found;\n"
                                    "int $n = 0;\n"
                                    "bool $more = true;\n"
                                    "cursor $c = open_cursor('task_table_task');\n"
                                    "tuple $key = $c->new_empty_key_tuple();\n"
                                    "$key->set_field('UID', :0);\n"
                                    "if (:0 > 0) {\n"
                                    "$more = $c->find($key);\n"
                                    "};\n"
                                    "if ($more) {\n"
                                    "$more = $c->move_next();\n"
                                    "};\n"
                                    "while ($more && $n < :1) {\n"
                                    "buffer_put(uid, $c->get_field('UID'));\n"
                                    "buffer_put(uuid, $c->get_field('uuid'));\n"
                                    "buffer_move_next();\n"
                                    "$n = $n + 1;\n"
                                    "$more = $c->move_next();\n"
                                    "};";
constexpr int pageSize = 1000;
struct Found {
  enum Column { uid, uuid };
};

int failed(int databaseResult) {
  return databaseResult == DB_FULL || databaseResult == DB_NO_MEMORY ? TASK_ENG_MEMORY_FULL
                                                                     : TASK_ENG_DATABASE_FAILURE;
}

}  // namespace

int findTask(const QString& uuid, unsigned int& uid) {
  ParameterBlock block(1);
  if (!block)
    return TASK_ENG_MEMORY_FULL;
  block.bindText(0, uuid);
  ResultRows rows;
  if (const int result = block.query(rows, uidsOfUuid); result != DB_OK)
    return failed(result);
  if (rows.atEnd())
    return TASK_ENG_NOT_FOUND;
  uid = rows.uid(Found::uid);
  return TASK_ENG_OK;
}

int forEachUuid(const std::function<void(QStringView uuid, unsigned int uid)>& visit) {
  const ReadSnapshot snapshot;
  int last = 0;
  for (int count = pageSize; count == pageSize;) {
    ParameterBlock block(2);
    if (!block)
      return TASK_ENG_MEMORY_FULL;
    block.bindInteger(0, last);
    block.bindInteger(1, pageSize);
    ResultRows rows;
    if (const int result = block.query(rows, pageOfUuids); result != DB_OK)
      return failed(result);
    for (count = 0; !rows.atEnd(); rows.next(), ++count) {
      last = rows.integer(Found::uid);
      if (const QStringView uuid = rows.unicodeView(Found::uuid); !uuid.isNull())
        visit(uuid, rows.uid(Found::uid));
    }
  }
  return TASK_ENG_OK;
}

}  // namespace ulo
