#pragma once

#include "base/catalog.h"
#include "compile/program.h"
#include "lru_cache.h"

#include <sqlite3.h>

#include <memory>
#include <mutex>
#include <string>

namespace ulo::odb {

// The programs of all databases with the same tables. Shared by all sessions of the process, so
// that a text is parsed and checked once, however often its database is opened. Thread-safe.
class ProgramLibrary {
public:
  // Returns the library for the tables that `database` has now. Throws Failure.
  static std::shared_ptr<ProgramLibrary> of(sqlite3* database);

  explicit ProgramLibrary(Catalog catalog);

  // Returns the program of a text. Throws Failure.
  std::shared_ptr<const Program> program(const std::string& text);

private:
  const Catalog catalog_;
  std::mutex mutex_;
  LruCache<std::shared_ptr<const Program>> programs_;
};

}  // namespace ulo::odb
