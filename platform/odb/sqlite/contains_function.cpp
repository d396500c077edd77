#include "contains_function.h"

#include "base/sql_name.h"
#include "base/value.h"
#include "sqlite_failure.h"

#include <string_view>

namespace ulo::odb {
namespace {

// The bytes as the database stores them: both arguments have its encoding, or are blobs. Converting
// them, or ending them with a zero, would copy every text.
std::string_view bytesOf(sqlite3_value* value) {
  const auto* bytes = static_cast<const char*>(sqlite3_value_blob(value));
  return {bytes, bytes == nullptr ? 0 : static_cast<std::size_t>(sqlite3_value_bytes16(value))};
}

void containsText(sqlite3_context* context, int, sqlite3_value** arguments) {
  for (int i = 0; i < 2; ++i)
    if (sqlite3_value_type(arguments[i]) == SQLITE_NULL)
      return sqlite3_result_int(context, 0);
  sqlite3_result_int(context, containsUnits(bytesOf(arguments[0]), bytesOf(arguments[1])) ? 1 : 0);
}

}  // namespace

void addContainsFunction(sqlite3* database) {
  if (sqlite3_create_function_v2(database, containsFunction, 2,
                                 SQLITE_UTF16 | SQLITE_DETERMINISTIC | SQLITE_DIRECTONLY, nullptr,
                                 containsText, nullptr, nullptr, nullptr) != SQLITE_OK)
    throw sqliteFailure(database, "adding a function");
}

}  // namespace ulo::odb
