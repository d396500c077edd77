#pragma once

#include "interpreter.h"
#include "known_templates.h"
#include "lru_cache.h"
#include "program_library.h"
#include "result_buffer.h"
#include "sqlite/connection.h"

#include <functional>
#include <memory>
#include <string>

namespace ulo::odb {

using LineSink = std::function<void(const std::string&)>;

// One thread's use of the database. All operations throw Failure.
class Session {
public:
  // Database number `database`, in the data directory.
  explicit Session(int database);
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session();

  [[nodiscard]] int database() const { return database_; }

  void begin(int mode);
  void commit();
  void abort();

  // See DB_BeginRead in ulodb2.h.
  void beginRead();
  void endRead();

  // See DB_BeginWrite in ulodb2.h.
  void beginWrite();
  void endWrite(bool keep);

  // Runs a template with its arguments, all of it or nothing. Its rows go into a buffer of their
  // own; the tag it sets, if any, into *tag.
  ResultBuffer run(const char* text, va_list arguments, ParameterView parameters, int* tag);

  // See DB_Explain and DB_CheckFile in ulodb2.h.
  void explain(const std::string& text, int what, ParameterView parameters, const LineSink& line);
  void checkFile(const LineSink& line);

private:
  class Scope;

  struct Call {
    Executable& executable;
    std::vector<std::int64_t> numbers;  // of the template
  };

  Call prepare(const char* text, const TemplateArguments& given);
  std::shared_ptr<Executable> prepare(const std::string& text);
  std::shared_ptr<const Program> programOf(const std::string& text);
  bool forgetIfSchemaChanged();  // whether it had
  void checkSchema() noexcept;
  void endStaleTransaction();
  void forgetPrograms();
  // `beforeKeeping` may throw: then nothing is kept.
  ResultBuffer runPrepared(const Call& call, ParameterView parameters, int* tag,
                           const std::function<void()>& beforeKeeping = {});
  void requireTransactionOfCaller() const;

  int database_;
  Connection connection_;
  std::shared_ptr<ProgramLibrary> library_;
  LruCache<std::shared_ptr<Executable>> executables_;
  KnownTemplates templates_;
  std::int64_t schemaVersion_ = -1;
  unsigned dataVersion_ = 0;
  bool inTransaction_ = false;  // of the caller or of writes_; SQLite may have ended it
  // Why a part of the open transaction, which fills the database, has failed. Callers may ignore
  // the result of a single row; the rows are kept all or none.
  DB_Result fillFailure_ = DB_OK;
  // Why filling the database has failed: it accepts nothing more until it is opened again, which
  // begins anew.
  DB_Result unfilledBy_ = DB_OK;
  int reads_ = 0;                // begun and not ended
  bool readsTransact_ = false;   // they are a transaction of their own
  int writes_ = 0;               // begun and not ended
  bool writesTransact_ = false;  // they began the transaction
  bool lastRunRemoves_ = false;  // rows
};

}  // namespace ulo::odb
