#include "task_uuids.h"

#include "ZTASK_ENG_Model.h"
#include "database.h"

#include <QSet>
#include <QVarLengthArray>

#include <utility>

namespace ulo {
namespace {

// Parameter 0: the uuid.
constexpr const char* uidsOfUuid = "sml:declare schema found (uid integer);\n"
                                   "declare buffer schema found;\n"
                                   "cursor $c = open_cursor('task_table_task');\n"
                                   "while ($c->move_next()) {\n"
                                   "if ($c->get_field('uuid') == :0) {\n"
                                   "buffer_put(uid, $c->get_field('UID'));\n"
                                   "buffer_move_next();\n"
                                   "};\n"
                                   "};";
constexpr const char* allUuids = "sml:declare schema found (uid integer, uuid unicode);\n"
                                 "declare buffer schema found;\n"
                                 "cursor $c = open_cursor('task_table_task');\n"
                                 "while ($c->move_next()) {\n"
                                 "buffer_put(uid, $c->get_field('UID'));\n"
                                 "buffer_put(uuid, $c->get_field('uuid'));\n"
                                 "buffer_move_next();\n"
                                 "};";
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
  // The database takes units with their bytes exchanged.
  QVarLengthArray<unsigned short, 64> units;
  for (const QChar unit : uuid)
    units.append(static_cast<unsigned short>(unit.cell() << 8 | unit.row()));
  units.append(0);
  block.bindUnicode(0, units.constData());
  ResultRows rows;
  if (const int result = block.query(rows, uidsOfUuid); result != DB_OK)
    return failed(result);
  if (rows.atEnd())
    return TASK_ENG_NOT_FOUND;
  uid = rows.uid(Found::uid);
  return TASK_ENG_OK;
}

int findTasks(const std::vector<QString>& uuids, QHash<QString, unsigned int>& uids) {
  const QSet<QString> wanted(uuids.begin(), uuids.end());
  QHash<QString, unsigned int> found;
  if (!wanted.isEmpty()) {
    ResultRows rows;
    if (const int result = rows.query(allUuids); result != DB_OK)
      return failed(result);
    for (; !rows.atEnd(); rows.next()) {
      const QString uuid = rows.unicode(Found::uuid);
      if (!uuid.isNull() && wanted.contains(uuid) && !found.contains(uuid))
        found.insert(uuid, rows.uid(Found::uid));
    }
  }
  uids = std::move(found);
  return TASK_ENG_OK;
}

}  // namespace ulo
