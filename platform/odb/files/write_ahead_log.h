// Reads SQLite's write-ahead log when SQLite cannot, because the database itself is damaged.
#pragma once

#include <string>
#include <string_view>

namespace ulo::odb {

// Writes the pages of all complete transactions in the log into `file`, the content of the database
// file. A damaged log is applied up to the damage.
void applyLog(std::string& file, std::string_view log);

}  // namespace ulo::odb
