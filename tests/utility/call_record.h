// Stand-ins for the database, the change reporter and the log ports, linked into a test program in
// the place of the real ones. They write down, in one list, every call and every log line in the
// order in which they happen, and answer as the test says.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <variant>
#include <vector>

namespace calls {

// A field: nothing (null), a number or bool, a varchar, a unicode text.
using Field = std::variant<std::monostate, int, std::string, std::u16string>;
using Row = std::vector<Field>;

// What the database answers to a text.
struct Answer {
  int result = 0;
  std::vector<Row> rows;
  int tag = 1;
};

struct Script {
  int openResult = 0;
  // How many parameter blocks can be had.
  int blocks = 1000;
  // By the name of the text; a text that isn't there succeeds with no rows.
  std::map<std::string, Answer> answers = {};
  // Allocations with new (std::nothrow) give null.
  bool noMemory = false;
  // No uuid can be made.
  bool noUuid = false;
  // What DB_BeginWrite and the DB_EndWrite that commits answer.
  int beginWriteResult = 0;
  int commitResult = 0;
};

// From now on answers are those of `script`, and the list is empty.
void begin(const Script& script);

// The calls since begin:
//   "open 1", "close", "begin 0", "commit", "abort", "tag"
//   "block 2", "0 = 5", "0 = null", "0 = 'bytes'", "0 = u'exchanged units in hexadecimal'",
//   "free block"
//   "exec NAME arguments", "query NAME arguments", with " by block" where one was given
//   "free rows" for a cursor that was not null
//   "report UID TYPE HANDLE SOURCE", "begin batch SOURCE", "end batch SOURCE", "end of reporter"
//   "open port NAME FLAGS", "close port NAME"
//   "log TEXT" with "(utility/ZTASK_ENG_Model.cpp:LINE)" taken off
// NAME is that of the file in tests/golden/store which holds the text to the byte.
std::vector<std::string> list();

// Blocks, cursors, readings and writings that nobody freed or ended.
int held();

// The texts queried since begin while no reading (DB_BeginRead) was open.
std::vector<std::string> queriedAlone();
// The texts run since begin while no writing (DB_BeginWrite) was open.
std::vector<std::string> unlocked();

}  // namespace calls
