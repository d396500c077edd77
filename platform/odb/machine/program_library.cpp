#include "program_library.h"

#include "sqlite/schema.h"

namespace ulo::odb {
namespace {

// The store uses fewer than thirty texts.
constexpr std::size_t programsKept = 128;
// Databases in use at the same time, and one before its tables were created.
constexpr std::size_t librariesKept = 4;

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
    std::string schema = schemaText(database);
    {
      const std::lock_guard lock(all.mutex);
      if (const auto* found = all.bySchema.find(schema))
        return *found;
    }
    auto made = std::make_shared<ProgramLibrary>(readCatalog(database));
    // Another process may have changed the tables while they were read.
    if (schemaText(database) != schema)
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
