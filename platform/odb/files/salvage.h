// Reads the rows of a damaged database file from its pages, without the tree above them.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace ulo::odb {

struct SalvagedValue {
  enum class Kind { null, integer, text, other };
  Kind kind = Kind::null;
  std::int64_t integer = 0;
  std::string text;  // bytes in the encoding of the database
};

struct SalvagedRow {
  std::int64_t rowid = 0;
  std::vector<SalvagedValue> values;
};

// Passes each whole row in the table pages of `file` to `take`, in the order of the pages. Rows of
// all tables come mixed. Pages in the list of free pages are left out, as far as it can be read;
// rows whose values are cut off or inconsistent are left out, too.
// Requires: the first 100 bytes of `file` are a valid header.
void salvageRows(std::string_view file, const std::function<void(SalvagedRow&&)>& take);

}  // namespace ulo::odb
