// A store with contents that no program writes on purpose: every task can be listed, opened and
// completed.

#include "display/display_test.h"

namespace {

// The values of a row in SQL; others are those of a task that needs action.
struct Row {
  std::string summary = "'plain'";
  std::string note = "''";
  std::string status = "1";
  std::string priority = "5";
  std::string due = "2147483647";
  std::string category = "1";
};

std::string times(int count, const std::string& text) {
  return "replace(hex(zeroblob(" + std::to_string(count) + ")), '00', " + text + ")";
}

class HostileStore : public TasksOnDisplay {
protected:
  void addRow(const Row& row) {
    sql("INSERT INTO task_table_task (summary, note, status, priority, due, alarm, \"end\", "
        "categoryUid, revision) VALUES (" +
        row.summary + ", " + row.note + ", " + row.status + ", " + row.priority + ", " + row.due +
        ", 2147483647, 2147483647, " + row.category + ", 0)");
  }
  void addTexts() {
    for (const char* summary :
         {"NULL", "''", "' '", "char(1, 7, 8, 27, 10, 13, 9, 127, 133)",
          "'left ' || char(8238) || 'thgir' || char(8206, 8207, 8294, 8297)", "char(55357)",
          "'<b>bold</b> &amp; %1 %n &File'", "char(8232, 8233, 65533, 65279)"})
      addRow({.summary = summary});
    addRow({.summary = times(512, "char(19968)")});
    addRow({.summary = times(256, "char(128512)")});
    addRow({.summary = times(512, "'w'")});
    for (const int length : {1, 511, 4001, 4002})
      addRow({.note = times(length, "char(20108)")});
    addRow({.note = times(4002, "char(10)")});
    addRow({.note = times(2001, "char(128512)")});
  }
  void addValues() {
    for (const char* status : {"99", "-1", "2147483647", "7"})
      addRow({.status = status});
    for (const char* priority : {"-5", "0", "10", "2147483647"})
      addRow({.priority = priority});
    for (const char* due : {"0", "-1", "-2147483648", "2147483646"})
      addRow({.due = due});
    for (const char* category : {"NULL", "0", "99", "-1"})
      addRow({.category = category});
  }
  // The fields that must not change when a task is completed, in the order of the list.
  std::vector<std::string> lasting() {
    std::vector<std::string> result;
    for (const QJsonValue& task : tasks()) {
      std::string all;
      for (const char* field : {"uid", "summary", "note", "priority", "due", "alarm", "uuid"})
        all += testing::PrintToString(task[field].toVariant().toString().toStdString()) + ' ';
      result.push_back(all);
    }
    return result;
  }
  int completed() {
    int count = 0;
    for (const QJsonValue& task : tasks())
      count += task["completed"].toBool() ? 1 : 0;
    return count;
  }
  // Opens every task from the first on and returns to its row.
  void openEach(int count) {
    press({"Home"});
    for (int i = 0; i < count; ++i) {
      press({"Return"});
      ASSERT_TRUE(waitFor([&] { return !display_.hasTitle(listTitle); })) << i;
      press({"Page_Down", "F3"});
      ASSERT_TRUE(display_.focus(listTitle)) << i;
      press({"Down"});
    }
  }
  void checkOffEach(int count) {
    press({"Home"});
    for (int i = 0; i < count; ++i)
      press({"space", "Down"});
    ASSERT_TRUE(waitFor([&] { return completed() == count; })) << completed();
  }
  // Visits the list in all ways, opens and completes tasks, and exits.
  void useAll() {
    const std::vector<std::string> before = lasting();
    const int count = static_cast<int>(before.size());
    start();
    ASSERT_TRUE(shows("All Tasks"));
    press({"End", "Page_Up", "Page_Up", "Home", "Page_Down", "Page_Down", "Up"});
    ASSERT_NO_FATAL_FAILURE(openEach(count));
    ASSERT_NO_FATAL_FAILURE(checkOffEach(count));
    leave();
    EXPECT_EQ(lasting(), before);
    expectSound();
  }
};

TEST_F(HostileStore, ShowsTextsOfAnyKind) {
  succeed({"stats"});
  addTexts();
  useAll();
}

TEST_F(HostileStore, ShowsValuesOutOfRange) {
  succeed({"stats"});
  addValues();
  useAll();
}

TEST_F(HostileStore, ShowsNullCategoryWithName) {
  add({"a"});
  add({"b", "--category", "work"});
  sql("UPDATE task_table_category SET name = 'renamed' WHERE name IS NULL");
  useAll();
}

}  // namespace
