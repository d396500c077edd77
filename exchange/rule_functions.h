// The library for recurrence rules, which is opened when a rule is first computed: loading libical
// takes longer than many programs that never need it run.
#pragma once

namespace ulo {

// A date and a time of day, without a zone.
struct RuleTime {
  int year;
  int month;
  int day;
  int hour;
  int minute;
  int second;
};

// What the library exports, under the name `ruleFunctionsName`.
struct RuleFunctions {
  // Begins with the dates of a rule, which has neither UNTIL nor COUNT. They end with `until`
  // unless that is null. Returns null if libical cannot compute the rule.
  void* (*begin)(const char* rule, const RuleTime& start, const RuleTime* until);
  // Sets `date` to the next date; returns false if there is none.
  bool (*next)(void* dates, RuleTime& date);
  void (*end)(void* dates);
};

inline constexpr char ruleLibraryName[] = "libuloical.so";
// Changes with every change of RuleFunctions, so that a library of another version is rejected.
inline constexpr char ruleFunctionsName[] = "ulo_rule_functions_1";

// Opens the library at the first call. Returns null if that failed; the reason is logged once.
const RuleFunctions* ruleFunctions();

}  // namespace ulo
