// Backup, restore and rescue of a database file.
#pragma once

#include "files/store_file.h"

#include <string>

namespace ulo::odb {

// All throw Failure. `sample` is a sound, empty database file of the same tables.

// Reports everything that is wrong with the file of a store; see DB_Inspect.
int inspectStore(const StorePlace& place, const std::string& sample, const Report& report);

// See DB_Backup, DB_Restore and DB_Rescue.
void backUp(const StorePlace& place, const std::string& file, bool overwrite);
void restore(const StorePlace& place, const std::string& file, const std::string& sample,
             const Report& report);
void rescue(const StorePlace& place, const std::string& sample, const Report& report);

}  // namespace ulo::odb
