#include "task_uuids.h"

#include "store_test.h"
#include "ulodb2.h"

namespace {

class TaskUuids : public StoreTest {
protected:
  unsigned int addWith(const QString& uuid) {
    Task added = task("a");
    added.setString(Task::TASK_FIELD_UUID, uuid);
    return add(added);
  }
};

TEST_F(TaskUuids, FindTaskWithUuid) {
  addWith("one");
  const unsigned int two = addWith("two");
  addWith("TWO");
  unsigned int uid = 0;
  EXPECT_EQ(ulo::findTask("two", uid), ok);
  EXPECT_EQ(uid, two);
  uid = 77;
  EXPECT_EQ(ulo::findTask("tw", uid), notFound);
  EXPECT_EQ(ulo::findTask("", uid), notFound);
  EXPECT_EQ(uid, 77U);
}

TEST_F(TaskUuids, FindLowestUidOfSeveral) {
  const unsigned int first = addWith("same");
  addWith("same");
  addWith("other");
  unsigned int uid = 0;
  EXPECT_EQ(ulo::findTask("same", uid), ok);
  EXPECT_EQ(uid, first);
  QHash<QString, unsigned int> uids;
  EXPECT_EQ(ulo::findTasks({"same"}, uids), ok);
  EXPECT_EQ(uids.value("same"), first);
}

// Units of any value, long texts, and a byte order mark.
TEST_F(TaskUuids, CompareAllUnits) {
  const QString pair = QString::fromUtf8("\xF0\x9F\x9A\xB2");
  const std::vector<QString> uuids = {pair, pair.left(1),       QChar(0xFEFF) + QString("a"),
                                      "a",  QString(1000, 'u'), QString(1001, 'u')};
  std::vector<unsigned int> stored;
  for (const QString& uuid : uuids)
    stored.push_back(addWith(uuid));
  QHash<QString, unsigned int> uids;
  EXPECT_EQ(ulo::findTasks(uuids, uids), ok);
  for (std::size_t i = 0; i < uuids.size(); ++i) {
    unsigned int uid = 0;
    EXPECT_EQ(ulo::findTask(uuids[i], uid), ok) << i;
    EXPECT_EQ(uid, stored[i]) << i;
    EXPECT_EQ(uids.value(uuids[i]), stored[i]) << i;
  }
}

TEST_F(TaskUuids, FindOnlyWantedOfMany) {
  for (int i = 0; i < 50; ++i)
    addWith(QString::number(i));
  QHash<QString, unsigned int> uids;
  EXPECT_EQ(ulo::findTasks({"7", "49", "50"}, uids), ok);
  EXPECT_EQ(uids, (QHash<QString, unsigned int>{{"7", 8}, {"49", 50}}));
  EXPECT_EQ(ulo::findTasks({}, uids), ok);
  EXPECT_TRUE(uids.isEmpty());
}

TEST_F(TaskUuids, ReportFailureOfDatabase) {
  addWith("one");
  close();
  QHash<QString, unsigned int> uids{{"kept", 1}};
  unsigned int uid = 77;
  EXPECT_EQ(ulo::findTask("one", uid), databaseFailure);
  EXPECT_EQ(ulo::findTasks({"one"}, uids), databaseFailure);
  EXPECT_EQ(uid, 77U);
  EXPECT_EQ(uids.size(), 1);
}

}  // namespace
