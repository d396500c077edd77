#pragma once

#include "catalog.h"
#include "interpreter.h"
#include "result_buffer.h"
#include "script/template.h"
#include "sqlite/connection.h"

#include <functional>
#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

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

  // Runs a text, all of it or nothing. Its rows go into a buffer of its own; the tag it sets, if
  // any, into *tag.
  ResultBuffer run(const FormattedText& text, ParameterView parameters, int* tag);

  // See DB_Explain and DB_CheckFile in ulodb2.h.
  void explain(const std::string& text, int what, ParameterView parameters, const LineSink& line);
  void checkFile(const LineSink& line);

private:
  class Scope;

  struct Cached {
    std::string text;
    std::unique_ptr<Executable> executable;
  };

  Executable& prepare(const std::string& text);
  std::unique_ptr<Program> compile(const std::string& text);
  void forgetIfSchemaChanged();
  void forgetPrograms();
  ResultBuffer runPrepared(Executable& executable, const FormattedText& text,
                           ParameterView parameters, int* tag);

  int database_;
  Connection connection_;
  std::unique_ptr<Catalog> catalog_;
  // The programs used last, the newest in front.
  std::list<Cached> programs_;
  std::unordered_map<std::string_view, std::list<Cached>::iterator> programOf_;
  std::int64_t schemaVersion_ = -1;
  unsigned dataVersion_ = 0;
  bool inTransaction_ = false;  // the caller's; SQLite may have ended it
};

}  // namespace ulo::odb
