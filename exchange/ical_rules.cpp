// The library for recurrence rules: libical's iterator.

#include "rule_functions.h"
#include "ulo/export.h"

#include <libical/ical.h>

namespace {

// libical reports a rule that it cannot compute as an error, on which it aborts the process if the
// program wants that. The setting belongs to the program.
bool areErrorsFatal() {
  const icalerrorstate state = icalerror_get_error_state(ICAL_MALFORMEDDATA_ERROR);
  return state == ICAL_ERROR_FATAL ||
         (state == ICAL_ERROR_DEFAULT && icalerror_get_errors_are_fatal() != 0);
}

icaltimetype timeOf(const ulo::RuleTime& time) {
  icaltimetype result = icaltime_null_time();
  result.year = time.year;
  result.month = time.month;
  result.day = time.day;
  result.hour = time.hour;
  result.minute = time.minute;
  result.second = time.second;
  return result;
}

// libical keeps its last error for each thread and has no other state that is used here.

// The Gregorian calendar repeats after 400 years. libical computes dates until the year 2582, one
// after the other even if a rule has none; starting one cycle later makes that take less. A libical
// with 32-bit times knows no dates after 2037 and so starts in the years of the rule.
int cycleYears() {
  static const int years = [] {
    constexpr int cycle = 400;
    const icalrecurrencetype daily = icalrecurrencetype_from_string("FREQ=DAILY");
    icalrecur_iterator* dates =
        icalrecur_iterator_new(daily, timeOf({2000 + cycle, 1, 1, 0, 0, 0}));
    const bool isKnown =
        dates != nullptr && icaltime_is_null_time(icalrecur_iterator_next(dates)) == 0;
    if (dates != nullptr)
      icalrecur_iterator_free(dates);
    return isKnown ? cycle : 0;
  }();
  return years;
}

icaltimetype cycleTimeOf(const ulo::RuleTime& time) {
  icaltimetype result = timeOf(time);
  result.year += cycleYears();
  return result;
}

void* begin(const char* rule, const ulo::RuleTime& start, const ulo::RuleTime* until) {
  if (areErrorsFatal())
    return nullptr;
  icalrecurrencetype form = icalrecurrencetype_from_string(rule);
  if (form.freq == ICAL_NO_RECURRENCE)
    return nullptr;
  if (until != nullptr)
    form.until = cycleTimeOf(*until);
  return icalrecur_iterator_new(form, cycleTimeOf(start));
}

bool next(void* dates, ulo::RuleTime& date) {
  const icaltimetype time = icalrecur_iterator_next(static_cast<icalrecur_iterator*>(dates));
  if (icaltime_is_null_time(time) != 0)
    return false;
  date = {time.year - cycleYears(), time.month, time.day, time.hour, time.minute, time.second};
  return true;
}

void end(void* dates) {
  icalrecur_iterator_free(static_cast<icalrecur_iterator*>(dates));
}

}  // namespace

extern "C" ULO_EXPORT const ulo::RuleFunctions ulo_rule_functions_1;
const ulo::RuleFunctions ulo_rule_functions_1 = {begin, next, end};
