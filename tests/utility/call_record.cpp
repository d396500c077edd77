#include "call_record.h"

#include "../../utility/uuid.h"
#include "SVC_CT_ChangeReporter.h"
#include "aplog.h"
#include "call_steps.h"
#include "failing_new.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

struct DB_ParamBlock {};

struct DB_ResultCursor {
  std::vector<calls::Row> rows;
  std::size_t row = 0;
};

class SVC_CT_ChangeReporter::Batch {};

namespace {

calls::Plan plan;
std::vector<std::string> recorded;
int openHandles = 0;
int openReadStates = 0;
int openWriteTransactions = 0;
std::vector<std::string> outsideReadState;
std::vector<std::string> outsideWriteTransaction;
int tag = 0;

void record(const std::string& call) {
  recorded.push_back(call);
}

// The log is an unbuffered stream, so each message arrives by itself.
ssize_t recordLog(void*, const char* bytes, std::size_t size) {
  std::string message(bytes, size);
  const std::string source = "(utility/ZTASK_ENG_Model.cpp:";
  if (message.compare(0, source.size(), source) == 0) {
    const std::size_t end = message.find_first_not_of("0123456789", source.size());
    if (end != source.size() && message[end] == ')')
      message.erase(0, end + 1);
  }
  record(calls::logged(message));
  return static_cast<ssize_t>(size);
}

// The names of the statements by their texts.
const std::map<std::string, std::string>& statements() {
  static const std::map<std::string, std::string> names = [] {
    std::map<std::string, std::string> found;
    for (const auto& file :
         std::filesystem::directory_iterator(ULO_SOURCE_DIR "/tests/golden/store")) {
      std::ifstream in(file.path(), std::ios::binary);
      found[{std::istreambuf_iterator<char>(in), {}}] = file.path().stem().string();
    }
    return found;
  }();
  return names;
}

std::string nameOf(const char* text) {
  const auto found = statements().find(text);
  return found == statements().end() ? "unknown statement: " + std::string(text) : found->second;
}

// Records a statement that is run with its template's arguments, and returns its outcome.
const calls::Outcome& run(bool isQuery, const char* text, bool hasBlock, va_list arguments) {
  static const calls::Outcome success;
  const std::string name = nameOf(text);
  std::vector<std::string> inserted;
  for (const char* place = std::strchr(text, '%'); place != nullptr;
       place = std::strchr(place + 1, '%'))
    inserted.push_back(place[1] == 's' ? va_arg(arguments, const char*)
                                       : std::to_string(va_arg(arguments, int)));
  const std::string call =
      isQuery ? calls::queried(name, inserted) : calls::executed(name, inserted);
  record(hasBlock ? calls::byBlock(call) : call);
  if (isQuery && openReadStates == 0)
    outsideReadState.push_back(name);
  if (openWriteTransactions == 0)
    outsideWriteTransaction.push_back(name);
  const auto planned = plan.outcomes.find(name);
  const calls::Outcome& outcome = planned == plan.outcomes.end() ? success : planned->second;
  if (outcome.code == DB_OK)
    tag = outcome.tag;
  return outcome;
}

int openCursor(DB_CURSOR* cursor, const calls::Outcome& outcome) {
  *cursor = nullptr;
  if (outcome.code == DB_OK) {
    *cursor = new DB_ResultCursor{outcome.rows};
    ++openHandles;
  }
  return outcome.code;
}

void convertText() {
  if (plan.texts-- == 0)
    throw std::bad_alloc();
}

template <typename Type> const Type* field(DB_CURSOR cursor, int column) {
  if (cursor->row >= cursor->rows.size() ||
      static_cast<std::size_t>(column) >= cursor->rows[cursor->row].size())
    return nullptr;
  return std::get_if<Type>(&cursor->rows[cursor->row][static_cast<std::size_t>(column)]);
}

}  // namespace

namespace calls {

void begin(const Plan& wanted) {
  static FILE* const log = [] {
    FILE* stream = fopencookie(nullptr, "w", {nullptr, recordLog, nullptr, nullptr});
    std::setvbuf(stream, nullptr, _IONBF, 0);
    return stream;
  }();
  libaplog_to_module_ptr = log;
  for (const auto& [name, outcome] : wanted.outcomes) {
    const auto isName = [&name = name](const auto& entry) { return entry.second == name; };
    if (std::none_of(statements().begin(), statements().end(), isName))
      throw std::invalid_argument("no statement is called " + name);
  }
  plan = wanted;
  allocationsLeft = plan.noMemory ? 0 : allAllocationsSucceed;
  recorded.clear();
  outsideReadState.clear();
  outsideWriteTransaction.clear();
}

std::vector<std::string> list() {
  return recorded;
}

int held() {
  return openHandles;
}

std::vector<std::string> queriedOutsideReadState() {
  return outsideReadState;
}

std::vector<std::string> ranOutsideWriteTransaction() {
  return outsideWriteTransaction;
}

}  // namespace calls

QString generateUuid() {
  convertText();
  return plan.uuid;
}

int DB_Open(int database) {
  record(calls::openedDatabase(database));
  return plan.openCode;
}
int DB_Close() {
  record(calls::closedDatabase());
  return DB_OK;
}
int DB_BeginTransaction(int mode) {
  record(calls::began(mode));
  return DB_OK;
}
int DB_CommitTransaction() {
  record(calls::committed());
  return DB_OK;
}
int DB_AbortTransaction() {
  record(calls::aborted());
  return DB_OK;
}

int DB_BeginRead() {
  ++openHandles;
  ++openReadStates;
  return DB_OK;
}
int DB_EndRead() {
  --openHandles;
  --openReadStates;
  return DB_OK;
}

int DB_BeginWrite() {
  if (openWriteTransactions == 0 && plan.beginWriteCode != DB_OK)
    return plan.beginWriteCode;
  ++openHandles;
  ++openWriteTransactions;
  return DB_OK;
}
int DB_EndWrite(int keep) {
  --openHandles;
  --openWriteTransactions;
  return openWriteTransactions == 0 && keep != 0 ? plan.commitCode : DB_OK;
}

int DB_Exec(const char* text, ...) {
  va_list arguments;
  va_start(arguments, text);
  const int code = run(false, text, false, arguments).code;
  va_end(arguments);
  return code;
}
int DB_ExecWithParam(DB_PARAM block, const char* text, ...) {
  va_list arguments;
  va_start(arguments, text);
  const int code = run(false, text, true, arguments).code;
  va_end(arguments);
  return block == nullptr ? DB_BAD_PARAMETER : code;
}
int DB_Query(DB_CURSOR* cursor, const char* text, ...) {
  va_list arguments;
  va_start(arguments, text);
  const int code = openCursor(cursor, run(true, text, false, arguments));
  va_end(arguments);
  return code;
}
int DB_QueryWithParam(DB_CURSOR* cursor, DB_PARAM block, const char* text, ...) {
  static const calls::Outcome blockIsMissing = calls::failsWith(DB_BAD_PARAMETER);
  va_list arguments;
  va_start(arguments, text);
  const calls::Outcome& outcome = run(true, text, true, arguments);
  const int code = openCursor(cursor, block == nullptr ? blockIsMissing : outcome);
  va_end(arguments);
  return code;
}
int DB_GetTag() {
  record(calls::readTag());
  return tag;
}

DB_PARAM DB_PARAM_Open(int count) {
  record(calls::openedBlock(count));
  if (plan.parameterBlocks-- <= 0)
    return nullptr;
  ++openHandles;
  return new DB_ParamBlock;
}
int DB_PARAM_Close(DB_PARAM block) {
  record(calls::freedBlock());
  --openHandles;
  delete block;
  return DB_OK;
}
int DB_PARAM_BindInteger(DB_PARAM, int index, int value) {
  record(calls::bound(index, value));
  return DB_OK;
}
int DB_PARAM_BindUnicode(DB_PARAM, int index, const unsigned short* units) {
  convertText();
  record(calls::bound(index, units == nullptr ? calls::Value(calls::null) : calls::units(units)));
  return DB_OK;
}
int DB_PARAM_BindChar(DB_PARAM, int index, const char* utf8) {
  convertText();
  record(calls::bound(index, utf8 == nullptr ? calls::Value(calls::null) : calls::varchar(utf8)));
  return DB_OK;
}

int DB_CSC_GetFieldAsInteger(DB_CURSOR cursor, int column) {
  const int* value = field<int>(cursor, column);
  return value == nullptr ? 0 : *value;
}
int DB_CSC_GetFieldAsBool(DB_CURSOR cursor, int column) {
  return DB_CSC_GetFieldAsInteger(cursor, column) != 0 ? 1 : 0;
}
const unsigned short* DB_CSC_GetFieldAsUnicode(DB_CURSOR cursor, int column) {
  convertText();
  const auto* value = field<std::u16string>(cursor, column);
  return value == nullptr ? nullptr : reinterpret_cast<const unsigned short*>(value->c_str());
}
const char* DB_CSC_GetFieldAsChar(DB_CURSOR cursor, int column) {
  convertText();
  const auto* value = field<std::string>(cursor, column);
  return value == nullptr ? nullptr : value->c_str();
}
int DB_CSC_MoveNext(DB_CURSOR cursor) {
  return ++cursor->row < cursor->rows.size() ? DB_OK : DB_END;
}
int DB_CSC_Eof(DB_CURSOR cursor) {
  return cursor == nullptr || cursor->row >= cursor->rows.size() ? 1 : 0;
}
int DB_CSC_Close(DB_CURSOR cursor) {
  if (cursor != nullptr) {
    record(calls::freedRows());
    --openHandles;
  }
  delete cursor;
  return DB_OK;
}

SVC_CT_ChangeReporter::SVC_CT_ChangeReporter() = default;
SVC_CT_ChangeReporter::~SVC_CT_ChangeReporter() {
  record(calls::deletedReporter());
}
int SVC_CT_ChangeReporter::report(const SVC_CT_ChangeRecord& change, int handle) {
  record(calls::reportedBy(change, handle));
  return 0;
}
int SVC_CT_ChangeReporter::reportMany(const SVC_CT_ChangeRecord*, unsigned int, int) {
  record("report many");
  return 0;
}
int SVC_CT_ChangeReporter::beginBatch(const char* source) {
  record(calls::beganBatch(source));
  return 0;
}
int SVC_CT_ChangeReporter::endBatch(const char* source) {
  record(calls::endedBatch(source));
  return 0;
}

namespace {
std::map<int, std::string> ports;
}

int _aplog_port_open_orig(const char* name, int flags) {
  record(calls::openedPort(name, flags));
  const int port = ports.empty() ? 1 : ports.rbegin()->first + 1;
  ports[port] = name;
  return port;
}
void _aplog_port_close_orig(int port) {
  record(calls::closedPort(ports[port]));
  ports.erase(port);
}
