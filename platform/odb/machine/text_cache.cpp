#include "text_cache.h"

#include "base/catalog_sql.h"
#include "base/failure.h"
#include "sqlite/schema.h"

#include <exception>
#include <optional>
#include <utility>

namespace ulo::odb {
namespace {

// Of each kind. The store uses fewer than thirty texts.
constexpr std::size_t textsKept = 128;
// Databases in use at the same time, and one before its tables were created.
constexpr std::size_t schemasKept = 4;

struct AllPrograms {
  std::mutex mutex;
  LruCache<std::string, std::shared_ptr<TextCache::Programs>> bySchema{schemasKept};
};

// Never destroyed: static objects may use the database after the statics of this file are gone.
AllPrograms& allPrograms() {
  static auto* const all = new AllPrograms;
  return *all;
}

}  // namespace

TextCache::Programs::Programs(Catalog catalog)
    : catalog_(std::move(catalog)), programs_(textsKept) {}

std::shared_ptr<TextCache::Programs> TextCache::Programs::of(sqlite3* database) {
  AllPrograms& all = allPrograms();
  for (;;) {
    const std::vector<std::string> statements = schemaStatements(database);
    std::string schema;
    for (const std::string& statement : statements)
      schema.append(statement).push_back('\n');
    {
      const std::lock_guard lock(all.mutex);
      if (const auto* found = all.bySchema.find(schema))
        return *found;
    }
    std::optional<Catalog> catalog = catalogFromSql(statements);
    if (!catalog) {
      catalog = readCatalog(database);
      // Another process may have changed the tables while they were read.
      if (schemaStatements(database) != statements)
        continue;
    }
    auto made = std::make_shared<Programs>(std::move(*catalog));
    const std::lock_guard lock(all.mutex);
    const auto* found = all.bySchema.find(schema);
    return found != nullptr ? *found : all.bySchema.add(std::move(schema), std::move(made));
  }
}

std::shared_ptr<const Program> TextCache::Programs::program(const std::string& text) {
  const std::lock_guard lock(mutex_);
  if (const auto* found = programs_.find(text))
    return *found;
  return programs_.add(text, makeProgram(text, catalog_));
}

TextCache::TextCache(Connection& connection)
    : connection_(connection), templates_(textsKept), executables_(textsKept) {}

// The address identifies a string literal of a program; a buffer may hold another template by now.
const TextCache::KnownTemplate& TextCache::known(const char* text) {
  KnownTemplate* found = templates_.find(text);
  if (found == nullptr)
    return templates_.add(text, {Template(text), ++lastId_});
  if (found->pattern.text() != text)
    *found = {Template(text), ++lastId_};
  return *found;
}

TextCache::Call TextCache::read(const char* text, va_list arguments) {
  const KnownTemplate& found = known(text);
  Call call;
  call.pattern_ = &found.pattern;
  call.key_.assign(reinterpret_cast<const char*>(&found.id), sizeof found.id);
  found.pattern.read(arguments, call.key_, call.numbers_);
  return call;
}

Executable& TextCache::executable(const Call& call) {
  if (const auto* found = executables_.find(call.key_))
    return **found;
  const std::string text =
      call.pattern_->format(std::string_view(call.key_).substr(sizeof(KnownTemplate::id)));
  std::shared_ptr<const Program> made;
  try {
    made = program(text);
  } catch (const Failure& failure) {
    // Another process may have created the missing object.
    if (failure.code() != DB_UNKNOWN_NAME)
      throw;
    forget();
    made = program(text);
  }
  return *executables_.add(call.key_,
                           std::make_unique<Executable>(connection_.handle(), std::move(made)));
}

std::shared_ptr<const Program> TextCache::program(const std::string& text) {
  if (!programs_) {
    schemaVersion_ = connection_.schemaVersion();
    programs_ = Programs::of(connection_.handle());
  }
  return programs_->program(text);
}

void TextCache::forget() {
  executables_.clear();
  programs_.reset();
}

bool TextCache::forgetIfTablesChanged() {
  const std::int64_t version = connection_.schemaVersion();
  const bool changed = version != schemaVersion_;
  if (changed)
    forget();
  schemaVersion_ = version;
  dataVersion_ = connection_.dataVersion();
  return changed;
}

void TextCache::checkTables() noexcept {
  try {
    forgetIfTablesChanged();
  } catch (const std::exception&) {
    forget();
  }
}

}  // namespace ulo::odb
