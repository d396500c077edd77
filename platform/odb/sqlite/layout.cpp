#include "layout.h"

#include "base/failure.h"
#include "store_layout.h"

#include <cstdint>

namespace ulo::odb {

void requireKnownLayout(sqlite3* database, const std::string& name) {
  const std::int64_t layout = layoutOf(database);
  if (layout <= knownLayout)
    return;
  if (layout > highestLayout)
    throw Failure(DB_CORRUPT,
                  name + ": the header is damaged (layout version " + std::to_string(layout) + ")");
  throw Failure(DB_IO, name + ": written by a newer version of this program (layout version " +
                           std::to_string(layout) + "; this version knows " +
                           std::to_string(knownLayout) + ")");
}

}  // namespace ulo::odb
