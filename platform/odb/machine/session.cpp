#include "session.h"

#include "sqlite/statement.h"
#include "sqlite/store_place.h"

#include <new>

namespace ulo::odb {
namespace {

// Number of programs that a session keeps, with their prepared statements.
constexpr std::size_t executablesKept = 128;

}  // namespace

// The transaction around a run: a savepoint within the caller's transaction, otherwise a new
// transaction, or none if SQLite's implicit one suffices. The destructor rolls back unless keep()
// was called.
class Session::Scope {
public:
  Scope(Session& session, const Program& program) : session_(session) {
    session.endStaleTransaction();
    const bool single = program.statement && program.statement->kind == Statement::Kind::insert;
    if (session.inTransaction_) {
      if (!session.connection_.inTransaction())
        throw Failure(DB_TRANSACTION, "the transaction has failed before; end it first");
      if (program.writes && !single)
        open(Connection::Control::save);
    } else if (session.readsTransact_) {
      if (program.writes)
        throw Failure(DB_TRANSACTION, "the text writes, and so far all is only read");
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
    if (isOpen_)
      session_.connection_.undo(isSavepoint());
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
    : database_(database), connection_(placeOf(database)), executables_(executablesKept) {}

Session::~Session() {
  if (inTransaction_)
    connection_.undo(false);
}

// A transaction whose rollback failed, for lack of memory, must not receive later writes.
void Session::endStaleTransaction() {
  if (!inTransaction_ && !readsTransact_ && connection_.inTransaction())
    connection_.control(Connection::Control::rollback);
}

void Session::begin(int mode) {
  if (mode != 0)
    throw Failure(DB_BAD_ARGUMENT, "there is no transaction mode " + std::to_string(mode));
  if (inTransaction_ || readsTransact_)
    throw Failure(DB_TRANSACTION, "a transaction is open already");
  endStaleTransaction();
  connection_.control(Connection::Control::beginWrite);
  inTransaction_ = true;
}

void Session::requireTransactionOfCaller() const {
  if (!inTransaction_ || writesTransact_)
    throw Failure(DB_TRANSACTION, "no transaction is open");
}

void Session::commit() {
  requireTransactionOfCaller();
  inTransaction_ = false;
  const bool fills = connection_.isFilling();
  try {
    if (!connection_.inTransaction())
      throw Failure(DB_TRANSACTION, "the transaction has failed before; nothing is kept");
    if (fillFailure_ != DB_OK)
      throw Failure(fillFailure_, "a part of what fills the database has failed; nothing is kept");
    connection_.control(Connection::Control::commit);
  } catch (const Failure& failure) {
    if (fills)
      unfilledBy_ = failure.code();
    connection_.undo(false);
    checkSchema();
    throw;
  } catch (const std::bad_alloc&) {
    if (fills)
      unfilledBy_ = DB_NO_MEMORY;
    connection_.undo(false);
    checkSchema();
    throw;
  }
  connection_.committed();
  connection_.announce();
}

void Session::abort() {
  requireTransactionOfCaller();
  inTransaction_ = false;
  fillFailure_ = DB_OK;
  connection_.undo(false);
  checkSchema();
  if (connection_.inTransaction())
    throw Failure(DB_NO_MEMORY, "no memory to undo the transaction; the next operation does");
}

void Session::beginRead() {
  if (reads_ == 0 && !inTransaction_) {
    endStaleTransaction();
    connection_.control(Connection::Control::beginRead);
    readsTransact_ = true;
  }
  ++reads_;
}

void Session::endRead() {
  if (reads_ == 0)
    throw Failure(DB_TRANSACTION, "no reading has begun");
  if (--reads_ > 0 || !readsTransact_)
    return;
  readsTransact_ = false;
  if (!connection_.inTransaction())
    return;
  try {
    connection_.control(Connection::Control::commit);
  } catch (const std::exception&) {
    connection_.undo(false);
    throw;
  }
}

void Session::beginWrite() {
  if (!inTransaction_) {
    begin(0);
    writesTransact_ = true;
  } else if (!connection_.inTransaction()) {
    throw Failure(DB_TRANSACTION, "the transaction has failed before; end it first");
  }
  ++writes_;
}

void Session::endWrite(bool keep) {
  if (writes_ == 0)
    throw Failure(DB_TRANSACTION, "no writing has begun");
  if (--writes_ > 0 || !writesTransact_) {
    if (keep && inTransaction_ && !connection_.inTransaction())
      throw Failure(DB_TRANSACTION, "the transaction has failed before; nothing is kept");
    return;
  }
  writesTransact_ = false;
  if (keep)
    commit();
  else
    abort();
}

void Session::forgetPrograms() {
  templates_.clear();
  executables_.clear();
  library_.reset();
}

// Programs are valid only for the tables that they were checked against.
bool Session::forgetIfSchemaChanged() {
  const std::int64_t version = connection_.schemaVersion();
  const bool changed = version != schemaVersion_;
  if (changed)
    forgetPrograms();
  schemaVersion_ = version;
  dataVersion_ = connection_.dataVersion();
  return changed;
}

// Called after a transaction has ended; must not fail.
void Session::checkSchema() noexcept {
  try {
    forgetIfSchemaChanged();
  } catch (const std::exception&) {
    forgetPrograms();
  }
}

std::shared_ptr<const Program> Session::program(const std::string& text) {
  if (!library_) {
    schemaVersion_ = connection_.schemaVersion();
    library_ = ProgramLibrary::of(connection_.handle());
  }
  return library_->program(text);
}

std::shared_ptr<Executable> Session::prepare(const std::string& text) {
  if (const auto* found = executables_.find(text))
    return *found;
  std::shared_ptr<const Program> made;
  try {
    made = program(text);
  } catch (const Failure& failure) {
    // Another process may have created the missing object.
    if (failure.code() != DB_UNKNOWN_NAME)
      throw;
    forgetPrograms();
    made = program(text);
  }
  return executables_.add(text,
                          std::make_shared<Executable>(connection_.handle(), std::move(made)));
}

Session::Call Session::prepare(const char* text, const TemplateArguments& given) {
  KnownTemplates::Entry& entry = templates_.entry(text);
  if (Executable* known = entry.find(given))
    return {*known, Template::liftedNumbers(given)};
  FormattedText formatted = entry.pattern.format(given);
  std::shared_ptr<Executable> executable = prepare(formatted.text);
  Executable& result = *executable;
  // prepare() may have cleared all entries.
  if (formatted.arguments.size() == given.numbers.size())
    templates_.entry(text).add(given, std::move(executable));
  return {result, std::move(formatted.arguments)};
}

ResultBuffer Session::run(const char* text, va_list arguments, ParameterView parameters, int* tag) {
  const auto fail = [this](DB_Result code) {
    if (inTransaction_ && connection_.isFilling())
      fillFailure_ = code;
  };
  try {
    return runText(text, arguments, parameters, tag);
  } catch (const Failure& failure) {
    fail(failure.code());
    throw;
  } catch (const std::bad_alloc&) {
    fail(DB_NO_MEMORY);
    throw;
  }
}

ResultBuffer Session::runText(const char* text, va_list arguments, ParameterView parameters,
                              int* tag) {
  if (connection_.dataVersion() != dataVersion_)
    forgetIfSchemaChanged();
  const TemplateArguments given = templates_.entry(text).pattern.read(arguments);
  try {
    return runPrepared(prepare(text, given), parameters, tag);
  } catch (const Failure& failure) {
    // SQLite may have noticed only now that another program has changed a table.
    if (failure.code() == DB_FULL ? inTransaction_ || !connection_.makeRoom(lastRunRemoves_)
                                  : !forgetIfSchemaChanged())
      throw;
  }
  return runPrepared(prepare(text, given), parameters, tag);
}

ResultBuffer Session::runPrepared(const Call& call, ParameterView parameters, int* tag,
                                  const std::function<void()>& beforeKeeping) {
  const Program& program = call.executable.program();
  lastRunRemoves_ = program.removes();
  if (lastRunRemoves_ && inTransaction_)
    connection_.makeRoomAhead();
  ResultBuffer result = program.script ? ResultBuffer(program.script->buffer) : ResultBuffer();
  Executable::Run run{parameters, call.numbers, result, std::nullopt};
  if (program.writes && unfilledBy_ != DB_OK)
    throw Failure(unfilledBy_, "the database could not be filled; open it again");
  const bool fills = program.writes && inTransaction_ && connection_.isFilling();
  {
    Scope scope(*this, program);
    call.executable.run(run);
    if (beforeKeeping)
      beforeKeeping();
    // Callers may not check the commit of such a transaction; they always check DB_EndWrite.
    if (inTransaction_ && !writesTransact_ && (fills || (program.writes && program.script)))
      connection_.writeOut();
    scope.keep();
  }
  if (program.writes && !inTransaction_)
    connection_.committed();
  if (run.tag)
    *tag = *run.tag;
  if (program.statement && program.statement->kind != Statement::Kind::insert)
    forgetPrograms();
  return result;
}

ResultBuffer Session::runOnce(Executable& executable, ParameterView parameters, int* tag,
                              const std::function<void()>& beforeKeeping) {
  return runPrepared({executable, {}}, parameters, tag, beforeKeeping);
}

void Session::checkFile(const LineSink& line) {
  SqlStatement check(connection_.handle(), "PRAGMA integrity_check");
  while (check.step())
    if (check.text(0) != "ok")
      line(check.text(0));
}

}  // namespace ulo::odb
