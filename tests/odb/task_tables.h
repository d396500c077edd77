#pragma once

#include "ulodb2.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

// The tables that the store creates, and helpers that read a database.

inline const std::vector<std::string> taskTableStatements = {
    "create table task_table_task (UID integer auto, priority integer,status integer, note "
    "unicode, summary unicode, uuid unicode, alarm integer, due integer,end integer, categoryUid "
    "integer, revision integer, unique key( UID ))",
    "create index task_index_priority on task_table_task ( priority, due, UID desc)",
    "create index task_index_due on task_table_task ( due, priority, UID desc)",
    "create index task_index_alarm on task_table_task (alarm)",
    "create index task_index_categoryId on task_table_task (categoryUid)",
    "create index task_index_end on task_table_task (end, UID desc)",
    "create table task_table_category (UID integer auto, name varchar, flag bool,unique key(UID))",
    "create index task_index_category on main.task_table_category (name)",
    "insert into task_table_category(name, flag) values (get_null_varchar(), true)",
};

inline void createTaskTables() {
  for (const std::string& statement : taskTableStatements)
    ASSERT_EQ(DB_Exec("%s", statement.c_str()), DB_OK) << statement;
}

// Returns the rows of a query, with their cells joined by "|", or "error N" if it fails.
inline std::vector<std::string> rowsOf(const std::string& text, int columns,
                                       DB_PARAM block = nullptr) {
  DB_CURSOR cursor = nullptr;
  const int result = block == nullptr ? DB_Query(&cursor, "%s", text.c_str())
                                      : DB_QueryWithParam(&cursor, block, "%s", text.c_str());
  if (result != DB_OK)
    return {"error " + std::to_string(result)};
  std::vector<std::string> rows;
  while (DB_CSC_Eof(cursor) == 0) {
    std::string row;
    for (int column = 0; column < columns; ++column) {
      const char* text8 = DB_CSC_GetFieldAsChar(cursor, column);
      row += (column > 0 ? "|" : "") +
             (text8 != nullptr ? std::string(text8)
                               : std::to_string(DB_CSC_GetFieldAsInteger(cursor, column)));
    }
    rows.push_back(row);
    DB_CSC_MoveNext(cursor);
  }
  DB_CSC_Close(cursor);
  return rows;
}
