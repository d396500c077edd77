#include "call_record.h"

#include "SVC_CT_ChangeReporter.h"
#include "aplog.h"
#include "failing_new.h"
#include "ulodb2.h"

#include <QString>

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

calls::Script script;
std::vector<std::string> recorded;
int heldHandles = 0;
int openReadings = 0;
int openWritings = 0;
std::vector<std::string> runUnlocked;
std::vector<std::string> alone;
int tag = 0;

void record(const std::string& call) {
  recorded.push_back(call);
}

// The log is a stream without a buffer: each message arrives by itself.
ssize_t recordLog(void*, const char* bytes, std::size_t size) {
  std::string message(bytes, size);
  const std::string source = "(utility/ZTASK_ENG_Model.cpp:";
  if (message.compare(0, source.size(), source) == 0) {
    const std::size_t end = message.find_first_not_of("0123456789", source.size());
    if (end != source.size() && message[end] == ')')
      message.erase(0, end + 1);
  }
  record("log " + message);
  return static_cast<ssize_t>(size);
}

std::map<std::string, std::string> readGoldenTexts() {
  std::map<std::string, std::string> names;
  for (const auto& file :
       std::filesystem::directory_iterator(ULO_SOURCE_DIR "/tests/golden/store")) {
    std::ifstream in(file.path(), std::ios::binary);
    names[{std::istreambuf_iterator<char>(in), {}}] = file.path().stem().string();
  }
  return names;
}

std::string nameOf(const char* text) {
  static const std::map<std::string, std::string> names = readGoldenTexts();
  const auto found = names.find(text);
  return found == names.end() ? "an unknown text: " + std::string(text) : found->second;
}

// Records the run of a text with its template's arguments.
const calls::Answer& run(const char* verb, const char* text, bool withBlock, va_list arguments) {
  static const calls::Answer success;
  const std::string name = nameOf(text);
  std::string call = std::string(verb) + " " + name;
  for (const char* place = std::strchr(text, '%'); place != nullptr;
       place = std::strchr(place + 1, '%')) {
    call += place[1] == 's' ? std::string(" ") + va_arg(arguments, const char*)
                            : " " + std::to_string(va_arg(arguments, int));
  }
  record(withBlock ? call + " by block" : call);
  if (openReadings == 0 && call.starts_with("query"))
    alone.push_back(name);
  if (openWritings == 0)
    runUnlocked.push_back(name);
  const auto answer = script.answers.find(name);
  const calls::Answer& result = answer == script.answers.end() ? success : answer->second;
  if (result.result == 0)
    tag = result.tag;
  return result;
}

int answerQuery(DB_CURSOR* cursor, const calls::Answer& answer) {
  *cursor = nullptr;
  if (answer.result == 0) {
    *cursor = new DB_ResultCursor{answer.rows};
    ++heldHandles;
  }
  return answer.result;
}

template <typename Type> const Type* field(DB_CURSOR cursor, int column) {
  if (cursor->row >= cursor->rows.size() ||
      static_cast<std::size_t>(column) >= cursor->rows[cursor->row].size())
    return nullptr;
  return std::get_if<Type>(&cursor->rows[cursor->row][static_cast<std::size_t>(column)]);
}

std::string bound(int index, const std::string& value) {
  return std::to_string(index) + " = " + value;
}

}  // namespace

namespace calls {

void begin(const Script& answers) {
  static FILE* const log = [] {
    FILE* stream = fopencookie(nullptr, "w", {nullptr, recordLog, nullptr, nullptr});
    std::setvbuf(stream, nullptr, _IONBF, 0);
    return stream;
  }();
  libaplog_to_module_ptr = log;
  script = answers;
  allocationsLeft = script.noMemory ? 0 : allAllocationsSucceed;
  recorded.clear();
  alone.clear();
  runUnlocked.clear();
}

std::vector<std::string> list() {
  return recorded;
}

int held() {
  return heldHandles;
}

std::vector<std::string> queriedAlone() {
  return alone;
}

std::vector<std::string> unlocked() {
  return runUnlocked;
}

}  // namespace calls

int DB_Open(int database) {
  record("open " + std::to_string(database));
  return script.openResult;
}
int DB_Close() {
  record("close");
  return 0;
}
int DB_BeginTransaction(int mode) {
  record("begin " + std::to_string(mode));
  return 0;
}
int DB_CommitTransaction() {
  record("commit");
  return 0;
}
int DB_AbortTransaction() {
  record("abort");
  return 0;
}

int DB_BeginRead() {
  ++heldHandles;
  ++openReadings;
  return 0;
}
int DB_EndRead() {
  --heldHandles;
  --openReadings;
  return 0;
}

int DB_BeginWrite() {
  if (openWritings == 0 && script.beginWriteResult != 0)
    return script.beginWriteResult;
  ++heldHandles;
  ++openWritings;
  return 0;
}
int DB_EndWrite(int keep) {
  --heldHandles;
  --openWritings;
  return openWritings == 0 && keep != 0 ? script.commitResult : 0;
}

int DB_Exec(const char* text, ...) {
  va_list arguments;
  va_start(arguments, text);
  const int result = run("exec", text, false, arguments).result;
  va_end(arguments);
  return result;
}
int DB_ExecWithParam(DB_PARAM block, const char* text, ...) {
  va_list arguments;
  va_start(arguments, text);
  const int result = run("exec", text, true, arguments).result;
  va_end(arguments);
  return block == nullptr ? DB_BAD_PARAMETER : result;
}
int DB_Query(DB_CURSOR* cursor, const char* text, ...) {
  va_list arguments;
  va_start(arguments, text);
  const int result = answerQuery(cursor, run("query", text, false, arguments));
  va_end(arguments);
  return result;
}
int DB_QueryWithParam(DB_CURSOR* cursor, DB_PARAM block, const char* text, ...) {
  static const calls::Answer refused{DB_BAD_PARAMETER, {}, 0};
  va_list arguments;
  va_start(arguments, text);
  const calls::Answer& answer = run("query", text, true, arguments);
  const int result = answerQuery(cursor, block == nullptr ? refused : answer);
  va_end(arguments);
  return result;
}
int DB_GetTag() {
  record("tag");
  return tag;
}

DB_PARAM DB_PARAM_Open(int count) {
  record("block " + std::to_string(count));
  if (script.blocks-- <= 0)
    return nullptr;
  ++heldHandles;
  return new DB_ParamBlock;
}
int DB_PARAM_Close(DB_PARAM block) {
  record("free block");
  --heldHandles;
  delete block;
  return 0;
}
int DB_PARAM_BindInteger(DB_PARAM, int index, int value) {
  record(bound(index, std::to_string(value)));
  return 0;
}
int DB_PARAM_BindUnicode(DB_PARAM, int index, const unsigned short* units) {
  std::string value = "null";
  if (units != nullptr) {
    value = "u'";
    for (; *units != 0; ++units) {
      char digits[8];
      std::snprintf(digits, sizeof digits, "%04x", static_cast<unsigned int>(*units));
      value += digits;
    }
    value += "'";
  }
  record(bound(index, value));
  return 0;
}
int DB_PARAM_BindChar(DB_PARAM, int index, const char* utf8) {
  record(bound(index, utf8 == nullptr ? "null" : "'" + std::string(utf8) + "'"));
  return 0;
}

int DB_CSC_GetFieldAsInteger(DB_CURSOR cursor, int column) {
  const int* value = field<int>(cursor, column);
  return value == nullptr ? 0 : *value;
}
int DB_CSC_GetFieldAsBool(DB_CURSOR cursor, int column) {
  return DB_CSC_GetFieldAsInteger(cursor, column) != 0 ? 1 : 0;
}
const unsigned short* DB_CSC_GetFieldAsUnicode(DB_CURSOR cursor, int column) {
  const auto* value = field<std::u16string>(cursor, column);
  return value == nullptr ? nullptr : reinterpret_cast<const unsigned short*>(value->c_str());
}
const char* DB_CSC_GetFieldAsChar(DB_CURSOR cursor, int column) {
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
    record("free rows");
    --heldHandles;
  }
  delete cursor;
  return 0;
}

SVC_CT_ChangeReporter::SVC_CT_ChangeReporter() = default;
SVC_CT_ChangeReporter::~SVC_CT_ChangeReporter() {
  record("end of reporter");
}
int SVC_CT_ChangeReporter::report(const SVC_CT_ChangeRecord& change, int handle) {
  const bool zeros = change.reserved0 == 0 && change.reserved[0] == 0 && change.reserved[1] == 0 &&
                     change.reserved[2] == 0 && change.reserved[3] == 0;
  record("report " + std::to_string(change.uid) + " " + std::to_string(change.changeType) + " " +
         std::to_string(handle) + " " + change.source.toStdString() + (zeros ? "" : " not zero"));
  return 0;
}
int SVC_CT_ChangeReporter::reportMany(const SVC_CT_ChangeRecord*, unsigned int, int) {
  record("report many");
  return 0;
}
int SVC_CT_ChangeReporter::beginBatch(const char* source) {
  record(std::string("begin batch ") + source);
  return 0;
}
int SVC_CT_ChangeReporter::endBatch(const char* source) {
  record(std::string("end batch ") + source);
  return 0;
}

namespace {
std::map<int, std::string> ports;
}

int _aplog_port_open_orig(const char* name, int flags) {
  record(std::string("open port ") + name + " " + std::to_string(flags));
  const int port = ports.empty() ? 1 : ports.rbegin()->first + 1;
  ports[port] = name;
  return port;
}
void _aplog_port_close_orig(int port) {
  record("close port " + ports[port]);
  ports.erase(port);
}

// The linker hands the calls of the generator to the second of these.
QString realGenerateUuid() __asm__("__real__Z12generateUuidv");
QString wrappedGenerateUuid() __asm__("__wrap__Z12generateUuidv");
QString wrappedGenerateUuid() {
  return script.noUuid ? QString() : realGenerateUuid();
}
