#include "session.h"

#include "sqlite/statement.h"
#include "sqlite/store_place.h"

#include <new>
#include <utility>

namespace ulo::odb {
namespace {

// What a state keeps of a text that runs repeatedly: at most this many answers of so many rows, for
// parameters of so many bytes.
constexpr std::size_t answersKept = 64;
constexpr std::size_t rowsOfShortAnswer = 1;
constexpr std::size_t sizeOfShortKey = 256;

// Appends what a text is run with, so that equal keys mean equal values.
void appendValues(std::string& key, const std::vector<std::int64_t>& numbers,
                  ParameterView parameters) {
  const auto append = [&key](const auto& number) {
    key.append(reinterpret_cast<const char*>(&number), sizeof number);
  };
  for (const std::int64_t number : numbers)
    append(number);
  for (std::size_t i = 0; i < parameters.count; ++i) {
    const Parameter& parameter = parameters.first[i];
    const Value value = parameter.value.view();
    key.push_back(static_cast<char>(parameter.isBound ? value.type : Type::nothing));
    append(value.number);
    if (value.isText()) {
      append(value.text.size());
      key.append(value.text);
    }
  }
}

}  // namespace

// The transaction around a run: a savepoint within the caller's transaction, otherwise a new
// transaction, or none if SQLite's implicit one suffices. The destructor rolls back unless keep()
// was called.
class Session::Scope {
public:
  struct Need {
    bool writes;
    bool transaction;  // not only SQLite's implicit one
  };

  Scope(Session& session, const Program& program) : Scope(session, needOf(program)) {}
  Scope(Session& session, Need need) : session_(session) {
    session.endStaleTransaction();
    if (session.inTransaction_) {
      if (!session.connection_.inTransaction())
        throw Failure(DB_TRANSACTION, "the transaction has failed before; end it first");
      if (need.writes && need.transaction)
        open(Connection::Control::save);
    } else if (session.readsTransact_) {
      if (need.writes)
        throw Failure(DB_TRANSACTION, "the text writes, and so far all is only read");
    } else if (need.transaction) {
      open(need.writes ? Connection::Control::beginWrite : Connection::Control::beginRead);
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
  static Need needOf(const Program& program) {
    const bool single = program.statement && program.statement->kind == Statement::Kind::insert;
    return {program.writes, program.writes ? !single : program.needsSnapshot};
  }

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
    : database_(database), connection_(placeOf(database)), cache_(connection_),
      texts_(connection_.handle()), answers_(answersKept) {}

Session::~Session() {
  if (inTransaction_)
    connection_.undo(false);
}

// A transaction whose rollback failed, for lack of memory, must not receive later writes.
void Session::endStaleTransaction() {
  if (!inTransaction_ && !readsTransact_ && connection_.inTransaction())
    connection_.control(Connection::Control::rollback);
}

void Session::begin(int mode, bool isBulk) {
  if (mode != 0)
    throw Failure(DB_BAD_ARGUMENT, "there is no transaction mode " + std::to_string(mode));
  if (inTransaction_ || readsTransact_)
    throw Failure(DB_TRANSACTION, "a transaction is open already");
  endStaleTransaction();
  if (isBulk)
    connection_.beginBulkWrite();
  else
    connection_.control(Connection::Control::beginWrite);
  inTransaction_ = true;
  connection_.setUncommitted(true);
}

bool Session::hasTransactionOfCaller() const {
  return inTransaction_ && !writesTransact_;
}

void Session::requireTransactionOfCaller() const {
  if (!hasTransactionOfCaller())
    throw Failure(DB_TRANSACTION, "no transaction is open");
}

void Session::commit() {
  requireTransactionOfCaller();
  inTransaction_ = false;
  connection_.setUncommitted(false);
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
    cache_.checkTables();
    throw;
  } catch (const std::bad_alloc&) {
    if (fills)
      unfilledBy_ = DB_NO_MEMORY;
    connection_.undo(false);
    cache_.checkTables();
    throw;
  }
  connection_.committed();
  connection_.announce();
}

void Session::abort() {
  requireTransactionOfCaller();
  inTransaction_ = false;
  connection_.setUncommitted(false);
  fillFailure_ = DB_OK;
  connection_.undo(false);
  cache_.checkTables();
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
  answers_.clear();
  lastRead_.clear();
  readsNoTexts_ = false;
  if (!connection_.inTransaction())
    return;
  try {
    connection_.control(Connection::Control::commit);
  } catch (const std::exception&) {
    connection_.undo(false);
    throw;
  }
}

void Session::beginWrite(bool isBulk) {
  if (!inTransaction_) {
    begin(0, isBulk);
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

std::shared_ptr<const Program> Session::program(const std::string& text) {
  cache_.followCommits();
  return cache_.program(text);
}

Session::Answer Session::run(const char* text, va_list arguments, ParameterView parameters) {
  const auto fail = [this](DB_Result code) {
    if (inTransaction_ && connection_.isFilling())
      fillFailure_ = code;
  };
  try {
    const TextCache::Call call = cache_.read(text, arguments);
    return readsTransact_ && connection_.inTransaction() ? readText(call, parameters)
                                                         : runText(call, parameters);
  } catch (const Failure& failure) {
    fail(failure.code());
    throw;
  } catch (const std::bad_alloc&) {
    fail(DB_NO_MEMORY);
    throw;
  }
}

// Runs a text in the state that is read, in which a text returns the same for the same parameters.
Session::Answer Session::readText(const TextCache::Call& call, ParameterView parameters) {
  if (call.key() != lastRead_) {
    lastRead_.clear();
    Answer answer = runText(call, parameters);
    lastRead_ = call.key();
    return answer;
  }
  std::string key = call.key();
  appendValues(key, call.numbers(), parameters);
  if (const Answer* known = answers_.find(key))
    return *known;
  Answer answer = runText(call, parameters);
  if (answer.rows->rows() <= rowsOfShortAnswer && key.size() <= sizeOfShortKey)
    answers_.add(std::move(key), answer);
  return answer;
}

Session::Answer Session::runText(const TextCache::Call& call, ParameterView parameters) {
  cache_.followCommits();
  try {
    return run(cache_.executable(call), call.numbers(), parameters);
  } catch (const Failure& failure) {
    // SQLite may have noticed only now that another program has changed a table.
    if (failure.code() == DB_FULL ? inTransaction_ || !connection_.makeRoom(lastRunRemoves_)
                                  : !cache_.forgetIfTablesChanged())
      throw;
  }
  return run(cache_.executable(call), call.numbers(), parameters);
}

Session::Answer Session::run(Executable& executable, const std::vector<std::int64_t>& numbers,
                             ParameterView parameters, const std::function<void()>& beforeKeeping) {
  const Program& program = executable.program();
  lastRunRemoves_ = program.removes();
  if (lastRunRemoves_ && inTransaction_)
    connection_.makeRoomAhead();
  const auto result = program.script ? std::make_shared<ResultBuffer>(program.script->buffer)
                                     : std::make_shared<ResultBuffer>();
  Executable::Run current{parameters, numbers, *result, std::nullopt};
  if (program.writes)
    requireFilled();
  const bool fills = program.writes && inTransaction_ && connection_.isFilling();
  {
    Scope scope(*this, program);
    executable.run(current);
    if (beforeKeeping)
      beforeKeeping();
    // Callers may not check the commit of such a transaction; they always check DB_EndWrite.
    if (inTransaction_ && !writesTransact_ && (fills || (program.writes && program.script)))
      connection_.writeOut();
    scope.keep();
  }
  if (program.writes && !inTransaction_)
    connection_.committed();
  if (program.statement && program.statement->kind != Statement::Kind::insert)
    cache_.forget();
  return {result, current.tag};
}

void Session::requireFilled() const {
  if (unfilledBy_ != DB_OK)
    throw Failure(unfilledBy_, "the database could not be filled; open it again");
}

void Session::setTaskText(std::int64_t uid, std::string_view text) {
  if (text.size() > DB_MAX_TASK_TEXT)
    throw Failure(DB_LIMIT, "the text of a task has more than " + std::to_string(DB_MAX_TASK_TEXT) +
                                " bytes");
  requireFilled();
  try {
    tryToSetTaskText(uid, text);
  } catch (const Failure& failure) {
    if (failure.code() != DB_FULL || inTransaction_ || !connection_.makeRoom(text.empty()))
      throw;
    tryToSetTaskText(uid, text);
  }
}

void Session::tryToSetTaskText(std::int64_t uid, std::string_view text) {
  Scope scope(*this, Scope::Need{true, true});
  if (!texts_.set(uid, text))
    throw Failure(DB_CONSTRAINT, "no task has the UID " + std::to_string(uid));
  // Callers may not check the commit of such a transaction; they always check DB_EndWrite.
  if (inTransaction_ && !writesTransact_)
    connection_.writeOut();
  scope.keep();
  if (!inTransaction_)
    connection_.committed();
}

std::optional<std::string_view> Session::taskText(std::int64_t uid) {
  if (readsNoTexts_)
    return std::nullopt;
  const Scope scope(*this, Scope::Need{false, false});
  if (texts_.exist())
    return texts_.get(uid);
  readsNoTexts_ = readsTransact_ && connection_.inTransaction();
  return std::nullopt;
}

void Session::checkFile(const LineSink& line) {
  SqlStatement check(connection_.handle(), "PRAGMA integrity_check");
  while (check.step())
    if (check.text(0) != "ok")
      line(check.text(0));
}

}  // namespace ulo::odb
