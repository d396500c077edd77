#include "write_transaction.h"

#include "store_test.h"
#include "ulodb2.h"

#include <thread>

namespace {

class WriteTransactionTest : public StoreTest {
protected:
  int committedTasks() const {
    return std::stoi(sql("SELECT count(*) FROM task_table_task").at(0));
  }
};

TEST_F(WriteTransactionTest, CommitsWhatStoresOfTheThreadStored) {
  store();
  Store other;
  Task second = task("second");
  ulo::WriteTransaction transaction;
  ASSERT_TRUE(transaction);
  add(task("first"));
  ASSERT_EQ(other.addTask(second), ok);
  EXPECT_EQ(count(), 2);
  EXPECT_EQ(committedTasks(), 0);
  EXPECT_EQ(transaction.commit(), DB_OK);
  EXPECT_FALSE(transaction);
  EXPECT_EQ(committedTasks(), 2);
}

TEST_F(WriteTransactionTest, DiscardsWhatWasNotCommitted) {
  const unsigned int kept = add(task("kept"));
  {
    ulo::WriteTransaction transaction;
    ASSERT_TRUE(transaction);
    add(task("dropped"));
    ASSERT_EQ(store().removeTask(kept), ok);
  }
  EXPECT_EQ(uids(), std::vector{kept});
}

TEST_F(WriteTransactionTest, OutlivesStores) {
  prepare();
  ulo::WriteTransaction transaction;
  ASSERT_TRUE(transaction);
  add(task("first"));
  close();
  EXPECT_EQ(transaction.commit(), DB_OK);
  EXPECT_EQ(count(), 1);
}

TEST_F(WriteTransactionTest, NestsAndOutermostDecides) {
  store();
  for (const bool keep : {false, true}) {
    ulo::WriteTransaction outer;
    {
      ulo::WriteTransaction inner;
      ASSERT_TRUE(inner);
      add(task("first"));
      EXPECT_EQ(inner.commit(), DB_OK);
    }
    EXPECT_EQ(committedTasks(), 0);
    if (keep) {
      EXPECT_EQ(outer.commit(), DB_OK);
    }
  }
  EXPECT_EQ(committedTasks(), 1);
}

TEST_F(WriteTransactionTest, ReportsThreadThatReads) {
  store();
  ASSERT_EQ(DB_BeginRead(), DB_OK);
  EXPECT_EQ(ulo::WriteTransaction().result(), DB_TRANSACTION);
  ASSERT_EQ(DB_EndRead(), DB_OK);
}

TEST_F(WriteTransactionTest, CommitsOnce) {
  store();
  ulo::WriteTransaction transaction;
  EXPECT_EQ(transaction.commit(), DB_OK);
  EXPECT_EQ(transaction.commit(), DB_TRANSACTION);
  // The database is free again.
  EXPECT_TRUE(ulo::WriteTransaction());
}

TEST_F(WriteTransactionTest, ReportsDatabaseThatCannotBeOpened) {
  std::filesystem::create_directory(directory_.path() / "tasks.db");
  ulo::WriteTransaction transaction;
  EXPECT_FALSE(transaction);
  EXPECT_NE(transaction.result(), DB_OK);
  EXPECT_EQ(transaction.commit(), transaction.result());
}

TEST_F(WriteTransactionTest, WritersWaitForEachOther) {
  constexpr int each = 20;
  const unsigned int uid = add(task("0"));
  // Each adds one to the number in the summary.
  const auto count = [&] {
    Store mine;
    for (int i = 0; i < each; ++i) {
      ulo::WriteTransaction transaction;
      Task read;
      if (!transaction || mine.getTask(uid, read) != ok)
        return;
      read.setString(Task::TASK_FIELD_SUMMARY,
                     QString::number(read.getString(Task::TASK_FIELD_SUMMARY).toInt() + 1));
      EXPECT_EQ(mine.updateTask(read), ok);
      EXPECT_EQ(transaction.commit(), DB_OK);
    }
  };
  std::thread first(count);
  std::thread second(count);
  first.join();
  second.join();
  EXPECT_EQ(get(uid).getString(Task::TASK_FIELD_SUMMARY).toInt(), 2 * each);
}

}  // namespace
