// The statements and scripts that the store sends to the database, and the columns of their
// results. The texts are a contract to the byte (docs/compatibility.md), except for those at the
// end, which operations beyond the store's own send.
#pragma once

// Each line of a text is on a line of its own; clang-format would join them.
// clang-format off

namespace task_scripts {

// Result columns, in the order of the buffer schema that each script declares.
struct TablesPresent {
  enum Column { tasks, categories };
};
struct Flag {
  enum Column { flag };
};
struct Count {
  enum Column { count };
};
struct Uid {
  enum Column { uid };
};
struct UidFlag {
  enum Column { uid, flag };
};
struct FlagUid {
  enum Column { flag, uid };
};
struct Name {
  enum Column { name };
};
struct UidName {
  enum Column { uid, name };
};
struct NameFlag {
  enum Column { name, flag };
};

// The columns that describe a task: name and type in the result, field of the task table.
#define ULO_TASK_COLUMNS(column)                                                                   \
  column(priority, "integer", "priority")                                                          \
  column(status, "integer", "status")                                                              \
  column(note, "unicode", "note")                                                                  \
  column(summary, "unicode", "summary")                                                            \
  column(uuid, "unicode", "uuid")                                                                  \
  column(alarm, "integer", "alarm")                                                                \
  column(due, "integer", "due")                                                                    \
  column(end, "integer", "end")                                                                    \
  column(revision, "integer", "revision")                                                          \
  column(category, "integer", "categoryUid")
#define ULO_TASK_UID_COLUMN(column) column(uid, "integer", "UID")
#define ULO_COLUMN_ENUMERATOR(name, type, field) name,
#define ULO_COLUMN_SCHEMA(name, type, field) #name " " type ", "
#define ULO_COLUMN_SCHEMA_NEXT(name, type, field) ", " #name " " type
#define ULO_COLUMN_PUT(name, type, field) "buffer_put(" #name ", $c->get_field( '" field "' ));\n"

// A task and a flag that distinguishes rows with a task from the row that ends the result. The
// result of getTask has the columns before uid.
struct MarkedTask {
  enum Column {
    ULO_TASK_COLUMNS(ULO_COLUMN_ENUMERATOR)
    ULO_TASK_UID_COLUMN(ULO_COLUMN_ENUMERATOR)
    flag
  };
};
// A task without a flag.
struct PlainTask {
  enum Column {
    ULO_TASK_UID_COLUMN(ULO_COLUMN_ENUMERATOR)
    ULO_TASK_COLUMNS(ULO_COLUMN_ENUMERATOR)
  };
};

#define ULO_DECLARE_MARKED_TASK                                                                    \
  "sml:declare schema s1 ("                                                                        \
  ULO_TASK_COLUMNS(ULO_COLUMN_SCHEMA) ULO_TASK_UID_COLUMN(ULO_COLUMN_SCHEMA) "flag bool);\n"       \
  "declare buffer schema s1;\n"
#define ULO_PUT_MARKED_TASK(flag)                                                                  \
  ULO_TASK_COLUMNS(ULO_COLUMN_PUT) ULO_TASK_UID_COLUMN(ULO_COLUMN_PUT) ULO_PUT_MARK(flag)
#define ULO_PUT_MARK(flag)                                                                         \
  "buffer_put(flag, " flag ");\n"                                                                  \
  "buffer_move_next();\n"

#define ULO_DECLARE_PLAIN_TASK                                                                     \
  "sml:declare schema s1 (uid integer" ULO_TASK_COLUMNS(ULO_COLUMN_SCHEMA_NEXT) ");\n"             \
  "declare buffer schema s1;\n"
#define ULO_PUT_PLAIN_TASK                                                                         \
  ULO_TASK_UID_COLUMN(ULO_COLUMN_PUT) ULO_TASK_COLUMNS(ULO_COLUMN_PUT)                             \
  "buffer_move_next();\n"

// The tables and their first rows.

inline constexpr char checkTables[] =
    "sml:declare schema check( taskcheck bool , categoryCheck bool);\n"
    "declare buffer schema check;\n"
    "buffer_put( taskcheck, check_table_exist( 'main.task_table_task' ) );\n"
    "buffer_put( categoryCheck, check_table_exist( 'main.task_table_category' ) );\n"
    "buffer_move_next();\n";

inline constexpr char createTaskTable[] =
    "create table task_table_task (UID integer auto, priority integer,status integer, note "
    "unicode, summary unicode, uuid unicode, alarm integer, due integer,end integer, categoryUid "
    "integer, revision integer, unique key( UID ))";

inline constexpr const char* createTaskIndexes[] = {
    "create index task_index_priority on task_table_task ( priority, due, UID desc)",
    "create index task_index_due on task_table_task ( due, priority, UID desc)",
    "create index task_index_alarm on task_table_task (alarm)",
    "create index task_index_categoryId on task_table_task (categoryUid)",
    "create index task_index_end on task_table_task (end, UID desc)",
};

inline constexpr char createCategoryTable[] =
    "create table task_table_category (UID integer auto, name varchar, flag bool,unique key(UID))";

inline constexpr char createCategoryIndex[] =
    "create index task_index_category on main.task_table_category (name)";

inline constexpr char insertNullCategory[] =
    "insert into task_table_category(name, flag) values (get_null_varchar(), true)";

// Arguments: a name and "true".
inline constexpr char insertDefaultCategory[] =
    "insert into task_table_category(name, flag) values ('%s', %s)";

inline constexpr const char* defaultCategories[] = {"none", "meeting", "vacation", "appointment",
                                                    "party"};

// Single tasks.

// Parameters 0 to 9: the columns, in the order in which they are named. The tag is the new UID.
inline constexpr char insertTask[] =
    "insert into main.task_table_task (priority, status, note, summary, uuid, alarm, due, end, "
    "categoryUid, revision) values (:0, :1, :2, :3, :4, :5, :6, :7, :8 , :9)returnuid";

// Argument: the UID. The tag is 0 if there is no such task.
inline constexpr char getTask[] =
    "sml:declare schema s1 (priority integer, status integer, note unicode, summary unicode,uuid "
    "unicode, alarm integer, due integer, end integer, revision integer, category integer);\n"
    "declare buffer schema s1;\n"
    "cursor $c=open_cursor('task_table_task');\n"
    "tuple $key = $c->new_empty_key_tuple();\n"
    "$key->set_field( 'UID', %d );\n"
    "if ($c->find($key)){\n"
    "buffer_put(priority, $c->get_field( 'priority'));\n"
    "buffer_put(status, $c->get_field( 'status' ) );\n"
    "buffer_put(note, $c->get_field( 'note' ));\n"
    "buffer_put(summary, $c->get_field( 'summary' ));\n"
    "buffer_put(uuid, $c->get_field( 'uuid' ));\n"
    "buffer_put(alarm, $c->get_field( 'alarm' ));\n"
    "buffer_put(due, $c->get_field( 'due' ));\n"
    "buffer_put(end, $c->get_field( 'end' ));\n"
    "buffer_put(revision, $c->get_field( 'revision' ));\n"
    "buffer_put(category, $c->get_field( 'categoryUid' ));\n"
    "buffer_move_next();\n"
    "set_session_tag(1);\n"
    "}\n"
    "else{\n"
    "set_session_tag(0);\n"
    "};\n";

// Parameter 0: the UID; 1 to 10: the values. The uuid (5) is never changed.
inline constexpr char updateTask[] =
    "sml:declare schema s1 (flag bool);\n"
    "declare buffer schema s1;\n"
    "cursor $c = open_cursor('main.task_table_task');\n"
    "tuple $key= $c->new_empty_key_tuple();\n"
    "$key->set_field( 0, :0 );\n"
    "if( $c->find( $key ) ){\n"
    "tuple $data = $c->get_data_tuple();\n"
    "$data->set_field( 'priority', :1);\n"
    "$data->set_field( 'status', :2);\n"
    "$data->set_field( 'note', :3);\n"
    "$data->set_field( 'summary', :4);\n"
    "$data->set_field( 'alarm', :6);\n"
    "$data->set_field( 'due', :7);\n"
    "$data->set_field( 'end', :8);\n"
    "$data->set_field( 'categoryUid', :9);\n"
    "$data->set_field( 'revision', :10);\n"
    "$c->update( $data );\n"
    "buffer_put(flag, true);\n"
    "buffer_move_next();\n"
    "}\n"
    "else{\n"
    "buffer_put(flag, false);\n"
    "buffer_move_next();\n"
    "};";

inline constexpr char removeTask[] =
    "sml:declare schema s1 (flag bool);\n"
    "declare buffer schema s1;\n"
    "cursor $c = open_cursor('main.task_table_task');\n"
    "tuple $key = $c->new_empty_key_tuple();\n"
    "$key->set_field( 'UID', :0 );\n"
    "if( $c->find( $key ) ){\n"
    "$c->del();\n"
    "buffer_put(flag, true);\n"
    "buffer_move_next();\n"
    "}\n"
    "else{\n"
    "buffer_put(flag, false);\n"
    "buffer_move_next();\n"
    "};";

// Categories.

// The flag is true if the name was not found.
inline constexpr char categoryUidByName[] =
    "sml:declare schema getid (flag bool, uid integer);\n"
    "declare buffer schema getid;\n"
    "cursor $c=open_cursor('task_index_category');\n"
    "tuple $key = $c->new_empty_key_tuple();\n"
    "$key->set_field( 0, :0 );\n"
    "if( $c->find( $key ) ){\n"
    "buffer_put(flag, false);\n"
    "buffer_put(uid, $c->get_field( 'UID' ));\n"
    "buffer_move_next();\n"
    "}\n"
    "else{\n"
    "buffer_put(flag, true);\n"
    "buffer_move_next();\n"
    "};";

inline constexpr char categoryNameByUid[] =
    "sml:declare schema s1 (name varchar);\n"
    "declare buffer schema s1;\n"
    "cursor $c=open_cursor('task_table_category');\n"
    "tuple $key = $c->new_empty_key_tuple();\n"
    "$key->set_field( 'UID', :0 );\n"
    "if ($c->find($key)){\n"
    "buffer_put(name, $c->get_field( 'name'));\n"
    "buffer_move_next();\n"
    "}else{\n"
    "buffer_put(name, 'None');\n"
    "buffer_move_next();\n"
    "};";

inline constexpr char insertCategory[] =
    "insert into main.task_table_category(name, flag) values (:0, false)returnuid";

inline constexpr char renameCategory[] =
    "sml:cursor $c = open_cursor('main.task_table_category');\n"
    "while($c->move_next()){\n"
    "if ($c->get_field('name') == :0){\n"
    "tuple $data = $c->get_data_tuple();\n"
    "$data->set_field('name', :1);\n"
    "$c->update($data);\n"
    "};\n"
    "};";

inline constexpr char removeCategory[] =
    "sml:cursor $c = open_cursor('main.task_index_category');\n"
    "tuple $key = $c->new_empty_key_tuple();\n"
    "    $key->set_field( 0, :0 );\n"
    "                  if( $c->find( $key ) ){\n"
    "                    $c->del();\n"
    "};";

// The flag of each removed task is false; a row with a true flag follows the last.
// The loop needs no buffer_move_next: a second value for `flag` begins the next row.
inline constexpr char removeTasksOfCategory[] =
    "sml:declare schema getid (flag bool, uid integer);\n"
    "declare buffer schema getid;\n"
    "cursor $c=open_cursor('task_index_categoryId');\n"
    "tuple $key = $c->new_empty_key_tuple();\n"
    "$key->set_field( 0, :0 );\n"
    "bool $t = true;\n"
    "if( $c->find( $key ) ){\n"
    "while($t){\n"
    "buffer_put(flag, false);\n"
    "buffer_put(uid, $c->get_field( 'UID' ));\n"
    "$c->del();\n"
    "$t = $c->move_next_in_dup();\n"
    "};\n"
    "};\n"
    "if ($c->find($key) == false){\n"
    "buffer_put(flag, true);\n"
    "buffer_move_next();\n"
    "};";

// The flag of the row after the last category is false.
inline constexpr char allCategories[] =
    "sml:declare schema s1 (name varchar, flag bool);\n"
    "declare buffer schema s1;\n"
    "cursor $c=open_cursor('task_table_category');\n"
    "while($c->move_next()){\n"
    "buffer_put(name, $c->get_field( 'name'));\n"
    "buffer_put(flag, true);\n"
    "buffer_move_next();\n"
    "};buffer_put(flag, false);\n"
    "buffer_move_next();\n";

// Counts and lists of UIDs.

inline constexpr char countTasks[] =
    "sml:declare schema readEvent (count integer);\n"
    "    declare buffer schema readEvent;\n"
    "                 table $t=open_table('main.task_table_task');\n"
    "     buffer_put(count, $t->get_record_number());\n"
    "      buffer_move_next();\n";

// `condition` compares a column with parameter 0.
#define ULO_COUNT_TASKS_WHERE(condition)                                                           \
  "sml:declare schema readEvent (count integer);\n"                                                \
  "    declare buffer schema readEvent;\n"                                                         \
  "                 int $i = 0;\n"                                                                 \
  "cursor $c=open_cursor('main.task_table_task');\n"                                               \
  "   while($c->move_next()){\n"                                                                   \
  "if (" condition "){\n"                                                                          \
  "$i = $i + 1;\n"                                                                                 \
  "};\n"                                                                                           \
  "};\n"                                                                                           \
  "buffer_put(count, $i);\n"                                                                       \
  "buffer_move_next();\n"

inline constexpr char countTasksByStatus[] =
    ULO_COUNT_TASKS_WHERE("$c->get_field('status') == :0");
inline constexpr char countDueTasks[] = ULO_COUNT_TASKS_WHERE("$c->get_field('due') <= :0");

#undef ULO_COUNT_TASKS_WHERE

inline constexpr char allUids[] =
    "sml:declare schema readTask (uid integer);\n"
    "declare buffer schema readTask;\n"
    "cursor $c=open_cursor('main.task_table_task');\n"
    "while($c->move_next()){\n"
    "buffer_put(uid, $c->get_field( 'UID' ));\n"
    "buffer_move_next();\n"
    "};";

// The argument of the following lists is the index; the flag of their last row is false.

inline constexpr char uidsInOrder[] =
    "sml:declare schema s1 (uid integer, flag bool);\n"
    "declare buffer schema s1;\n"
    "cursor $c=open_cursor('%s');\n"
    "while($c->move_next()){\n"
    "buffer_put(uid, $c->get_field( 'UID' ));\n"
    "buffer_put(flag, true);\n"
    "buffer_move_next();\n"
    "};buffer_put(flag, false);\n"
    "buffer_move_next();\n";

inline constexpr char uidsByStatus[] =
    "sml:declare schema s1 (uid integer, flag bool);\n"
    "declare buffer schema s1;\n"
    "cursor $c=open_cursor('%s');\n"
    "while($c->move_next()){\n"
    "if ($c->get_field('status') == :0){\n"
    "buffer_put(uid, $c->get_field( 'UID' ));\n"
    "buffer_put(flag, true);\n"
    "buffer_move_next();\n"
    "};\n"
    "};\n"
    "buffer_put(flag, false);\n"
    "buffer_move_next();";

inline constexpr char dueUids[] =
    "sml:declare schema s1 (uid integer, flag bool);\n"
    "declare buffer schema s1;\n"
    "cursor $c=open_cursor('%s');\n"
    "while($c->move_next()){\n"
    "if( $c->get_field('due') < :0){\n"
    "buffer_put(uid, $c->get_field( 'UID' ));\n"
    "buffer_put(flag, true);\n"
    "buffer_move_next();\n"
    "};};buffer_put(flag, false);\n"
    "buffer_move_next();";

inline constexpr char removeAllTasks[] =
    "sml:cursor $c = open_cursor('main.task_table_task');\n"
    "while($c->move_next()){\n"
    "$c->del();\n"
    "};";

// Whole tasks.

// Arguments: the index, the column, the column again. The flag of the row after the last task is
// true.
inline constexpr char tasksInRange[] =
    ULO_DECLARE_MARKED_TASK
    "cursor $c=open_cursor('%s');\n"
    "while($c->move_next()){\n"
    "if($c->get_field('%s') <= :1 && $c->get_field('%s') >= :0){\n"
    ULO_PUT_MARKED_TASK("false")
    "};\n"
    "};\n"
    ULO_PUT_MARK("true");

// The flag of tasks is false. If there are none, the result is one row with a true flag.
inline constexpr char tasksOfCategory[] =
    ULO_DECLARE_MARKED_TASK
    "bool $w = true;\n"
    "cursor $c=open_cursor('task_index_categoryId');\n"
    "tuple $key = $c->new_empty_key_tuple();\n"
    "$key->set_field( 0, :0 );\n"
    "if ($c->find($key)){\n"
    "while($w){\n"
    ULO_PUT_MARKED_TASK("false")
    "$w = $c->move_next_in_dup();\n"
    "};\n"
    "};\n"
    "if ($c->find($key) == false){\n"
    ULO_PUT_MARK("true")
    "};";

// Pages. Argument: the index. Parameters 0 to 2: the key of the first task in the index; 3: the
// number of tasks; 4: the filter operand. The flag of tasks is true, that of a row after them
// false.
#define ULO_PAGE_BEGIN(counter)                                                                    \
  ULO_DECLARE_MARKED_TASK                                                                          \
  "int " counter " = 0;\n"                                                                         \
  "bool $t = true;\n"                                                                              \
  "cursor $c=open_cursor('%s');\n"                                                                 \
  "tuple $key = $c->new_empty_key_tuple();\n"                                                      \
  "$key->set_field( 0, :0 );\n"                                                                    \
  "$key->set_field( 1, :1 );\n"                                                                    \
  "$key->set_field( 2, :2 );\n"                                                                    \
  "if ($c->find($key)){\n"                                                                         \
  "while($t && " counter " < :3){\n"
#define ULO_PAGE_TASK(counter) ULO_PUT_MARKED_TASK("true") counter " = " counter " + 1;\n"
#define ULO_PAGE_END                                                                               \
  "$t = $c->move_next();\n"                                                                        \
  "};\n"                                                                                           \
  "};\n"
#define ULO_FILTERED_PAGE(condition)                                                               \
  ULO_PAGE_BEGIN("$a")                                                                             \
  "if (" condition "){\n"                                                                          \
  ULO_PAGE_TASK("$a")                                                                              \
  "};\n"                                                                                           \
  ULO_PAGE_END                                                                                     \
  "if ($c->find($key) == false){\n"                                                                \
  ULO_PUT_MARK("false")                                                                            \
  "};"

inline constexpr char pageOfTasks[] =
    ULO_PAGE_BEGIN("$i")
    ULO_PAGE_TASK("$i")
    ULO_PAGE_END
    ULO_PUT_MARK("false");
inline constexpr char pageByStatus[] = ULO_FILTERED_PAGE("$c->get_field('status') == :4");
inline constexpr char pageOfDueTasks[] = ULO_FILTERED_PAGE("$c->get_field('due') < :4");

inline constexpr char allTasks[] =
    ULO_DECLARE_PLAIN_TASK
    "cursor $c=open_cursor('task_index_due');\n"
    "while($c->move_next()){\n"
    ULO_PUT_PLAIN_TASK
    "};";

// Not sent by the store; free to change.

// All tasks that meet a condition, by due date. Argument: the condition on the cursor $c.
inline constexpr char tasksWhere[] =
    ULO_DECLARE_PLAIN_TASK
    "cursor $c=open_cursor('task_index_due');\n"
    "while($c->move_next()){\n"
    "if (%s){\n"
    ULO_PUT_PLAIN_TASK
    "};\n"
    "};";

// A page of all tasks in the order of their UIDs. Parameter 0: the UID of the task in front of the
// page, or 0; 1: the number of tasks.
#define ULO_PAGE_BY_UID(declarations, put)                                                         \
    declarations                                                                                   \
    "int $count = 0;\n"                                                                            \
    "bool $more = true;\n"                                                                         \
    "cursor $c = open_cursor('task_table_task');\n"                                                \
    "tuple $key = $c->new_empty_key_tuple();\n"                                                    \
    "$key->set_field('UID', :0);\n"                                                                \
    "if (:0 > 0) {\n"                                                                              \
    "$more = $c->find($key);\n"                                                                    \
    "};\n"                                                                                         \
    "if ($more) {\n"                                                                               \
    "$more = $c->move_next();\n"                                                                   \
    "};\n"                                                                                         \
    "while ($more && $count < :1) {\n"                                                             \
    put                                                                                            \
    "$count = $count + 1;\n"                                                                       \
    "$more = $c->move_next();\n"                                                                   \
    "};"
inline constexpr char tasksAfter[] = ULO_PAGE_BY_UID(ULO_DECLARE_PLAIN_TASK, ULO_PUT_PLAIN_TASK);
struct UidUuid {
  enum Column { uid, uuid };
};
inline constexpr char uuidsAfter[] = ULO_PAGE_BY_UID(
    "sml:declare schema found (uid integer, uuid unicode);\n"
    "declare buffer schema found;\n",
    "buffer_put(uid, $c->get_field('UID'));\n"
    "buffer_put(uuid, $c->get_field('uuid'));\n"
    "buffer_move_next();\n");

// The names of all categories.
inline constexpr char categoryNames[] =
    "sml:declare schema names (uid integer, name varchar);\n"
    "declare buffer schema names;\n"
    "cursor $c = open_cursor('task_table_category');\n"
    "while ($c->move_next()) {\n"
    "buffer_put(uid, $c->get_field('UID'));\n"
    "buffer_put(name, $c->get_field('name'));\n"
    "buffer_move_next();\n"
    "};";

#undef ULO_PAGE_BY_UID
#undef ULO_FILTERED_PAGE
#undef ULO_PAGE_END
#undef ULO_PAGE_TASK
#undef ULO_PAGE_BEGIN
#undef ULO_PUT_PLAIN_TASK
#undef ULO_DECLARE_PLAIN_TASK
#undef ULO_PUT_MARK
#undef ULO_PUT_MARKED_TASK
#undef ULO_DECLARE_MARKED_TASK
#undef ULO_COLUMN_PUT
#undef ULO_COLUMN_SCHEMA_NEXT
#undef ULO_COLUMN_SCHEMA
#undef ULO_COLUMN_ENUMERATOR
#undef ULO_TASK_UID_COLUMN
#undef ULO_TASK_COLUMNS

// clang-format on

}  // namespace task_scripts
