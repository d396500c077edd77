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

void* begin(const char* rule, const ulo::RuleTime& start, const ulo::RuleTime* until) {
  if (areErrorsFatal())
    return nullptr;
  icalrecurrencetype form = icalrecurrencetype_from_string(rule);
  if (form.freq == ICAL_NO_RECURRENCE)
    return nullptr;
  if (until != nullptr)
    form.until = timeOf(*until);
  return icalrecur_iterator_new(form, timeOf(start));
}

bool next(void* dates, ulo::RuleTime& date) {
  const icaltimetype time = icalrecur_iterator_next(static_cast<icalrecur_iterator*>(dates));
  if (icaltime_is_null_time(time) != 0)
    return false;
  date = {time.year, time.month, time.day, time.hour, time.minute, time.second};
  return true;
}

void end(void* dates) {
  icalrecur_iterator_free(static_cast<icalrecur_iterator*>(dates));
}

}  // namespace

extern "C" ULO_EXPORT const ulo::RuleFunctions ulo_rule_functions_1;
const ulo::RuleFunctions ulo_rule_functions_1 = {begin, next, end};
