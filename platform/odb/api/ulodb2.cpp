// The C interface: converts failures to result codes and log lines.

#include "ulodb2.h"

#include "machine/explain.h"
#include "machine/session.h"
#include "module_log.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <optional>
#include <pthread.h>
#include <string_view>

using namespace ulo::odb;

struct DB_ParamBlock {
  std::unique_ptr<Parameter[]> parameters;
  std::size_t count = 0;
};

struct DB_ResultCursor {
  std::shared_ptr<const ResultBuffer> buffer;
  std::size_t row = 0;
  ResultBuffer::Converted converted;
};

namespace {

// A thread's state. Trivially destructible, so that static objects destroyed after the thread's own
// can still close the database.
thread_local Session* threadSession = nullptr;
thread_local int threadOpens = 0;
thread_local int threadTag = 0;
// A fixed buffer, available even without memory; longer messages are truncated.
thread_local char lastFailure[512] = "";
thread_local int lastResult = DB_OK;
thread_local unsigned int failureCount = 0;

// Number of sessions of all threads.
std::atomic<int> openSessions{0};
// True if this process was forked while any were open: SQLite's state then belongs to the parent.
bool isForked = false;

// Actions at the end of a thread, and in the child after a fork.
class ProcessHooks {
public:
  ProcessHooks() : keyIsMade_(pthread_key_create(&key_, &ProcessHooks::endOfThread) == 0) {
    pthread_atfork(nullptr, nullptr, [] { isForked = isForked || openSessions > 0; });
  }
  // Sets whether this thread closes the database when it ends.
  void closeAtEnd(bool yes) const {
    if (keyIsMade_)
      pthread_setspecific(key_, yes ? &threadOpens : nullptr);
  }

private:
  // Not called for the main thread at process exit.
  static void endOfThread(void*);

  pthread_key_t key_{};
  bool keyIsMade_;
};

// Never destroyed: static objects may still close the database.
const ProcessHooks& processHooks() {
  static const auto* const hooks = new ProcessHooks;
  return *hooks;
}

void closeSession() {
  delete threadSession;
  threadSession = nullptr;
  threadOpens = 0;
  --openSessions;
  processHooks().closeAtEnd(false);
}

void ProcessHooks::endOfThread(void*) {
  if (threadSession != nullptr && !isForked)
    closeSession();
}

int failed(int code, const char* why) {
  lastResult = code;
  ++failureCount;
  const std::size_t size = std::min(std::strlen(why), sizeof lastFailure - 1);
  std::memcpy(lastFailure, why, size);
  lastFailure[size] = '\0';
  return code;
}

// Runs `work`. Reports any failure through `say` and returns its code.
template <typename Work, typename Say> int guarded(Work work, Say say) {
  try {
    work();
    return DB_OK;
  } catch (const Failure& failure) {
    say(failure.what());
    return failed(failure.code(), failure.reason());
  } catch (const std::bad_alloc&) {
    say("no memory");
    return failed(DB_NO_MEMORY, "no memory");
  } catch (const std::exception& failure) {
    say(failure.what());
    return failed(DB_ERROR, failure.what());
  } catch (...) {
    // Thrown by a function of the caller.
    say("an exception of an unknown type");
    return failed(DB_ERROR, "an exception of an unknown type");
  }
}
template <typename Work> int guarded(Work work) {
  return guarded(work, [](const char* what) { ULO_LOG_ERROR("%s", what); });
}
template <typename Work> int quietly(Work work) {
  return guarded(work, [](const char*) {});
}

void requireNoFork() {
  if (isForked)
    throw Failure(DB_NOT_OPEN, "the process was forked while the database was open");
}

Session& session() {
  requireNoFork();
  if (threadSession == nullptr)
    throw Failure(DB_NOT_OPEN, "the database is not open");
  return *threadSession;
}

void require(bool condition, const char* what) {
  if (!condition)
    throw Failure(DB_BAD_ARGUMENT, what);
}

ParameterView viewOf(DB_PARAM block) {
  return block == nullptr ? ParameterView() : ParameterView{block->parameters.get(), block->count};
}

std::shared_ptr<const ResultBuffer> runText(ParameterView parameters, const char* text,
                                            va_list arguments) {
  require(text != nullptr, "the text is null");
  Session::Answer answer = session().run(text, arguments, parameters);
  if (answer.tag)
    threadTag = *answer.tag;
  return std::move(answer.rows);
}

int execute(ParameterView parameters, bool blockIsThere, const char* text, va_list arguments) {
  return guarded([&] {
    if (!blockIsThere)
      throw Failure(DB_BAD_PARAMETER, "there is no parameter block");
    runText(parameters, text, arguments);
  });
}

int query(DB_CURSOR* cursor, ParameterView parameters, bool blockIsThere, const char* text,
          va_list arguments) {
  if (cursor != nullptr)
    *cursor = nullptr;
  return guarded([&] {
    require(cursor != nullptr, "there is no place for the cursor");
    if (!blockIsThere)
      throw Failure(DB_BAD_PARAMETER, "there is no parameter block");
    // Allocate first: once the text has run, nothing may fail.
    auto result = std::make_unique<DB_ResultCursor>();
    result->buffer = runText(parameters, text, arguments);
    *cursor = result.release();
  });
}

int bindParameter(DB_PARAM block, int index, const Value& value) {
  return guarded([&] {
    require(block != nullptr, "there is no parameter block");
    require(index >= 0 && static_cast<std::size_t>(index) < block->count,
            "the parameter's index is out of range");
    block->parameters[static_cast<std::size_t>(index)] = {true, OwnedValue(value)};
  });
}

// A negative column becomes larger than any valid index.
bool hasField(DB_CURSOR cursor, int column) {
  return cursor != nullptr && cursor->row < cursor->buffer->rows() &&
         static_cast<unsigned int>(column) < cursor->buffer->columns();
}

int numberField(DB_CURSOR cursor, int column) {
  return hasField(cursor, column)
             ? cursor->buffer->number(cursor->row, static_cast<std::size_t>(column))
             : 0;
}

LineSink sinkTo(void (*line)(void*, const char*), void* context) {
  return [line, context](const std::string& text) { line(context, text.c_str()); };
}

}  // namespace

int DB_Open(int database) {
  return guarded([&] {
    requireNoFork();
    if (threadSession == nullptr) {
      const ProcessHooks& hooks = processHooks();
      threadSession = new Session(database);
      ++openSessions;
      hooks.closeAtEnd(true);
    } else {
      require(database == threadSession->database(), "another database is open in this thread");
    }
    ++threadOpens;
  });
}

int DB_Close() {
  return guarded([] {
    // After a fork the session and its locks are the parent's; its memory is leaked.
    if (!isForked || threadOpens == 0)
      session();
    if (--threadOpens == 0 && !isForked)
      closeSession();
  });
}

int DB_BeginTransaction(int mode) {
  return guarded([&] { session().begin(mode); });
}

int DB_CommitTransaction() {
  return guarded([] { session().commit(); });
}

int DB_AbortTransaction() {
  // Not a failure: the reason for the failure before it is kept.
  if (threadSession != nullptr && !isForked && !threadSession->hasTransactionOfCaller()) {
    ULO_LOG_ERROR("no transaction is open");
    return DB_TRANSACTION;
  }
  return guarded([] { session().abort(); });
}

int DB_BeginRead() {
  return quietly([] { session().beginRead(); });
}

int DB_EndRead() {
  return quietly([] { session().endRead(); });
}

int DB_BeginWrite() {
  return quietly([] { session().beginWrite(); });
}

int DB_BeginBulkWrite() {
  return quietly([] { session().beginWrite(true); });
}

int DB_EndWrite(int keep) {
  return quietly([&] { session().endWrite(keep != 0); });
}

int DB_Exec(const char* text, ...) {
  va_list arguments;
  va_start(arguments, text);
  const int result = execute({}, true, text, arguments);
  va_end(arguments);
  return result;
}

int DB_ExecWithParam(DB_PARAM block, const char* text, ...) {
  va_list arguments;
  va_start(arguments, text);
  const int result = execute(viewOf(block), block != nullptr, text, arguments);
  va_end(arguments);
  return result;
}

int DB_Query(DB_CURSOR* cursor, const char* text, ...) {
  va_list arguments;
  va_start(arguments, text);
  const int result = query(cursor, {}, true, text, arguments);
  va_end(arguments);
  return result;
}

int DB_QueryWithParam(DB_CURSOR* cursor, DB_PARAM block, const char* text, ...) {
  va_list arguments;
  va_start(arguments, text);
  const int result = query(cursor, viewOf(block), block != nullptr, text, arguments);
  va_end(arguments);
  return result;
}

int DB_GetTag() {
  return threadTag;
}

int DB_SetTaskText(int uid, const char* bytes, unsigned int size) {
  return guarded([&] {
    require(bytes != nullptr || size == 0, "the text is null");
    session().setTaskText(uid, {bytes, size});
  });
}

int DB_GetTaskText(int uid, const char** bytes, unsigned int* size) {
  return guarded([&] {
    require(bytes != nullptr && size != nullptr, "there is no place for the text");
    *bytes = nullptr;
    *size = 0;
    if (const std::optional<std::string_view> text = session().taskText(uid)) {
      *bytes = text->data();
      *size = static_cast<unsigned int>(text->size());
    }
  });
}

DB_PARAM DB_PARAM_Open(int count) {
  if (count < 1 || count > DB_MAX_PARAMETERS)
    return nullptr;
  std::unique_ptr<DB_ParamBlock> block(new (std::nothrow) DB_ParamBlock);
  if (!block) {
    failed(DB_NO_MEMORY, "no memory");
    return nullptr;
  }
  block->count = static_cast<std::size_t>(count);
  block->parameters.reset(new (std::nothrow) Parameter[block->count]);
  if (!block->parameters) {
    failed(DB_NO_MEMORY, "no memory");
    return nullptr;
  }
  return block.release();
}

int DB_PARAM_Close(DB_PARAM block) {
  delete block;
  return DB_OK;
}

int DB_PARAM_BindInteger(DB_PARAM block, int index, int value) {
  return bindParameter(block, index, Value::integer(value));
}

int DB_PARAM_BindUnicode(DB_PARAM block, int index, const unsigned short* units) {
  if (units == nullptr)
    return bindParameter(block, index, {});
  return guarded([&] {
    std::string bytes;
    for (; *units != 0; ++units) {
      const auto unit = static_cast<std::uint16_t>((*units >> 8U) | (*units << 8U));
      char pair[sizeof unit];
      std::memcpy(pair, &unit, sizeof unit);
      bytes.append(pair, sizeof unit);
    }
    if (const int result = bindParameter(block, index, {Type::unicode, 0, bytes}))
      throw Failure(static_cast<DB_Result>(result), "the text is not bound");
  });
}

int DB_PARAM_BindChar(DB_PARAM block, int index, const char* utf8) {
  return bindParameter(block, index, utf8 == nullptr ? Value() : Value{Type::varchar, 0, utf8});
}

int DB_CSC_GetFieldAsInteger(DB_CURSOR cursor, int column) {
  return numberField(cursor, column);
}

int DB_CSC_GetFieldAsBool(DB_CURSOR cursor, int column) {
  return numberField(cursor, column) != 0 ? 1 : 0;
}

const unsigned short* DB_CSC_GetFieldAsUnicode(DB_CURSOR cursor, int column) {
  const unsigned short* text = nullptr;
  if (hasField(cursor, column))
    guarded([&] {
      text =
          cursor->buffer->units(cursor->row, static_cast<std::size_t>(column), cursor->converted);
    });
  return text;
}

const char* DB_CSC_GetFieldAsChar(DB_CURSOR cursor, int column) {
  const char* text = nullptr;
  if (hasField(cursor, column))
    guarded([&] {
      text =
          cursor->buffer->bytes(cursor->row, static_cast<std::size_t>(column), cursor->converted);
    });
  return text;
}

int DB_CSC_MoveNext(DB_CURSOR cursor) {
  if (cursor == nullptr)
    return DB_BAD_ARGUMENT;
  if (cursor->row < cursor->buffer->rows())
    ++cursor->row;
  return cursor->row < cursor->buffer->rows() ? DB_OK : DB_END;
}

int DB_CSC_Eof(DB_CURSOR cursor) {
  return cursor == nullptr || cursor->row >= cursor->buffer->rows() ? 1 : 0;
}

int DB_CSC_Close(DB_CURSOR cursor) {
  delete cursor;
  return DB_OK;
}

const char* DB_LastFailure() {
  return lastFailure;
}

int DB_LastResult() {
  return lastResult;
}

unsigned int DB_FailureCount() {
  return failureCount;
}

int DB_Explain(const char* text, int what, DB_PARAM block,
               void (*line)(void* context, const char* utf8), void* context) {
  if (text == nullptr || line == nullptr)
    return failed(DB_BAD_ARGUMENT, "the text or the place for the lines is null");
  int result = DB_OK;
  const int told = guarded([&] {
    const LineSink sink = sinkTo(line, context);
    try {
      explain(session(), text, what, viewOf(block), sink);
    } catch (const Failure& failure) {
      result = failed(failure.code(), failure.reason());
      sink(failure.what());
    }
  });
  return result != DB_OK ? result : told;
}

int DB_CheckFile(void (*line)(void* context, const char* utf8), void* context) {
  return guarded([&] {
    require(line != nullptr, "there is no place for the lines");
    session().checkFile(sinkTo(line, context));
  });
}
