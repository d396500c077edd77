#include "program_library.h"

#include "sqlite/statement.h"

namespace ulo::odb {
namespace {

// The store uses fewer than thirty texts.
constexpr std::size_t programsKept = 128;
// Databases in use at the same time, and one before its tables were created.
constexpr std::size_t librariesKept = 4;

// Returns a text that is the same for two databases only if they have the same tables.
std::string schemaOf(sqlite3* database) {
  SqlStatement statement(database, "SELECT group_concat(sql, char(10)) FROM (SELECT sql FROM "
                                   "sqlite_schema WHERE sql IS NOT NULL ORDER BY rowid)");
  return statement.step() ? statement.text(0) : std::string();
}

struct Libraries {
  std::mutex mutex;
  LruCache<std::shared_ptr<ProgramLibrary>> bySchema{librariesKept};
};

// Never destroyed: static objects may use the database after the statics of this file are gone.
Libraries& libraries() {
  static auto* const all = new Libraries;
  return *all;
}

}  // namespace

ProgramLibrary::ProgramLibrary(Catalog catalog)
    : catalog_(std::move(catalog)), programs_(programsKept) {}

std::shared_ptr<ProgramLibrary> ProgramLibrary::of(sqlite3* database) {
  Libraries& all = libraries();
  for (;;) {
    std::string schema = schemaOf(database);
    {
      const std::lock_guard lock(all.mutex);
      if (const auto* found = all.bySchema.find(schema))
        return *found;
    }
    auto made = std::make_shared<ProgramLibrary>(Catalog(database));
    // Another process may have changed the tables while they were read.
    if (schemaOf(database) != schema)
      continue;
    const std::lock_guard lock(all.mutex);
    const auto* found = all.bySchema.find(schema);
    return found != nullptr ? *found : all.bySchema.add(std::move(schema), std::move(made));
  }
}

std::shared_ptr<const Program> ProgramLibrary::program(const std::string& text) {
  const std::lock_guard lock(mutex_);
  if (const auto* found = programs_.find(text))
    return *found;
  return programs_.add(text, makeProgram(text, catalog_));
}

}  // namespace ulo::odb
