// Stand-ins for the database, the change reporter, the log ports and the generator of UUIDs. A test
// program links them in the place of the real ones. They record each call and each log line, all in
// one list, and do what the test's plan says.
#pragma once

#include "ulodb2.h"

#include <QString>

#include <limits>
#include <map>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace calls {

// A field of a row: null, a number or a boolean, a varchar, a unicode text.
using Field = std::variant<std::monostate, int, std::string, std::u16string>;
inline constexpr std::monostate null;
using Row = std::vector<Field>;

// What the database does with a statement.
struct Outcome {
  int code = DB_OK;
  std::vector<Row> rows = {};
  // What DB_GetTag returns afterward, unless the statement failed.
  int tag = 1;
};
inline Outcome returns(std::vector<Row> rows) {
  return {.rows = std::move(rows)};
}
inline Outcome addsRow(int uid) {
  return {.tag = uid};
}
inline Outcome failsWith(int code) {
  return {.code = code};
}

// Outcomes by the name of the statement, which is that of the file in tests/golden/store with its
// text. Other statements succeed and return no rows.
using Outcomes = std::map<std::string, Outcome>;

inline constexpr int unlimited = std::numeric_limits<int>::max();

// What the stand-ins do. By default everything succeeds.
struct Plan {
  int openCode = DB_OK;  // of DB_Open
  // How many parameter blocks DB_PARAM_Open can allocate. It returns null after that.
  int parameterBlocks = unlimited;
  Outcomes outcomes = {};
  bool noMemory = false;  // new (std::nothrow) returns null
  // How many texts can be bound, read or generated before one throws std::bad_alloc, as its
  // conversion does without memory. The texts after it succeed.
  int texts = unlimited;
  QString uuid = "generated uuid";  // what the generator returns
  int beginWriteCode = DB_OK;       // of DB_BeginWrite
  int commitCode = DB_OK;           // of the DB_EndWrite that commits
};

// Follows `plan` from now on, and clears the list. Throws if an outcome's statement is unknown.
void begin(const Plan& plan);

// The calls and log lines since begin(), each as call_steps.h writes it.
std::vector<std::string> list();

// The number of parameter blocks, cursors, read states and write transactions that are still open.
int held();

// The statements since begin() that queried outside a read state (DB_BeginRead).
std::vector<std::string> queriedOutsideReadState();
// The statements since begin() that ran outside a write transaction (DB_BeginWrite).
std::vector<std::string> ranOutsideWriteTransaction();

}  // namespace calls
