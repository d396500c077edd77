// Recurrence rules (RFC 5545, section 3.3.10), computed by libical.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace ulo {

enum class Frequency { secondly, minutely, hourly, daily, weekly, monthly, yearly };

// Seconds, minutes, hours or days, multiplied by the interval of the rule, in which its next date
// is searched: 27 years for a daily rule. Bounds the time for a rule that has no date, such as on
// every February 30.
constexpr int ruleStepLimit = 10'000;
// What a rule that libical computes adds to `work` (forEachYearly).
constexpr std::size_t yearlyRuleWork = 2'000;

// A rule whose form is valid.
struct RecurrenceRule {
  std::string text;  // without UNTIL and COUNT, in the form that libical reads
  Frequency frequency = Frequency::daily;
  int interval = 1;
  int count = 0;  // 0 for none
  std::string until;
  // For a yearly rule of a time zone, such as the last Sunday of a month: 1 to 12, -5 to 5 and not
  // 0, and 1 (Monday) to 7. `month` is 0 for any other rule.
  int month = 0;
  int ordinal = 0;
  int weekday = 0;
};
// Returns nothing for a rule that is malformed, has parts that RFC 5545 does not define, or is one
// that libical computes incorrectly: BYSETPOS in rules of weeks and shorter, and BYHOUR, BYMINUTE
// or BYSECOND in rules of hours and shorter.
std::optional<RecurrenceRule> parseRule(std::string_view text);

// The dates of a rule from `start` on, as wall times, without regard to COUNT and UNTIL. Ends after
// ruleStepLimit, and in the year 2182.
class RuleDates {
public:
  RuleDates(const RecurrenceRule& rule, std::int64_t start);
  RuleDates(const RuleDates&) = delete;
  RuleDates& operator=(const RuleDates&) = delete;
  ~RuleDates();

  // Returns false if libical cannot compute the rule.
  [[nodiscard]] bool isValid() const { return dates_ != nullptr; }
  std::optional<std::int64_t> next();

private:
  void* dates_ = nullptr;  // of the library
};

// Calls `add` with the wall times of a yearly rule of a time zone from the later of `start` and
// `first` to `last`, without `start`, until it returns false. `offset` is that of UNTIL. Returns
// false if the rule is not a yearly one or cannot be computed.
bool forEachYearly(std::string_view rule, std::int64_t start, std::int64_t offset,
                   std::int64_t first, std::int64_t last, std::size_t& work,
                   const std::function<bool(std::int64_t)>& add);

}  // namespace ulo
