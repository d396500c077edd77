#include "task_uuids.h"

#include "ZTASK_ENG_Model.h"
#include "database.h"
#include "task_scripts.h"

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
constexpr int pageSize = 1000;
using Columns = task_scripts::UidUuid;

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
  uid = rows.uid(Columns::uid);
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
    if (const int result = block.query(rows, task_scripts::uuidsAfter); result != DB_OK)
      return failed(result);
    for (count = 0; !rows.atEnd(); rows.next(), ++count) {
      last = rows.integer(Columns::uid);
      if (const QStringView uuid = rows.unicodeView(Columns::uuid); !uuid.isNull())
        visit(uuid, rows.uid(Columns::uid));
    }
  }
  return TASK_ENG_OK;
}

}  // namespace ulo
