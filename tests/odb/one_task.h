#pragma once

#include "task_tables.h"
#include "temporary_directory.h"

#include <gtest/gtest.h>

#include <string>

inline const std::string uidsOfTasks =
    "sml:declare schema s (uid integer);declare buffer schema s;"
    "cursor $c=open_cursor('task_table_task');while($c->move_next()){"
    "buffer_put(uid, $c->get_field('UID'));buffer_move_next();};";
inline const std::string removeAllTasks =
    "sml:cursor $c=open_cursor('task_table_task');while($c->move_next()){$c->del();};";

inline int addTask() {
  return DB_Exec("insert into task_table_task (priority) values (1)");
}

// An open database with the task tables and one task, whose UID is 1.
class OneTask : public testing::Test {
protected:
  void SetUp() override {
    ASSERT_EQ(DB_Open(1), DB_OK);
    createTaskTables();
    ASSERT_EQ(addTask(), DB_OK);
  }
  void TearDown() override { DB_Close(); }

  DataDirectory directory_;
};
