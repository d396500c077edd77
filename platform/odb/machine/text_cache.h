// Caches texts that have run, so that a repeated call is not parsed, formatted or checked again.
//
// There are two levels, because threads may share programs but not prepared statements:
//
// - The process keeps the program of each formatted text, for the tables that it was checked
//   against. All threads use them, under a mutex. They are kept until the process ends.
// - A session keeps each template by its address and content, and the executable of each call by
//   its template and the arguments inserted into that. Only the session's thread uses them.
//   Executables are dropped when the tables change.
//
// Each keeps a fixed number and evicts the least recently used one (LruCache).
#pragma once

#include "base/catalog.h"
#include "compile/program.h"
#include "executable.h"
#include "lru_cache.h"
#include "script/template.h"
#include "sqlite/connection.h"

#include <sqlite3.h>

#include <cstdarg>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace ulo::odb {

// The level of a session.
class TextCache {
public:
  // The level of the process: the programs of all databases with the same tables. Thread-safe.
  class Programs {
  public:
    // Returns the programs for the tables that `database` has now. Throws Failure.
    static std::shared_ptr<Programs> of(sqlite3* database);

    explicit Programs(Catalog catalog);

    // Returns the program of a text. Throws Failure.
    std::shared_ptr<const Program> program(const std::string& text);

  private:
    const Catalog catalog_;
    std::mutex mutex_;
    LruCache<std::string, std::shared_ptr<const Program>> programs_;
  };

  // `connection` must outlive the object.
  explicit TextCache(Connection& connection);

  // A template with the arguments of one call. Valid until the next one is read.
  class Call {
  public:
    // Identifies the template and the arguments inserted into it.
    [[nodiscard]] const std::string& key() const { return key_; }
    // The numbers that the program receives when it runs.
    [[nodiscard]] const std::vector<std::int64_t>& numbers() const { return numbers_; }

  private:
    friend class TextCache;
    const Template* pattern_ = nullptr;
    std::string key_;  // identifies the template, followed by the inserted arguments
    std::vector<std::int64_t> numbers_;
  };

  // Throws Failure if the template is malformed or a text among the arguments is null.
  Call read(const char* text, va_list arguments);
  // Returns the executable of a call. Valid until the next one is requested, or until programs are
  // forgotten. Throws Failure.
  Executable& executable(const Call& call);
  // Returns the program of a text that is not a template. Throws Failure.
  std::shared_ptr<const Program> program(const std::string& text);

  // Programs are valid only for the tables that they were checked against.

  void forget();
  // Forgets all programs if the tables have changed, and returns whether they have. Throws Failure.
  bool forgetIfTablesChanged();
  // Does the same if any connection has committed since. Cheap; called before each run.
  void followCommits() {
    if (connection_.dataVersion() != dataVersion_)
      forgetIfTablesChanged();
  }
  // Like forgetIfTablesChanged. Forgets the programs if that fails.
  void checkTables() noexcept;

private:
  struct KnownTemplate {
    Template pattern;
    std::uint32_t id;  // never used again, so that no key outlives its template
  };

  const KnownTemplate& known(const char* text);

  Connection& connection_;
  std::shared_ptr<Programs> programs_;
  LruCache<const void*, KnownTemplate> templates_;
  LruCache<std::string, std::unique_ptr<Executable>> executables_;
  std::uint32_t lastId_ = 0;
  std::int64_t schemaVersion_ = -1;
  unsigned dataVersion_ = 0;
};

}  // namespace ulo::odb
