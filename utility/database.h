// Owners of database handles. Nothing here logs.
#pragma once

#include "UTIL_TimeConversion.h"
#include "category_name.h"
#include "ulodb2.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringView>
#include <QVarLengthArray>

// The texts are printf templates, also those without arguments. Distributions turn the warning into
// an error.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"

// Runs a text without arguments.
[[nodiscard]] inline int execText(const char* text) {
  return DB_Exec(text);
}

// A read transaction: all queries during its lifetime see the same state of the database, so that
// tasks and the names of their categories match. Queries work without one, too.
class ReadSnapshot {
public:
  ReadSnapshot() : begun_(DB_BeginRead() == DB_OK) {}
  ReadSnapshot(const ReadSnapshot&) = delete;
  ReadSnapshot& operator=(const ReadSnapshot&) = delete;
  ~ReadSnapshot() {
    if (begun_)
      DB_EndRead();
  }

private:
  bool begun_;
};

// A write transaction, or a part of the one that is already open in this thread. No other program
// can write during its lifetime. Changes that were not committed are discarded at its end.
class WriteScope {
public:
  WriteScope() : result_(DB_BeginWrite()), open_(result_ == DB_OK) {}
  WriteScope(const WriteScope&) = delete;
  WriteScope& operator=(const WriteScope&) = delete;
  ~WriteScope() { discard(); }

  // The database's result for the beginning of the transaction.
  [[nodiscard]] int result() const { return result_; }
  // Commits. Nothing is written unless the database returns DB_OK.
  [[nodiscard]] int keep() {
    if (!open_)
      return result_;
    open_ = false;
    return DB_EndWrite(1);
  }
  // Discards all changes and begins again: a failed statement may have ended the transaction.
  void restart() {
    discard();
    result_ = DB_BeginWrite();
    open_ = result_ == DB_OK;
  }

private:
  void discard() {
    if (open_)
      DB_EndWrite(0);
    open_ = false;
  }

  int result_;
  bool open_;
};

// The rows of a query, starting at the first one. If there is no current row, the fields are 0,
// false or a null text.
class ResultRows {
public:
  ResultRows() = default;
  ResultRows(const ResultRows&) = delete;
  ResultRows& operator=(const ResultRows&) = delete;
  ~ResultRows() { close(); }

  // Returns the database's result. Requires: no earlier query succeeded.
  template <typename... Arguments>
  [[nodiscard]] int query(const char* text, Arguments... arguments) {
    return DB_Query(&cursor_, text, arguments...);
  }

  [[nodiscard]] int integer(int column) const { return DB_CSC_GetFieldAsInteger(cursor_, column); }
  [[nodiscard]] unsigned int uid(int column) const {
    return static_cast<unsigned int>(integer(column));
  }
  [[nodiscard]] bool boolean(int column) const {
    return DB_CSC_GetFieldAsBool(cursor_, column) != 0;
  }
  // The units up to the first 0, unchanged. A null text differs from an empty one.
  [[nodiscard]] QString unicode(int column) const {
    const auto* units = reinterpret_cast<const QChar*>(DB_CSC_GetFieldAsUnicode(cursor_, column));
    return units == nullptr ? QString() : QString(units);
  }
  // The same without a copy. Valid until the next row.
  [[nodiscard]] QStringView unicodeView(int column) const {
    const auto* units = reinterpret_cast<const QChar*>(DB_CSC_GetFieldAsUnicode(cursor_, column));
    return units == nullptr ? QStringView() : QStringView(units);
  }
  [[nodiscard]] QString varchar(int column) const {
    const char* bytes = DB_CSC_GetFieldAsChar(cursor_, column);
    return bytes == nullptr ? QString() : categoryName(bytes);
  }

  [[nodiscard]] bool atEnd() const { return DB_CSC_Eof(cursor_) != 0; }
  void next() { DB_CSC_MoveNext(cursor_); }
  void close() {
    if (cursor_ != nullptr)
      DB_CSC_Close(cursor_);
    cursor_ = nullptr;
  }

private:
  friend class ParameterBlock;
  DB_CURSOR cursor_ = nullptr;
};

// The parameters of one statement or script. Converts to false if memory was exhausted; running a
// text with it then fails.
class ParameterBlock {
public:
  explicit ParameterBlock(int count) : block_(DB_PARAM_Open(count)) {}
  ParameterBlock(const ParameterBlock&) = delete;
  ParameterBlock& operator=(const ParameterBlock&) = delete;
  ~ParameterBlock() { close(); }
  explicit operator bool() const { return block_ != nullptr; }

  void bindInteger(int index, int value) { DB_PARAM_BindInteger(block_, index, value); }
  void bindDate(int index, const QDateTime& date) {
    bindInteger(index, static_cast<int>(UTIL_TimeConversion::toUTC(date)));
  }
  // `units` in the form that DB_PARAM_BindUnicode expects.
  void bindUnicode(int index, const unsigned short* units) {
    DB_PARAM_BindUnicode(block_, index, units);
  }
  // A null text is bound as null.
  void bindText(int index, const QString& text) {
    if (text.isNull())
      return bindUnicode(index, nullptr);
    QVarLengthArray<unsigned short, 64> units;
    for (const QChar unit : text)
      units.append(static_cast<unsigned short>(unit.cell() << 8 | unit.row()));
    units.append(0);
    bindUnicode(index, units.constData());
  }
  // A null name is bound as null.
  void bindVarchar(int index, const QString& name) {
    const QByteArray bytes = categoryNameBytes(name);
    DB_PARAM_BindChar(block_, index, name.isNull() ? nullptr : bytes.constData());
  }

  // Each of these runs a text, frees the block and returns the database's result. Call only one of
  // them, once.
  [[nodiscard]] int exec(const char* text) {
    const int result = DB_ExecWithParam(block_, text);
    close();
    return result;
  }
  template <typename... Arguments>
  [[nodiscard]] int query(ResultRows& rows, const char* text, Arguments... arguments) {
    const int result = DB_QueryWithParam(&rows.cursor_, block_, text, arguments...);
    close();
    return result;
  }

private:
  void close() {
    if (block_ != nullptr)
      DB_PARAM_Close(block_);
    block_ = nullptr;
  }

  DB_PARAM block_;
};

#pragma GCC diagnostic pop
