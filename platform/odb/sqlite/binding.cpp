#include "binding.h"

#include "sqlite_failure.h"

#include <cstdint>
#include <cstring>

namespace ulo::odb {
namespace {

// SQLite treats these units at the beginning of a text as a byte order mark and removes them.
bool beginsWithByteOrderMark(std::string_view unitBytes) {
  std::uint16_t unit = 0;
  if (unitBytes.size() < sizeof unit)
    return false;
  std::memcpy(&unit, unitBytes.data(), sizeof unit);
  return unit == 0xFEFF || unit == 0xFFFE;
}

// Returns true if the bytes survive SQLite's conversion to UTF-16 and back.
bool survivesConversion(std::string_view bytes) {
  for (const char c : bytes)
    if (static_cast<unsigned char>(c) >= 0x80) {
      const std::string units = toUnits(bytes);
      // SQLite replaces the noncharacters U+FFFE and U+FFFF.
      for (std::size_t i = 0; i + 1 < units.size(); i += 2) {
        std::uint16_t unit = 0;
        std::memcpy(&unit, units.data() + i, sizeof unit);
        if (unit >= 0xFFFE)
          return false;
      }
      return toUtf8(units) == bytes;
    }
  return true;
}

}  // namespace

void bind(SqlStatement& statement, int parameter, const Value& given, Type type) {
  std::string storage;
  const Value value = fitted(given, type, storage);
  sqlite3_stmt* handle = statement.handle();
  const char* text = value.text.data();
  const std::size_t size = value.text.size();
  int result = SQLITE_OK;
  // Texts that SQLite would change are stored as blobs.
  switch (value.type) {
  case Type::integer:
  case Type::boolean:
    result = sqlite3_bind_int64(handle, parameter, value.number);
    break;
  case Type::unicode:
    result = beginsWithByteOrderMark(value.text)
                 ? sqlite3_bind_blob64(handle, parameter, text, size, SQLITE_TRANSIENT)
                 : sqlite3_bind_text64(handle, parameter, size == 0 ? "" : text, size,
                                       SQLITE_TRANSIENT, SQLITE_UTF16);
    break;
  case Type::varchar:
    result = survivesConversion(value.text)
                 ? sqlite3_bind_text64(handle, parameter, size == 0 ? "" : text, size,
                                       SQLITE_TRANSIENT, SQLITE_UTF8)
                 : sqlite3_bind_blob64(handle, parameter, text, size, SQLITE_TRANSIENT);
    break;
  default:
    result = sqlite3_bind_null(handle, parameter);
  }
  if (result != SQLITE_OK)
    throw sqliteFailure(sqlite3_db_handle(handle), "binding a value");
}

Value columnValue(const SqlStatement& statement, int column, Type type) {
  sqlite3_stmt* handle = statement.handle();
  if (type == Type::integer || type == Type::boolean) {
    // A null reads as 0, so only a 0 needs the type check.
    const std::int64_t number = sqlite3_column_int64(handle, column);
    if (number == 0 && sqlite3_column_type(handle, column) == SQLITE_NULL)
      return {};
    return type == Type::integer ? Value::integer(number) : Value::boolean(number != 0);
  }
  const int stored = sqlite3_column_type(handle, column);
  if (stored == SQLITE_NULL)
    return {};
  // Get the pointer before the size: the first call may convert.
  const void* text = stored == SQLITE_BLOB   ? sqlite3_column_blob(handle, column)
                     : type == Type::unicode ? sqlite3_column_text16(handle, column)
                                             : sqlite3_column_text(handle, column);
  const int size = stored == SQLITE_BLOB || type == Type::varchar
                       ? sqlite3_column_bytes(handle, column)
                       : sqlite3_column_bytes16(handle, column);
  // Empty texts have a pointer; only empty blobs have none.
  if (text == nullptr && (size > 0 || stored != SQLITE_BLOB))
    throw Failure(DB_NO_MEMORY, "no memory for a text of the database");
  return {type, 0, {static_cast<const char*>(text), static_cast<std::size_t>(size)}};
}

}  // namespace ulo::odb
