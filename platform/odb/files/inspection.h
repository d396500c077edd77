// Checks whether a database file is sound.
#pragma once

#include "base/line_sink.h"

#include <sqlite3.h>

#include <string>
#include <vector>

namespace ulo::odb {

struct TableShape {
  struct Column {
    std::string name;
    bool isText = false;
    bool isUid = false;
  };
  std::string name;
  std::vector<Column> columns;

  // The column names for SQL, quoted and separated by commas.
  [[nodiscard]] std::string columnList() const;
};

// Returns the tables of programs in a database, without those that are created later. Throws
// Failure.
std::vector<TableShape> shapesOf(sqlite3* database);

// Reports every defect in the file's structure, in its UID counters, and in its tables, indexes and
// triggers compared with those of the sound database file `sample`. Returns the number of reports.
// Throws Failure if the file cannot be opened or read.
int inspect(sqlite3* database, const std::string& sample, const LineSink& report);

}  // namespace ulo::odb
