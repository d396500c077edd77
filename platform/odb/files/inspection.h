// Whether a database file is sound.
#pragma once

#include "files/store_file.h"

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

  // The columns as SQL, quoted and separated by commas.
  [[nodiscard]] std::string columnList() const;
};

// The tables of programs in a database, without those that are made later. Throws Failure.
std::vector<TableShape> shapesOf(sqlite3* database);

// Reports everything that is wrong with the file's structure, its tables, indexes and triggers
// compared with those of the sound database file `sample`, and its counters of UIDs. Returns the
// number of reports. Throws a Failure if the file can't be opened or read.
int inspect(sqlite3* database, const std::string& sample, const Report& report);

}  // namespace ulo::odb
