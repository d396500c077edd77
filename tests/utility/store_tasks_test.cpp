// Single tasks on the real database.

#include "store_test.h"

#include "UTIL_TimeConversion.h"

#include <cstdlib>
#include <limits>
#include <set>

namespace {

using testing::ElementsAre;
using testing::Not;

class StoreTasks : public StoreTest {
protected:
  static Task complete() {
    Task result = task("summary");
    result.setPriority(3);
    result.setStatus(2);
    result.setString(Task::TASK_FIELD_CATEGORY, "meeting");
    result.setString(Task::TASK_FIELD_UUID, "my own identity");
    result.setDateTime(Task::TASK_FIELD_ALARM, now().addSecs(1));
    result.setDateTime(Task::TASK_FIELD_DUE, now().addDays(2));
    result.setDateTime(Task::TASK_FIELD_END, now().addDays(-3));
    result.setDateTime(Task::TASK_FIELD_REVISION, now().addYears(-4));
    return result;
  }
};

TEST_F(StoreTasks, ReturnsAddedTask) {
  Task added = complete();
  const unsigned int uid = add(added);
  EXPECT_THAT(get(uid), IsSameTask(added));
  close();
  EXPECT_THAT(get(uid), IsSameTask(added));
}

TEST_F(StoreTasks, AddChangesOnlyUidAndUuid) {
  Task added = task("s");
  added.setStatus(0);
  Task expected = added;
  add(added);
  expected.setUINT32(Task::TASK_FIELD_UID, added.getUINT32(Task::TASK_FIELD_UID));
  expected.setString(Task::TASK_FIELD_UUID, added.getString(Task::TASK_FIELD_UUID));
  EXPECT_THAT(added, IsSameTask(expected));
  EXPECT_THAT(get(added.getUINT32(Task::TASK_FIELD_UID)), IsSameTask(expected));

  Task empty = task("s");
  empty.setString(Task::TASK_FIELD_UUID, QString(""));
  add(empty);
  EXPECT_EQ(empty.getString(Task::TASK_FIELD_UUID), QString(""));
}

TEST_F(StoreTasks, KeepsEveryNumber) {
  for (const int number :
       {std::numeric_limits<int>::min(), -1, 0, 1, 9, 10, std::numeric_limits<int>::max()}) {
    Task added = task("s");
    added.setPriority(number);
    added.setStatus(number);
    const Task got = get(add(added));
    EXPECT_EQ(got.getPriorityValue(), number);
    EXPECT_EQ(got.getStatusValue(), number);
  }
}

TEST_F(StoreTasks, KeepsDatesInWholeRange) {
  for (const long second : {-2147483647L, -1L, 0L, 1L, 2147483646L, 2147483647L}) {
    Task added = task("s");
    added.setDateTime(Task::TASK_FIELD_DUE, QDateTime::fromSecsSinceEpoch(second));
    added.setDateTime(Task::TASK_FIELD_ALARM, QDateTime());
    const Task got = get(add(added));
    EXPECT_EQ(got.getDateTime(Task::TASK_FIELD_DUE).toSecsSinceEpoch(), second);
    EXPECT_EQ(got.getDateTime(Task::TASK_FIELD_DUE).timeSpec(), Qt::LocalTime);
    EXPECT_EQ(got.getDateTime(Task::TASK_FIELD_ALARM), Task::noDate());
  }
}

TEST_F(StoreTasks, CreatesMissingCategory) {
  Task added = task("s");
  added.setString(Task::TASK_FIELD_CATEGORY, "work");
  const std::string log = logOf([&] { add(added); });
  EXPECT_THAT(log, HasLine("The category work is not exist!"));
  EXPECT_THAT(log, HasLine("No such category!Add it to DB."));
  EXPECT_EQ(get(added.getUINT32(Task::TASK_FIELD_UID)).getString(Task::TASK_FIELD_CATEGORY),
            QString("work"));
  EXPECT_THAT(sql("SELECT flag FROM task_table_category WHERE name = 'work'"), ElementsAre("0"));
  EXPECT_EQ(categories().back(), "work");
  const std::size_t number = categories().size();
  Task another = task("t");
  another.setString(Task::TASK_FIELD_CATEGORY, "work");
  add(another);
  EXPECT_EQ(categories().size(), number);
}

TEST_F(StoreTasks, StoresTaskWithoutCategoryInNullCategory) {
  const unsigned int uid = add(task("s"));
  EXPECT_TRUE(get(uid).getString(Task::TASK_FIELD_CATEGORY).isNull());
  EXPECT_THAT(sql("SELECT t.categoryUid = c.UID FROM task_table_task t, task_table_category c "
                  "WHERE c.name IS NULL"),
              ElementsAre("1"));
  // An empty name is a name like any other.
  Task empty = task("t");
  empty.setString(Task::TASK_FIELD_CATEGORY, "");
  const QString got = get(add(empty)).getString(Task::TASK_FIELD_CATEGORY);
  EXPECT_FALSE(got.isNull());
  EXPECT_TRUE(got.isEmpty());
  EXPECT_EQ(categories().back(), "");
}

TEST_F(StoreTasks, StoresNullTextsWithoutLogging) {
  store();
  Task bare;
  EXPECT_EQ(logOf([&] { add(bare); }), "");
  bare.setString(Task::TASK_FIELD_NOTE, "n");
  EXPECT_EQ(logOf([&] { EXPECT_EQ(store().updateTask(bare), TASK_ENG_OK); }),
            line("The summary isNull!!!"));
  const Task got = get(bare.getUINT32(Task::TASK_FIELD_UID));
  EXPECT_TRUE(got.getString(Task::TASK_FIELD_SUMMARY).isNull());
  EXPECT_EQ(got.getString(Task::TASK_FIELD_NOTE), QString("n"));
}

TEST_F(StoreTasks, GetOfUnknownUidLeavesRecordUnchanged) {
  add(task("s"));
  for (const unsigned int uid : {0U, 2U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
    Task record = complete();
    const Task before = record;
    const std::string log =
        logOf([&] { EXPECT_EQ(store().getTask(uid, record), TASK_ENG_NOT_FOUND); });
    EXPECT_THAT(log, HasLine("The task with uid " + std::to_string(static_cast<int>(uid)) +
                             " is not exist!"));
    EXPECT_THAT(record, IsSameTask(before));
  }
}

TEST_F(StoreTasks, ReadsCategoryOfTaskAsNoneAfterItsRemoval) {
  Task added = complete();
  const unsigned int uid = add(added);
  sql("DELETE FROM task_table_category WHERE name = 'meeting'");
  EXPECT_EQ(get(uid).getString(Task::TASK_FIELD_CATEGORY), QString("None"));
}

// Updating.

TEST_F(StoreTasks, UpdateChangesEveryFieldExceptUuid) {
  Task first = task("before");
  const unsigned int uid = add(first);
  const unsigned int neighbor = add(task("neighbor"));
  const Task other = get(neighbor);
  Task changed = complete();
  changed.setUINT32(Task::TASK_FIELD_UID, uid);
  EXPECT_EQ(store().updateTask(changed), TASK_ENG_OK);
  EXPECT_EQ(changed.getString(Task::TASK_FIELD_UUID), QString("my own identity"));
  Task expected = changed;
  expected.setString(Task::TASK_FIELD_UUID, first.getString(Task::TASK_FIELD_UUID));
  expected.setDateTime(Task::TASK_FIELD_REVISION, now());
  EXPECT_THAT(get(uid), IsSameTask(expected));
  EXPECT_THAT(get(neighbor), IsSameTask(other));
}

TEST_F(StoreTasks, UpdateAssignsMissingUuidButDoesNotStoreIt) {
  Task stored = complete();
  add(stored);
  stored.setString(Task::TASK_FIELD_UUID, QString());
  EXPECT_EQ(store().updateTask(stored), TASK_ENG_OK);
  EXPECT_EQ(stored.getString(Task::TASK_FIELD_UUID).length(), 36);
  EXPECT_EQ(get(stored.getUINT32(Task::TASK_FIELD_UID)).getString(Task::TASK_FIELD_UUID),
            QString("my own identity"));
}

TEST_F(StoreTasks, UpdateAdjustsEndToStatus) {
  const QDateTime ended = now().addDays(-3);
  const QDateTime none = Task::noDate();
  const struct {
    int status;
    QDateTime before;
    QDateTime after;
  } cases[] = {{0, none, now()}, {0, QDateTime(), now()}, {0, ended, ended},
               {1, ended, none}, {1, none, none},         {2, ended, ended},
               {2, none, none},  {-1, ended, ended},      {-1, none, none}};
  for (const auto& one : cases) {
    Task task = complete();
    task.setStatus(one.status);
    task.setDateTime(Task::TASK_FIELD_END, one.before);
    add(task);
    EXPECT_EQ(task.getDateTime(Task::TASK_FIELD_END), one.before);
    EXPECT_EQ(store().updateTask(task), TASK_ENG_OK);
    EXPECT_EQ(task.getDateTime(Task::TASK_FIELD_END), one.after) << one.status;
    EXPECT_EQ(task.getDateTime(Task::TASK_FIELD_REVISION), now());
    EXPECT_EQ(get(task.getUINT32(Task::TASK_FIELD_UID)).getDateTime(Task::TASK_FIELD_END),
              one.after);
  }
}

TEST_F(StoreTasks, UpdateRequiresStoredCategory) {
  Task stored = complete();
  const unsigned int uid = add(stored);
  const Task before = get(uid);
  stored.setString(Task::TASK_FIELD_CATEGORY, "unheard of");
  stored.setString(Task::TASK_FIELD_SUMMARY, "changed");
  const Task given = stored;
  const std::string log = logOf([&] { EXPECT_EQ(store().updateTask(stored), TASK_ENG_NOT_FOUND); });
  EXPECT_THAT(log, HasLine("The category unheard of is not exist!"));
  EXPECT_THAT(log, HasLine("Get categoryid failed![ret=3]"));
  EXPECT_THAT(get(uid), IsSameTask(before));
  EXPECT_THAT(stored, IsSameTask(given));
  EXPECT_EQ(categories().size(), 6U);
}

TEST_F(StoreTasks, UpdateOfUnknownUidChangesOnlyRecord) {
  const unsigned int uid = add(complete());
  const Task before = get(uid);
  Task unknown = complete();
  unknown.setUINT32(Task::TASK_FIELD_UID, uid + 1);
  unknown.setStatus(1);
  unknown.setString(Task::TASK_FIELD_UUID, QString());
  EXPECT_THAT(logOf([&] { EXPECT_EQ(store().updateTask(unknown), TASK_ENG_NOT_FOUND); }),
              HasLine("The task with uid " + std::to_string(uid + 1) + " is not exist!"));
  EXPECT_EQ(unknown.getDateTime(Task::TASK_FIELD_END), Task::noDate());
  EXPECT_EQ(unknown.getDateTime(Task::TASK_FIELD_REVISION), now());
  EXPECT_EQ(unknown.getString(Task::TASK_FIELD_UUID).length(), 36);
  EXPECT_THAT(get(uid), IsSameTask(before));
  EXPECT_EQ(count(), 1);
}

// Removing.

TEST_F(StoreTasks, RemovesOneTask) {
  const unsigned int uid = add(task("a"));
  const unsigned int other = add(task("b"));
  EXPECT_EQ(store().removeTask(uid), TASK_ENG_OK);
  EXPECT_THAT(uids(), ElementsAre(other));
  EXPECT_THAT(logOf([&] { EXPECT_EQ(store().removeTask(uid), TASK_ENG_NOT_FOUND); }),
              HasLine("The task with uid 1 is not exist!"));
  EXPECT_THAT(uids(), ElementsAre(other));
}

TEST_F(StoreTasks, DoesNotReuseUids) {
  const unsigned int last = add(task("a"));
  EXPECT_EQ(store().removeTask(last), TASK_ENG_OK);
  EXPECT_GT(add(task("b")), last);
  EXPECT_EQ(store().removeAll(), TASK_ENG_OK);
  close();
  EXPECT_EQ(add(task("c")), last + 2);
}

TEST_F(StoreTasks, RemoveTasksStopsAtFirstFailure) {
  for (int i = 0; i < 6; ++i)
    add(task("s"));
  QValueList<unsigned int> list;
  EXPECT_EQ(logOf([&] { EXPECT_EQ(store().removeTasks(list), TASK_ENG_BAD_PARAMETER); }),
            line("The parameter taskList is null!"));
  for (const unsigned int uid : {5U, 999U, 6U})
    list.append(uid);
  const std::string log =
      logOf([&] { EXPECT_EQ(store().removeTasks(list), TASK_ENG_DATABASE_FAILURE); });
  EXPECT_EQ(log,
            line("The task with uid 999 is not exist!") + line("Remove task with uid 999 failed!"));
  EXPECT_THAT(uids(), ElementsAre(1, 2, 3, 4, 6));
  list.clear();
  list.append(6);
  list.append(1);
  EXPECT_EQ(store().removeTasks(list), TASK_ENG_OK);
  EXPECT_THAT(uids(), ElementsAre(2, 3, 4));
}

// The UUID.

TEST_F(StoreTasks, GeneratesUuidOf36Characters) {
  std::set<QString> seen;
  for (int i = 0; i < 50; ++i) {
    Task added = task("s");
    add(added);
    const QString uuid = added.getString(Task::TASK_FIELD_UUID);
    EXPECT_THAT(
        uuid.toStdString(),
        testing::MatchesRegex("[0-9a-f]{8}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{12}"));
    EXPECT_TRUE(seen.insert(uuid).second);
    EXPECT_EQ(get(added.getUINT32(Task::TASK_FIELD_UID)).getString(Task::TASK_FIELD_UUID), uuid);
  }
}

TEST_F(StoreTasks, UuidUsesSeededSequenceAndThenRandomBytesOfKernel) {
  store();
  std::set<QString> ends;
  for (int round = 0; round < 2; ++round) {
    srandom(4711);
    Task added = task("s");
    add(added);
    const long afterwards = random();
    const QString uuid = added.getString(Task::TASK_FIELD_UUID);

    srandom(4711);
    srandom(static_cast<unsigned int>(random()));
    const long first = random();
    const long second = random() & 0xffff;
    const long third = random() & 0xffff;
    char groups[20];
    std::snprintf(groups, sizeof groups, "%08lx-%04lx-%04lx-", first, second, third);
    EXPECT_EQ(uuid.left(19).toStdString(), groups);
    for (int byte = 0; byte < 8; ++byte)
      random();
    EXPECT_EQ(random(), afterwards);
    // Two processes with the same seed still generate different UUIDs.
    EXPECT_TRUE(ends.insert(uuid.mid(19)).second);
  }
}

// Texts.

class StoreTexts : public StoreTest, public testing::WithParamInterface<QString> {};

TEST_P(StoreTexts, AreKeptUnitByUnit) {
  Task first = task(GetParam());
  first.setString(Task::TASK_FIELD_NOTE, GetParam());
  first.setString(Task::TASK_FIELD_UUID, GetParam().isNull() ? QString("u") : GetParam());
  const unsigned int uid = add(first);
  EXPECT_THAT(get(uid), IsSameTask(first));

  Task second = task("x");
  add(second);
  second.setString(Task::TASK_FIELD_SUMMARY, GetParam());
  second.setString(Task::TASK_FIELD_NOTE, GetParam());
  EXPECT_EQ(store().updateTask(second), TASK_ENG_OK);
  close();
  EXPECT_THAT(get(second.getUINT32(Task::TASK_FIELD_UID)), IsSameTask(second));

  // Lists return them unchanged, too.
  QValueList<Task> list;
  EXPECT_EQ(store().getTasks(list, Task::TASK_FIELD_DUE, Task::noDateSeconds, Task::noDateSeconds),
            TASK_ENG_OK);
  ASSERT_EQ(list.count(), 2U);
  for (const Task& got : list) {
    EXPECT_EQ(got.getString(Task::TASK_FIELD_NOTE), GetParam());
    EXPECT_EQ(got.getString(Task::TASK_FIELD_NOTE).isNull(), GetParam().isNull());
  }
}

QString units(std::initializer_list<char16_t> list) {
  QString result;
  for (const char16_t unit : list)
    result += QChar(unit);
  return result;
}

QString everyUnit() {
  QString result;
  for (int unit = 1; unit <= 0xFFFF; ++unit)
    result += QChar(unit);
  return result;
}

INSTANTIATE_TEST_SUITE_P(
    All, StoreTexts,
    testing::Values(QString(), QString(""), QString("007"), QString("1e5"), QString("-0.0"),
                    QString("9223372036854775808"), QString(" x "), QString("null"),
                    QString("'; drop table task_table_task; --"), QString("100%s %d :0 %n"),
                    QString("line\r\nline\ttab"), QString::fromUtf8("你好，世界"),
                    QString::fromUtf8("😀👩‍👩‍👧"), units({0xD800}), units({0xDC00}),
                    units({'a', 0xDBFF}), units({0xDC00, 0xD800}), units({0xFEFF}),
                    units({0xFEFF, 'a'}), units({0xFFFE}), units({0xFFFE, 'a', 'b'}),
                    units({0xFFFF}), units({'a', 0xFEFF, 'b'}), units({0x0100}), units({0x0001}),
                    units({'x', 0x00, 'y'}).left(1), QString(512, 'a'), QString(513, 'b'),
                    QString(4002, QChar(0x4e2d)), QString(4003, 'c'), QString(70000, 'd'),
                    everyUnit()));

TEST_F(StoreTasks, TextsEndAtFirstZeroUnit) {
  const QString text = units({'a', 0, 'b'});
  Task added = task(text);
  EXPECT_EQ(get(add(added)).getString(Task::TASK_FIELD_SUMMARY), QString("a"));
  Task empty = task(units({0, 'b'}));
  const QString got = get(add(empty)).getString(Task::TASK_FIELD_SUMMARY);
  EXPECT_TRUE(got.isEmpty());
  EXPECT_FALSE(got.isNull());
}

}  // namespace
