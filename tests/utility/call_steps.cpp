#include "call_steps.h"

#include <cstdio>

namespace calls {

namespace {

std::string statementCall(std::string call, const std::vector<std::string>& inserted) {
  for (const std::string& value : inserted)
    call += " " + value;
  return call;
}

}  // namespace

Value varchar(const std::string& utf8) {
  return Value("'" + utf8 + "'");
}

Value units(const unsigned short* units) {
  std::string text = "units";
  for (; *units != 0; ++units) {
    char digits[8];
    std::snprintf(digits, sizeof digits, " %04x", static_cast<unsigned int>(*units));
    text += digits;
  }
  return Value(text);
}

Value exchanged(std::u16string text) {
  for (char16_t& unit : text)
    unit = static_cast<char16_t>(unit << 8 | unit >> 8);
  return units(reinterpret_cast<const unsigned short*>(text.c_str()));
}

std::string openedDatabase(int database) {
  return "open database " + std::to_string(database);
}
std::string closedDatabase() {
  return "close database";
}
std::string began(int mode) {
  return "begin in mode " + std::to_string(mode);
}
std::string committed() {
  return "commit";
}
std::string aborted() {
  return "abort";
}
std::string readTag() {
  return "read tag";
}

std::string executed(const std::string& statement, const std::vector<std::string>& inserted) {
  return statementCall("execute " + statement, inserted);
}
std::string queried(const std::string& statement, const std::vector<std::string>& inserted) {
  return statementCall("query " + statement, inserted);
}
std::string freedRows() {
  return "free rows";
}

std::string byBlock(const std::string& statement) {
  return statement + " by block";
}
std::string openedBlock(int parameters) {
  return "open block for " + std::to_string(parameters);
}
std::string freedBlock() {
  return "free block";
}
std::string bound(int parameter, const Value& value) {
  return "bind parameter " + std::to_string(parameter) + " to " + value.text();
}
Steps bound(int firstParameter, const std::vector<Value>& values) {
  Steps all;
  for (const Value& value : values)
    all.push_back(bound(firstParameter++, value));
  return all;
}
Steps withParameters(const std::vector<Value>& values, const std::string& statement) {
  return steps(openedBlock(static_cast<int>(values.size())), bound(0, values), byBlock(statement),
               freedBlock());
}

std::string reportedBy(const SVC_CT_ChangeRecord& change, int handle) {
  std::string call = "report type " + std::to_string(change.changeType) + " of task " +
                     std::to_string(change.uid) + " by " + change.source.toStdString() +
                     " with handle " + std::to_string(handle);
  for (const int reserved : {change.reserved0, change.reserved[0], change.reserved[1],
                             change.reserved[2], change.reserved[3]})
    call += reserved == 0 ? "" : " and a reserved field that is not 0";
  return call;
}
std::string reported(unsigned int uid, SVC_CT_ChangeType type) {
  constexpr int handle = -1;
  SVC_CT_ChangeRecord change;
  change.source = engine.c_str();
  change.uid = uid;
  change.changeType = type;
  return reportedBy(change, handle);
}
std::string beganBatch(const std::string& source) {
  return "begin batch of " + source;
}
std::string endedBatch(const std::string& source) {
  return "end batch of " + source;
}
std::string deletedReporter() {
  return "delete reporter";
}

std::string openedPort(const std::string& name, int flags) {
  return "open port " + name + " with flags " + std::to_string(flags);
}
std::string closedPort(const std::string& name) {
  return "close port " + name;
}
std::string logged(const std::string& message) {
  return "log " + message;
}

std::string ret(int code) {
  return "[ret=" + std::to_string(code) + "]";
}

}  // namespace calls
