#include "inspection.h"

#include "base/failure.h"
#include "base/sql_name.h"
#include "generation.h"
#include "journal_schema.h"
#include "sqlite/handle.h"
#include "sqlite/journal.h"
#include "sqlite/statement.h"
#include "sqlite/texts.h"

#include <algorithm>
#include <map>
#include <utility>

namespace ulo::odb {
namespace {

struct SchemaEntry {
  std::string type;
  std::string sql;
};

std::map<std::string, SchemaEntry> schemaOf(sqlite3* database) {
  std::map<std::string, SchemaEntry> entries;
  SqlStatement statement(database, "SELECT name, type, sql FROM sqlite_schema");
  while (statement.step())
    entries[statement.text(0)] = {statement.text(1), statement.text(2)};
  return entries;
}

// The journal is created when a store of an older version is opened.
bool isMadeLater(const std::string& name) {
  return name.rfind(journalPrefix, 0) == 0;
}

std::string encodingOf(sqlite3* database) {
  SqlStatement statement(database, "PRAGMA encoding");
  return statement.step() ? statement.text(0) : std::string();
}

class Inspector {
public:
  Inspector(sqlite3* database, const LineSink& report) : database_(database), report_(report) {}

  int defects() const { return defects_; }

  void checkStructure() {
    // Nothing can be examined without the list of tables.
    numberOf(database_, "SELECT count(*) FROM sqlite_schema");
    try {
      SqlStatement check(database_, "PRAGMA integrity_check");
      while (check.step()) {
        const std::string line = check.text(0);
        if (line != "ok")
          found(line);
      }
    } catch (const Failure& failure) {
      // Some damage aborts the check.
      if (failure.code() != DB_CORRUPT)
        throw;
      found(failure.what());
    }
  }

  void compareWith(const std::string& sample) {
    const Handle handle = openFile(sample);
    if (encodingOf(database_) != encodingOf(handle.get()))
      found("the texts are in the encoding " + encodingOf(database_));
    auto wanted = schemaOf(handle.get());
    const auto present = schemaOf(database_);
    // Created with the first text, which the sample lacks.
    const auto& texts = textsSchema();
    if (std::any_of(texts.begin(), texts.end(),
                    [&](const auto& entry) { return present.count(entry.first) != 0; })) {
      for (const auto& [name, sql] : texts)
        wanted[name] = {name == textsTable ? "table" : "trigger", sql};
    }
    const bool isOlder = std::none_of(present.begin(), present.end(),
                                      [](const auto& entry) { return isMadeLater(entry.first); });
    for (const auto& [name, entry] : wanted) {
      const auto here = present.find(name);
      if (here == present.end()) {
        if (!isOlder || !isMadeLater(name))
          found("the " + entry.type + " " + name + " is missing");
      } else if (here->second.type != entry.type || here->second.sql != entry.sql) {
        found("the " + entry.type + " " + name + " is not the one of this program");
      }
    }
    for (const auto& [name, entry] : present) {
      // Ignore SQLite's own tables, such as the statistics of ANALYZE.
      if (wanted.count(name) == 0 && name.rfind("sqlite_", 0) != 0)
        found("the " + entry.type + " " + name + " is unknown");
    }
  }

  void checkCounters() {
    if (defects_ > 0)
      return;
    for (const TableShape& table : shapesOf(database_)) {
      std::int64_t highest = numberOf(database_, "SELECT max(rowid) FROM " + quoteName(table.name));
      if (isFollowed(table.name))
        highest = std::max(highest, highestUidOfJournal(database_));
      const std::int64_t counter =
          numberOf(database_, "SELECT seq FROM sqlite_sequence WHERE name = '" + table.name + "'");
      if (highest > counter)
        found("the UID " + std::to_string(highest) + " of " + table.name +
              " is above the counter, which is " + std::to_string(counter));
    }
  }

  void checkTexts() {
    if (defects_ > 0 || !hasTexts(database_))
      return;
    const std::int64_t orphans =
        numberOf(database_, "SELECT count(*) FROM ulo_texts WHERE uid NOT IN (SELECT " +
                                quoteName(followedTable.uidColumn) + " FROM " +
                                quoteName(followedTable.name) + ")");
    if (orphans > 0)
      found("the table ulo_texts has texts of tasks that are not stored: " +
            std::to_string(orphans));
  }

private:
  void found(const std::string& defect) {
    ++defects_;
    report_(defect);
  }

  sqlite3* database_;
  const LineSink& report_;
  int defects_ = 0;
};

}  // namespace

std::string TableShape::columnList() const {
  std::string list;
  for (const Column& column : columns)
    list += (list.empty() ? "" : ", ") + quoteName(column.name);
  return list;
}

std::vector<TableShape> shapesOf(sqlite3* database) {
  std::vector<TableShape> shapes;
  SqlStatement tables(database, "SELECT name FROM sqlite_schema WHERE type = 'table' AND name NOT "
                                "LIKE 'sqlite\\_%' ESCAPE '\\' ORDER BY name");
  while (tables.step()) {
    TableShape shape{tables.text(0), {}};
    if (isMadeLater(shape.name))
      continue;
    SqlStatement columns(database, "SELECT name, type, pk FROM pragma_table_info('" + shape.name +
                                       "') ORDER BY cid");
    while (columns.step())
      shape.columns.push_back({columns.text(0), columns.text(1).find("TEXT") != std::string::npos,
                               columns.integer(2) != 0});
    shapes.push_back(std::move(shape));
  }
  return shapes;
}

int inspect(sqlite3* database, const std::string& sample, const LineSink& report) {
  Inspector inspector(database, report);
  inspector.checkStructure();
  inspector.compareWith(sample);
  inspector.checkCounters();
  inspector.checkTexts();
  return inspector.defects();
}

}  // namespace ulo::odb
