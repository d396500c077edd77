// Reads the rows of a damaged database file directly from its pages, without the tree above them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace ulo::odb {

// Of SQLite's file format, in bytes.
constexpr std::size_t fileHeaderSize = 100;

struct SalvagedValue {
  enum class Kind { null, integer, text, blob, other };
  Kind kind = Kind::null;
  std::int64_t integer = 0;
  std::string bytes;  // of a text in the database's encoding, or of a blob
};

struct SalvagedRow {
  std::int64_t rowid = 0;
  std::vector<SalvagedValue> values;
};

// Passes each complete row in the table pages of `file` to `take`, in page order. The rows of all
// tables are mixed. Pages on the free list are skipped, as far as the list can be read, and so are
// rows with truncated or inconsistent values. Requires: the first 100 bytes of `file` are a valid
// header.
void salvageRows(std::string_view file, const std::function<void(SalvagedRow&&)>& take);

}  // namespace ulo::odb
