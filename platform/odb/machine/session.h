#pragma once

#include "base/failure.h"
#include "base/line_sink.h"
#include "executable.h"
#include "lru_cache.h"
#include "result_buffer.h"
#include "sqlite/connection.h"
#include "sqlite/texts.h"
#include "text_cache.h"

#include <cstdarg>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ulo::odb {

// One thread's session with the database. All operations throw Failure.
class Session {
public:
  // Opens database number `database` in the data directory.
  explicit Session(int database);
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session();

  [[nodiscard]] int database() const { return database_; }

  void begin(int mode, bool isBulk = false);
  void commit();
  void abort();
  // True between begin() and the matching commit() or abort().
  [[nodiscard]] bool hasTransactionOfCaller() const;

  // See DB_BeginRead in ulodb2.h.
  void beginRead();
  void endRead();

  // See DB_BeginWrite and DB_BeginBulkWrite in ulodb2.h.
  void beginWrite(bool isBulk = false);
  void endWrite(bool keep);

  // What a text has returned.
  struct Answer {
    std::shared_ptr<const ResultBuffer> rows;
    std::optional<int> tag;  // set if the text sets the tag
  };
  // Runs a template with its arguments, all or nothing.
  Answer run(const char* text, va_list arguments, ParameterView parameters);

  // See DB_SetTaskText and DB_GetTaskText in ulodb2.h.
  void setTaskText(std::int64_t uid, std::string_view text);
  std::optional<std::string_view> taskText(std::int64_t uid);

  // See DB_CheckFile in ulodb2.h.
  void checkFile(const LineSink& line);

  // The steps of a run, for explain.h. Texts are not templates.

  [[nodiscard]] sqlite3* handle() const { return connection_.handle(); }
  std::shared_ptr<const Program> program(const std::string& text);
  // Runs an executable with its template numbers, all or nothing. Calls `beforeKeeping` at the end;
  // if that throws, nothing is kept.
  Answer run(Executable& executable, const std::vector<std::int64_t>& numbers,
             ParameterView parameters, const std::function<void()>& beforeKeeping = {});

private:
  class Scope;

  void endStaleTransaction();
  void requireFilled() const;
  void tryToSetTaskText(std::int64_t uid, std::string_view text);
  Answer runText(const TextCache::Call& call, ParameterView parameters);
  Answer readText(const TextCache::Call& call, ParameterView parameters);
  void requireTransactionOfCaller() const;

  int database_;
  Connection connection_;
  TextCache cache_;
  Texts texts_;
  bool inTransaction_ = false;  // of the caller or of writes_; SQLite may have ended it
  // Why a text of the open transaction that fills the database has failed. Callers may ignore the
  // result of a single text, but the rows are kept all or none.
  DB_Result fillFailure_ = DB_OK;
  // Why filling the database has failed. It then rejects writes until it is reopened, which starts
  // over.
  DB_Result unfilledBy_ = DB_OK;
  int reads_ = 0;                // begun and not ended
  bool readsTransact_ = false;   // they have begun a transaction
  bool readsNoTexts_ = false;    // the state that they read is known to have no texts of tasks
  int writes_ = 0;               // begun and not ended
  bool writesTransact_ = false;  // they have begun the transaction
  bool lastRunRemoves_ = false;  // rows
  // Of the text that runs again and again while the state that is read lasts, such as the look-up
  // of a category for each task of a list: short results, by text and parameters.
  LruCache<std::string, Answer> answers_;
  std::string lastRead_;  // the key of the last text that was run in this state
};

}  // namespace ulo::odb
