#include "session.h"

#include "data_directory.h"
#include "script/parser.h"

#include <cerrno>
#include <cstring>

namespace ulo::odb {
namespace {

// Programs that a session keeps, with their prepared statements. The store has fewer than thirty.
constexpr std::size_t programCacheSize = 128;

struct DatabaseFile {
  int number;
  const char* name;
};
constexpr DatabaseFile databaseFiles[] = {{1, "tasks.db"}};

const char* fileOf(int database) {
  for (const DatabaseFile& file : databaseFiles)
    if (file.number == database)
      return file.name;
  throw Failure(DB_BAD_ARGUMENT, "there is no database " + std::to_string(database));
}

std::string existingDataDirectory() {
  std::string directory = dataDirectory();
  if (directory.empty())
    throw Failure(DB_IO, std::string("there is no data directory: ") + std::strerror(errno));
  return directory;
}

}  // namespace

// The transaction around one run: a savepoint within the caller's, one of its own otherwise, none
// where SQLite's own is enough. What was not kept is undone.
class Session::Scope {
public:
  Scope(Session& session, const Program& program) : session_(session) {
    const bool single = program.statement && program.statement->kind == Statement::Kind::insert;
    if (session.inTransaction_) {
      if (!session.connection_.inTransaction())
        throw Failure(DB_TRANSACTION, "the transaction has failed before; end it first");
      if (program.writes && !single)
        open(Connection::Control::save);
    } else if (program.writes && !single) {
      open(Connection::Control::beginWrite);
    } else if (program.needsSnapshot) {
      open(Connection::Control::beginRead);
    }
  }
  Scope(const Scope&) = delete;
  Scope& operator=(const Scope&) = delete;

  void keep() {
    if (isOpen_)
      session_.connection_.control(isSavepoint() ? Connection::Control::release
                                                 : Connection::Control::commit);
    isOpen_ = false;
  }

  ~Scope() {
    if (!isOpen_ || !session_.connection_.inTransaction())
      return;
    try {
      if (isSavepoint()) {
        session_.connection_.control(Connection::Control::rollbackToSave);
        session_.connection_.control(Connection::Control::release);
      } else {
        session_.connection_.control(Connection::Control::rollback);
      }
    } catch (const Failure&) {
      // SQLite rolls back what it can't even undo when the connection ends.
    }
  }

private:
  void open(Connection::Control how) {
    session_.connection_.control(how);
    how_ = how;
    isOpen_ = true;
  }
  [[nodiscard]] bool isSavepoint() const { return how_ == Connection::Control::save; }

  Session& session_;
  Connection::Control how_ = Connection::Control::save;
  bool isOpen_ = false;
};

Session::Session(int database)
    : database_(database), connection_(existingDataDirectory(), fileOf(database)) {}

Session::~Session() {
  if (inTransaction_ && connection_.inTransaction()) {
    try {
      connection_.control(Connection::Control::rollback);
    } catch (const Failure&) {
      // Closing the connection does the same.
    }
  }
}

void Session::begin(int mode) {
  if (mode != 0)
    throw Failure(DB_BAD_ARGUMENT, "there is no transaction mode " + std::to_string(mode));
  if (inTransaction_)
    throw Failure(DB_TRANSACTION, "a transaction is open already");
  connection_.control(Connection::Control::beginWrite);
  inTransaction_ = true;
}

void Session::commit() {
  if (!inTransaction_)
    throw Failure(DB_TRANSACTION, "no transaction is open");
  inTransaction_ = false;
  if (!connection_.inTransaction()) {
    forgetIfSchemaChanged();
    throw Failure(DB_TRANSACTION, "the transaction has failed before; nothing is kept");
  }
  try {
    connection_.control(Connection::Control::commit);
  } catch (const Failure&) {
    if (connection_.inTransaction())
      connection_.control(Connection::Control::rollback);
    forgetIfSchemaChanged();
    throw;
  }
  connection_.committed();
}

void Session::abort() {
  if (!inTransaction_)
    throw Failure(DB_TRANSACTION, "no transaction is open");
  inTransaction_ = false;
  if (connection_.inTransaction())
    connection_.control(Connection::Control::rollback);
  forgetIfSchemaChanged();
}

void Session::forgetPrograms() {
  programOf_.clear();
  programs_.clear();
  catalog_.reset();
}

// Programs belong to the tables that they were checked against.
void Session::forgetIfSchemaChanged() {
  const std::int64_t version = connection_.schemaVersion();
  if (version != schemaVersion_)
    forgetPrograms();
  schemaVersion_ = version;
  dataVersion_ = connection_.dataVersion();
}

std::unique_ptr<Program> Session::compile(const std::string& text) {
  if (!catalog_) {
    schemaVersion_ = connection_.schemaVersion();
    catalog_ = std::make_unique<Catalog>(connection_.handle());
  }
  return makeProgram(text, *catalog_);
}

Executable& Session::prepare(const std::string& text) {
  const auto found = programOf_.find(text);
  if (found != programOf_.end()) {
    programs_.splice(programs_.begin(), programs_, found->second);
    return *programs_.front().executable;
  }
  std::unique_ptr<Program> program;
  try {
    program = compile(text);
  } catch (const Failure& failure) {
    // Another process may have made what the text names.
    if (failure.code() != DB_UNKNOWN_NAME)
      throw;
    forgetPrograms();
    program = compile(text);
  }
  programs_.push_front(
      {text, std::make_unique<Executable>(connection_.handle(), std::move(program))});
  programOf_[programs_.front().text] = programs_.begin();
  if (programs_.size() > programCacheSize) {
    programOf_.erase(programs_.back().text);
    programs_.pop_back();
  }
  return *programs_.front().executable;
}

ResultBuffer Session::run(const FormattedText& text, ParameterView parameters, int* tag) {
  if (connection_.dataVersion() != dataVersion_)
    forgetIfSchemaChanged();
  Executable& executable = prepare(text.text);
  const bool changesSchema = executable.program().statement &&
                             executable.program().statement->kind != Statement::Kind::insert;
  try {
    ResultBuffer result = runPrepared(executable, text, parameters, tag);
    if (changesSchema)
      forgetPrograms();
    return result;
  } catch (const Failure&) {
    // A table may have been dropped or changed by someone else.
    forgetIfSchemaChanged();
    throw;
  }
}

ResultBuffer Session::runPrepared(Executable& executable, const FormattedText& text,
                                  ParameterView parameters, int* tag) {
  const Program& program = executable.program();
  ResultBuffer result(program.script ? program.script->buffer : std::vector<ColumnDeclaration>());
  Executable::Run run{parameters, text.arguments, result, std::nullopt};
  {
    Scope scope(*this, program);
    executable.run(run);
    scope.keep();
  }
  if (program.writes && !inTransaction_)
    connection_.committed();
  if (run.tag)
    *tag = *run.tag;
  return result;
}

}  // namespace ulo::odb
