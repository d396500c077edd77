#include "recovery.h"

#include "base/failure.h"
#include "base/sql_name.h"
#include "generation.h"
#include "inspection.h"
#include "salvage.h"
#include "sqlite/handle.h"
#include "sqlite/journal.h"
#include "sqlite/layout.h"
#include "sqlite/statement.h"
#include "sqlite/texts.h"
#include "store_file.h"
#include "store_layout.h"
#include "write_ahead_log.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <map>
#include <optional>
#include <set>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ulo::odb {
namespace {

// Added to the highest remaining UID if the UID counter cannot be read.
constexpr std::int64_t counterMargin = 10000;

constexpr std::size_t encodingAt = 56;
constexpr char bigEndianUtf16 = 3;

struct FileId {
  dev_t device;
  ino_t inode;
};

std::optional<FileId> idOf(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0)
    return std::nullopt;
  return FileId{status.st_dev, status.st_ino};
}

bool isSameFile(const std::string& one, const std::string& other) {
  const std::optional<FileId> a = idOf(one);
  const std::optional<FileId> b = idOf(other);
  return a && b && a->device == b->device && a->inode == b->inode;
}

// Copies a consistent snapshot of all rows, compacted and with rebuilt indexes.
void copyRows(sqlite3* database, const std::string& to) {
  SqlStatement copy(database, "VACUUM INTO ?");
  sqlite3_bind_text(copy.handle(), 1, to.c_str(), -1, SQLITE_STATIC);
  copy.run();
}

std::string uriOf(const std::string& path, const char* parameters) {
  std::string uri = "file:";
  for (const char c : path) {
    if (c == '?' || c == '#' || c == '%') {
      constexpr const char* digits = "0123456789ABCDEF";
      uri += '%';
      uri += digits[static_cast<unsigned char>(c) >> 4U];
      uri += digits[static_cast<unsigned char>(c) & 0xFU];
    } else {
      uri += c;
    }
  }
  return uri + parameters;
}

void requireReadable(const std::string& file) {
  if (file.empty())
    throw Failure(DB_BAD_ARGUMENT, "the name of the file is empty");
  if (!Descriptor(open(file.c_str(), O_RDONLY | O_CLOEXEC)).isOpen())
    throw Failure(DB_IO, file + ": " + std::strerror(errno));
}

Failure unsound(const std::string& file) {
  return {DB_CORRUPT, file + " is not a sound store"};
}

// Copies the rows of a file that may be on a read-only medium.
void copyFrom(const std::string& file, const std::string& to) try {
  requireReadable(file);
  try {
    const Handle handle = openFile(uriOf(file, "?mode=ro"), SQLITE_OPEN_READONLY);
    copyRows(handle.get(), to);
  } catch (const Failure& failure) {
    // A file copied while it had a write-ahead log cannot be opened where no log can be created.
    if (failure.code() != DB_IO || access((file + "-wal").c_str(), F_OK) == 0)
      throw;
    const Handle handle = openFile(uriOf(file, "?immutable=1"), SQLITE_OPEN_READONLY);
    copyRows(handle.get(), to);
  }
} catch (const Failure& failure) {
  if (failure.code() == DB_CORRUPT)
    throw unsound(file);
  throw;
}

// Closes without copying the write-ahead log into the file.
Handle openUnchanged(const std::string& path) {
  Handle handle = openFile(path);
  sqlite3_db_config(handle.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
  return handle;
}

// Returns true if a newer program has written the store.
bool isNewer(const StorePlace& place) {
  try {
    const std::int64_t layout = layoutOf(openUnchanged(place.path()).get());
    return layout > knownLayout && layout <= highestLayout;
  } catch (const Failure&) {
    return false;
  }
}

std::int64_t lastEntryOf(const std::string& path, bool keepsLog = false) {
  try {
    return lastEntry((keepsLog ? openUnchanged(path) : openFile(path)).get());
  } catch (const Failure&) {
    return 0;
  }
}

void beginGeneration(const std::string& path, std::int64_t floor) {
  const Handle handle = openFile(path);
  execute(handle.get(), "BEGIN IMMEDIATE");
  renewGeneration(handle.get(), floor);
  execute(handle.get(), "COMMIT");
}

std::string sentenceOfKept(const std::string& kept) {
  return kept.empty() ? std::string() : "the old file is kept as " + kept;
}

// A working copy of a damaged file.
class Scratch {
public:
  Scratch(const StorePlace& place, const std::string& prefix, const std::string& sample)
      : file_(prefix) {
    std::string content;
    if (idOf(place.path()))
      content = contentOf(place.path());
    if (idOf(place.log()))
      applyLog(content, contentOf(place.log()));
    const std::string sound = contentOf(sample);
    content.resize(std::max(content.size(), fileHeaderSize));
    writeContent(path(), content);
    if (!isDatabase()) {
      // Header fields that do not depend on the rows: the format, but neither sizes nor positions.
      content.replace(0, 24, sound, 0, 24);
      content.replace(44, 4, sound, 44, 4);
      content.replace(encodingAt, 4, sound, encodingAt, 4);
      writeContent(path(), content);
    }
  }

  [[nodiscard]] const std::string& path() const { return file_.path(); }

private:
  [[nodiscard]] bool isDatabase() const {
    try {
      const Handle handle = openFile(path());
      SqlStatement encoding(handle.get(), "PRAGMA encoding");
      SqlStatement pages(handle.get(), "PRAGMA page_count");
      return pages.step() && encoding.step() && encoding.text(0).rfind("UTF-16", 0) == 0;
    } catch (const Failure& failure) {
      return failure.code() != DB_CORRUPT;
    }
  }

  FreshFile file_;
};

// The data that the pages of a damaged file still hold.
class Remains {
public:
  Remains(const Scratch& scratch, const std::vector<TableShape>& shapes)
      : content_(contentOf(scratch.path())) {
    for (const TableShape& shape : shapes)
      tables_.push_back({shape, {}, std::nullopt});
    salvageRows(content_, [this](SalvagedRow&& row) { take(std::move(row)); });
    forgetRemoved();
    readCounters(scratch.path());
  }

  struct Table {
    TableShape shape;
    std::map<std::int64_t, std::vector<SalvagedValue>> rows;
    std::optional<std::int64_t> counter;
  };
  [[nodiscard]] const std::vector<Table>& tables() const { return tables_; }
  // The texts of tasks by UID, also of tasks that are lost.
  [[nodiscard]] const std::map<std::int64_t, std::string>& texts() const { return texts_; }
  [[nodiscard]] bool isEmpty() const {
    return std::all_of(tables_.begin(), tables_.end(),
                       [](const Table& table) { return table.rows.empty(); });
  }
  [[nodiscard]] bool isBigEndian() const {
    return content_.size() > encodingAt + 3 && content_[encodingAt + 3] == bigEndianUtf16;
  }

private:
  static bool fits(const TableShape& shape, const SalvagedRow& row) {
    if (row.values.size() != shape.columns.size() || row.rowid < 1 || row.rowid > INT32_MAX)
      return false;
    for (std::size_t i = 0; i < shape.columns.size(); ++i) {
      SalvagedValue::Kind kind = row.values[i].kind;
      const bool isNull = kind == SalvagedValue::Kind::null;
      // Texts that SQLite would change are stored as blobs.
      if (kind == SalvagedValue::Kind::blob)
        kind = SalvagedValue::Kind::text;
      const SalvagedValue::Kind wanted =
          shape.columns[i].isText ? SalvagedValue::Kind::text : SalvagedValue::Kind::integer;
      if (shape.columns[i].isUid ? !isNull : !isNull && kind != wanted)
        return false;
    }
    return true;
  }

  void take(SalvagedRow&& row) {
    noteCounter(row);
    noteChange(row);
    if (isText(row)) {
      texts_.emplace(row.rowid, std::move(row.values[1].bytes));
      return;
    }
    for (Table& table : tables_) {
      if (fits(table.shape, row)) {
        table.rows.emplace(row.rowid, std::move(row.values));
        return;
      }
    }
  }

  // Returns true for a row of the texts: the UID of a task, and bytes.
  static bool isText(const SalvagedRow& row) {
    return row.values.size() == 2 && row.values[0].kind == SalvagedValue::Kind::null &&
           row.values[1].kind == SalvagedValue::Kind::blob;
  }

  // Reads a row of SQLite's table of UID counters: a name and a number.
  void noteCounter(const SalvagedRow& row) {
    if (row.values.size() != 2 || row.values[0].kind != SalvagedValue::Kind::text ||
        row.values[1].kind != SalvagedValue::Kind::integer)
      return;
    for (Table& table : tables_) {
      std::string units;
      for (const char c : table.shape.name) {
        if (isBigEndian())
          units += '\0';
        units += c;
        if (!isBigEndian())
          units += '\0';
      }
      if (row.values[0].bytes == units)
        table.counter = std::max(table.counter.value_or(0), row.values[1].integer);
    }
  }

  // Reads a row of the journal: the entry's number, a time, a UID and the type of change.
  void noteChange(const SalvagedRow& row) {
    constexpr std::size_t columns = 4;
    constexpr std::int64_t removed = 3;
    if (row.values.size() != columns || row.values[0].kind != SalvagedValue::Kind::null)
      return;
    for (std::size_t i = 1; i < columns; ++i) {
      if (row.values[i].kind != SalvagedValue::Kind::integer)
        return;
    }
    const std::int64_t uid = row.values[2].integer;
    Fate& fate = fates_[uid];
    if (row.rowid >= fate.entry)
      fate = {row.rowid, row.values[3].integer == removed};
  }

  // Unused pages still hold deleted rows.
  void forgetRemoved() {
    for (Table& table : tables_) {
      if (!isFollowed(table.shape.name))
        continue;
      for (const auto& [uid, fate] : fates_) {
        if (fate.isRemoved) {
          table.rows.erase(uid);
          texts_.erase(uid);
        }
      }
    }
  }

  void readCounters(const std::string& path) {
    for (Table& table : tables_) {
      try {
        const Handle handle = openFile(path);
        const std::int64_t counter =
            numberOf(handle.get(),
                     "SELECT seq FROM sqlite_sequence WHERE name = '" + table.shape.name + "'");
        if (counter > 0)
          table.counter = std::max(table.counter.value_or(0), counter);
      } catch (const Failure&) {
        // Use the counter found in the pages, if any.
      }
      std::int64_t highest = table.rows.empty() ? 0 : table.rows.rbegin()->first;
      if (isFollowed(table.shape.name) && !fates_.empty())
        highest = std::max(highest, fates_.rbegin()->first);
      if (!table.counter)
        lowest_[table.shape.name] = highest + counterMargin;
      else
        lowest_[table.shape.name] = std::max(*table.counter, highest);
    }
  }

public:
  // New rows get UIDs above this.
  [[nodiscard]] std::int64_t counterOf(const Table& table) const {
    return std::min<std::int64_t>(lowest_.at(table.shape.name), INT32_MAX);
  }

private:
  struct Fate {
    std::int64_t entry = 0;
    bool isRemoved = false;
  };

  std::string content_;
  std::vector<Table> tables_;
  std::map<std::int64_t, std::string> texts_;
  std::map<std::int64_t, Fate> fates_;
  std::map<std::string, std::int64_t> lowest_;
};

// Tries a plain copy of all rows. Returns false unless it is sound and has all the remaining rows.
bool copyWhole(const Scratch& scratch, const Remains& remains, const std::string& sample,
               const std::string& to) {
  try {
    copyRows(openFile(scratch.path()).get(), to);
    const Handle handle = openFile(to);
    if (inspect(handle.get(), sample, [](const std::string&) {}) > 0)
      return false;
    for (const Remains::Table& table : remains.tables()) {
      SqlStatement row(handle.get(),
                       "SELECT 1 FROM " + quoteName(table.shape.name) + " WHERE rowid = ?");
      for (const auto& [rowid, values] : table.rows) {
        sqlite3_bind_int64(row.handle(), 1, rowid);
        const bool isThere = row.step();
        row.reset();
        if (!isThere)
          return false;
      }
    }
    Texts texts(handle.get());
    return std::all_of(remains.texts().begin(), remains.texts().end(),
                       [&](const auto& each) { return texts.get(each.first).has_value(); });
  } catch (const Failure& failure) {
    if (failure.code() == DB_FULL || failure.code() == DB_IO || failure.code() == DB_NO_MEMORY)
      throw;
    return false;
  }
}

class Rebuilding {
public:
  Rebuilding(sqlite3* database, const Remains& remains) : database_(database), remains_(remains) {}

  void run() {
    execute(database_, "BEGIN IMMEDIATE");
    const std::vector<std::string> triggers = dropTriggers();
    for (const Remains::Table& table : remains_.tables()) {
      if (!table.rows.empty())
        fill(table);
      setCounter(table);
    }
    for (const std::string& sql : triggers)
      execute(database_, sql);
    Texts texts(database_);
    for (const auto& [uid, text] : remains_.texts())
      static_cast<void>(texts.set(uid, text));  // unless the task is lost
    execute(database_, "COMMIT");
  }

private:
  // The triggers would record the rescued rows as changes.
  std::vector<std::string> dropTriggers() {
    std::vector<std::string> names;
    std::vector<std::string> sql;
    {
      SqlStatement triggers(database_,
                            "SELECT name, sql FROM sqlite_schema WHERE type = 'trigger'");
      while (triggers.step()) {
        names.push_back(triggers.text(0));
        sql.push_back(triggers.text(1));
      }
    }
    for (const std::string& name : names)
      execute(database_, "DROP TRIGGER " + quoteName(name));
    return sql;
  }

  void fill(const Remains::Table& table) {
    execute(database_, "DELETE FROM " + quoteName(table.shape.name));
    std::string places;
    for (std::size_t i = 0; i < table.shape.columns.size(); ++i)
      places += i == 0 ? "?" : ", ?";
    SqlStatement insert(database_, "INSERT INTO " + quoteName(table.shape.name) + " (" +
                                       table.shape.columnList() + ") VALUES (" + places + ")");
    for (const auto& [rowid, values] : table.rows) {
      for (std::size_t i = 0; i < values.size(); ++i)
        bindValue(insert.handle(), static_cast<int>(i) + 1, values[i]);
      for (std::size_t i = 0; i < values.size(); ++i) {
        if (table.shape.columns[i].isUid)
          sqlite3_bind_int64(insert.handle(), static_cast<int>(i) + 1, rowid);
      }
      insert.run();
      insert.reset();
    }
  }

  void bindValue(sqlite3_stmt* statement, int place, const SalvagedValue& value) const {
    if (value.kind == SalvagedValue::Kind::integer)
      sqlite3_bind_int64(statement, place, value.integer);
    else if (value.kind == SalvagedValue::Kind::text)
      sqlite3_bind_text64(statement, place, value.bytes.data(),
                          value.bytes.size() & ~std::size_t{1}, SQLITE_STATIC,
                          remains_.isBigEndian() ? SQLITE_UTF16BE : SQLITE_UTF16LE);
    else if (value.kind == SalvagedValue::Kind::blob)
      sqlite3_bind_blob64(statement, place, value.bytes.data(), value.bytes.size(), SQLITE_STATIC);
    else
      sqlite3_bind_null(statement, place);
  }

  void setCounter(const Remains::Table& table) {
    const std::string number = std::to_string(remains_.counterOf(table));
    execute(database_, "UPDATE sqlite_sequence SET seq = max(seq, " + number + ") WHERE name = '" +
                           table.shape.name + "'");
    execute(database_, "INSERT INTO sqlite_sequence (name, seq) SELECT '" + table.shape.name +
                           "', " + number +
                           " WHERE NOT EXISTS (SELECT 1 FROM sqlite_sequence "
                           "WHERE name = '" +
                           table.shape.name + "')");
  }

  sqlite3* database_;
  const Remains& remains_;
};

}  // namespace

int inspectStore(const StorePlace& place, const std::string& sample, const LineSink& report) {
  requireNotLost(place);
  if (!hasContent(place.path()))
    return 0;
  const auto attempt = [&](bool alone) {
    // Do not modify a damaged file.
    const Handle handle = openUnchanged(place.path());
    if (alone)
      execute(handle.get(), "PRAGMA locking_mode = EXCLUSIVE");
    requireKnownLayout(handle.get(), place.path());
    return inspect(handle.get(), sample, report);
  };
  try {
    return attempt(false);
  } catch (const Failure& failure) {
    // A full disk has no room for the index of the log that programs share.
    if (failure.code() != DB_FULL)
      throw;
  }
  return attempt(true);
}

void backUp(const StorePlace& place, const std::string& file, bool overwrite) {
  requireNotLost(place);
  if (isSameFile(file, place.path()))
    throw Failure(DB_BAD_ARGUMENT, file + " is the store itself");
  if (!overwrite && idOf(file))
    throw Failure(DB_CONSTRAINT, file + " exists already");
  const Handle store = openFile(place.path());
  requireKnownLayout(store.get(), place.path());
  FreshFile fresh(file + ".");
  copyRows(store.get(), fresh.path());
  const Handle copy = openFile(fresh.path());
  SqlStatement check(copy.get(), "PRAGMA integrity_check(1)");
  if (!check.step() || check.text(0) != "ok")
    throw Failure(DB_CORRUPT, "the copy is not sound: " + check.text(0));
  fresh.moveTo(file, overwrite);
}

void restore(const StorePlace& place, const std::string& file, const std::string& sample,
             const LineSink& report) {
  if (isSameFile(file, place.path()))
    throw Failure(DB_BAD_ARGUMENT, file + " is the store itself");
  // A newer store is kept as it is, with its log.
  const bool keepsLog = isNewer(place);
  if (!keepsLog)
    foldLog(place);
  const std::int64_t floor = lastEntryOf(place.path(), keepsLog);
  const StoreLock lock(place);
  // Check the copy, because the copy becomes the store.
  FreshFile fresh(freshPrefix(place));
  copyFrom(file, fresh.path());
  requireKnownLayout(openFile(fresh.path()).get(), file);
  if (inspect(openFile(fresh.path()).get(), sample, report) > 0)
    throw unsound(file);
  beginGeneration(fresh.path(), floor);
  report(sentenceOfKept(putInPlace(place, fresh)));
}

void rescue(const StorePlace& place, const std::string& sample, const LineSink& report) {
  if (isNewer(place))
    requireKnownLayout(openUnchanged(place.path()).get(), place.path());
  const StoreLock lock(place);
  const std::string prefix = freshPrefix(place);
  const Scratch scratch(place, prefix, sample);
  const Remains remains(scratch, shapesOf(openFile(sample).get()));
  if (remains.isEmpty())
    throw Failure(DB_CORRUPT, "nothing can be read from " + place.path());
  FreshFile fresh(prefix);
  const bool whole = copyWhole(scratch, remains, sample, fresh.path());
  if (!whole) {
    writeContent(fresh.path(), {});
    copyRows(openFile(sample).get(), fresh.path());
    Rebuilding(openFile(fresh.path()).get(), remains).run();
  }
  // The number may have been damaged, too.
  execute(openFile(fresh.path()).get(), "PRAGMA user_version = " + std::to_string(knownLayout));
  beginGeneration(fresh.path(), lastEntryOf(scratch.path()));
  for (const Remains::Table& table : remains.tables()) {
    if (!whole && !table.counter)
      report("the counter of " + table.shape.name + " is lost; new UIDs are above " +
             std::to_string(remains.counterOf(table)));
  }
  if (inspect(openFile(fresh.path()).get(), sample, report) > 0)
    throw Failure(DB_CORRUPT, "what was rescued is not a sound store");
  report(sentenceOfKept(putInPlace(place, fresh)));
}

}  // namespace ulo::odb
