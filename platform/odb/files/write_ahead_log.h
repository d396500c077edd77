// Reads SQLite's write-ahead log where SQLite can't, because the database beside it is damaged.
#pragma once

#include <string>
#include <string_view>

namespace ulo::odb {

// Writes the pages of all transactions that the log holds whole into `file`, the content of the
// database file. A log that is damaged is applied up to the damage.
void applyLog(std::string& file, std::string_view log);

}  // namespace ulo::odb
