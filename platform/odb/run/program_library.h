#pragma once

#include "lru_cache.h"
#include "program.h"

#include <memory>
#include <mutex>
#include <string>

namespace ulo::odb {

// The programs of databases that have the same tables. All sessions of the process share them: a
// text is read and checked once, however often its database is opened. Safe for several threads.
class ProgramLibrary {
public:
  // The library for the tables that `database` has now. Throws Failure.
  static std::shared_ptr<ProgramLibrary> of(sqlite3* database);

  explicit ProgramLibrary(Catalog catalog);

  // The program of a text. Throws Failure.
  std::shared_ptr<const Program> program(const std::string& text);

private:
  const Catalog catalog_;
  std::mutex mutex_;
  LruCache<std::shared_ptr<const Program>> programs_;
};

}  // namespace ulo::odb
