// Backup, restore and rescue of a database file.
#pragma once

#include "base/line_sink.h"
#include "sqlite/store_place.h"

#include <string>

namespace ulo::odb {

// All functions throw Failure. `sample` is a sound, empty database file with the same tables.

// Reports every defect of a store's file; see DB_Inspect.
int inspectStore(const StorePlace& place, const std::string& sample, const LineSink& report);

// See DB_Backup, DB_Restore and DB_Rescue.
void backUp(const StorePlace& place, const std::string& file, bool overwrite);
void restore(const StorePlace& place, const std::string& file, const std::string& sample,
             const LineSink& report);
void rescue(const StorePlace& place, const std::string& sample, const LineSink& report);

}  // namespace ulo::odb
