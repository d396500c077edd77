// The calls that the stand-ins record, in the order in which the store makes them. The functions
// below are used twice: by the stand-ins, to record a call, and by tests, to write down the
// expected ones. Steps are texts, so that a failed test shows them.
#pragma once

#include "SVC_CT_ChangeReporter.h"
#include "call_record.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace calls {

using Steps = std::vector<std::string>;

// The engine, as it names itself to the change reporter.
inline const std::string engine = "{9a4cdb74-34ec-415e-ba36-b8c2a35d0071}";

// A value as it is bound to a parameter.
class Value {
public:
  Value(int number) : text_(std::to_string(number)) {}
  Value(std::monostate) : text_("null") {}

  [[nodiscard]] const std::string& text() const { return text_; }

private:
  explicit Value(std::string text) : text_(std::move(text)) {}
  friend Value varchar(const std::string& utf8);
  friend Value units(const unsigned short* units);

  std::string text_;
};

// Bytes in UTF-8.
Value varchar(const std::string& utf8);
// 16-bit units up to the first 0, as they are passed.
Value units(const unsigned short* units);
// The units of `text`, each with its two bytes exchanged: DB_PARAM_BindUnicode takes them so.
Value exchanged(std::u16string text);

// The database.
std::string openedDatabase(int database);
std::string closedDatabase();
std::string began(int mode = 0);
std::string committed();
std::string aborted();
std::string readTag();

// A statement, with the values that are inserted into its template.
std::string executed(const std::string& statement, const std::vector<std::string>& inserted = {});
std::string queried(const std::string& statement, const std::vector<std::string>& inserted = {});
std::string freedRows();  // of a query that succeeded

// A statement that is run with a parameter block.
std::string byBlock(const std::string& statement);
std::string openedBlock(int parameters);
std::string freedBlock();
std::string bound(int parameter, const Value& value);
// Values of consecutive parameters.
Steps bound(int firstParameter, const std::vector<Value>& values);
// All steps of a statement with parameters: opens a block for the values, binds them, runs the
// statement, frees the block.
Steps withParameters(const std::vector<Value>& values, const std::string& statement);

// The change reporter.
std::string reportedBy(const SVC_CT_ChangeRecord& change, int handle);
std::string reported(unsigned int uid, SVC_CT_ChangeType type);  // by the engine
std::string beganBatch(const std::string& source = engine);
std::string endedBatch(const std::string& source = engine);
std::string deletedReporter();

// The log.
std::string openedPort(const std::string& name, int flags = 0);
std::string closedPort(const std::string& name);
// A message, without "(utility/ZTASK_ENG_Model.cpp:LINE)" in front of it.
std::string logged(const std::string& message);

// The end of a log line about a database function that failed.
std::string ret(int code);

// Puts single steps and lists of steps in one list.
inline void append(Steps& all, const std::string& step) {
  all.push_back(step);
}
inline void append(Steps& all, const Steps& more) {
  all.insert(all.end(), more.begin(), more.end());
}
template <typename... Parts> Steps steps(const Parts&... parts) {
  Steps all;
  (append(all, parts), ...);
  return all;
}
// Matches a list of exactly these steps.
template <typename... Parts> auto AreSteps(const Parts&... parts) {
  return testing::ElementsAreArray(steps(parts...));
}

}  // namespace calls
