#include "recurrence_rule.h"

#include "content_line.h"
#include "rule_functions.h"
#include "wall_time.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <set>

namespace ulo {
namespace {

constexpr std::array<std::string_view, 7> frequencies = {"SECONDLY", "MINUTELY", "HOURLY", "DAILY",
                                                         "WEEKLY",   "MONTHLY",  "YEARLY"};
constexpr std::array<std::string_view, 7> weekdays = {"MO", "TU", "WE", "TH", "FR", "SA", "SU"};

// The parts with lists of numbers. `isSigned` ones may count from the end but not be 0.
struct ListPart {
  std::string_view name;
  int lowest;
  int highest;
  bool isSigned;
};
constexpr std::array<ListPart, 8> listParts = {{
    {"BYSECOND", 0, 59, false},
    {"BYMINUTE", 0, 59, false},
    {"BYHOUR", 0, 23, false},
    {"BYMONTHDAY", 1, 31, true},
    {"BYYEARDAY", 1, 366, true},
    {"BYWEEKNO", 1, 53, true},
    {"BYMONTH", 1, 12, false},
    {"BYSETPOS", 1, 366, true},
}};

std::string inCapitals(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(),
                 [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
  return result;
}

// Calls `check` with each value of a list; returns false if one is not accepted or the list is
// longer than libical's tables.
template <typename Check> bool checkList(std::string_view list, std::size_t most, Check check) {
  std::size_t count = 0;
  for (;;) {
    const std::size_t comma = list.find(',');
    if (++count > most || !check(list.substr(0, comma)))
      return false;
    if (comma == std::string_view::npos)
      return true;
    list.remove_prefix(comma + 1);
  }
}

struct Weekday {
  int ordinal = 0;  // 0 for each
  int day = 0;      // 1 is Monday
};
std::optional<Weekday> weekdayOf(std::string_view text) {
  constexpr std::size_t nameLength = 2;
  if (text.size() < nameLength)
    return std::nullopt;
  const auto day =
      std::find(weekdays.begin(), weekdays.end(), text.substr(text.size() - nameLength));
  if (day == weekdays.end())
    return std::nullopt;
  Weekday result;
  result.day = static_cast<int>(day - weekdays.begin()) + 1;
  text.remove_suffix(nameLength);
  if (text.empty())
    return result;
  constexpr int mostWeeks = 53;
  const std::optional<int> ordinal = parseInteger(text);
  if (!ordinal || *ordinal == 0 || *ordinal < -mostWeeks || *ordinal > mostWeeks)
    return std::nullopt;
  result.ordinal = *ordinal;
  return result;
}

bool isListPart(const std::string& name, std::string_view value) {
  const auto* const part = std::find_if(listParts.begin(), listParts.end(),
                                        [&](const ListPart& one) { return one.name == name; });
  if (part == listParts.end())
    return false;
  const auto most =
      static_cast<std::size_t>(part->highest) + 1 - static_cast<std::size_t>(part->lowest);
  return checkList(value, most, [&](std::string_view text) {
    const std::optional<int> number = parseInteger(text);
    if (!number || *number < -part->highest || *number > part->highest)
      return false;
    return (part->isSigned ? std::abs(*number) : *number) >= part->lowest;
  });
}

}  // namespace

std::optional<RecurrenceRule> parseRule(std::string_view text) {
  constexpr std::size_t mostWeekdays = 371;
  constexpr int longestInterval = 32767;
  RecurrenceRule rule;
  std::set<std::string> names;
  std::string parts;
  const std::string whole = inCapitals(text);
  std::string_view rest = whole;
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find(';'), rest.size());
    const std::string_view part = withoutBlanks(rest.substr(0, end));
    rest.remove_prefix(std::min(end + 1, rest.size()));
    if (part.empty())
      continue;
    const std::size_t equal = part.find('=');
    if (equal == std::string_view::npos)
      return std::nullopt;
    const std::string name(part.substr(0, equal));
    const std::string_view value = part.substr(equal + 1);
    if (!names.insert(name).second)
      return std::nullopt;
    const std::optional<int> number = parseInteger(value);
    if (name == "FREQ") {
      const auto found = std::find(frequencies.begin(), frequencies.end(), value);
      if (found == frequencies.end())
        return std::nullopt;
      rule.frequency = static_cast<Frequency>(found - frequencies.begin());
    } else if (name == "INTERVAL") {
      if (!number || *number < 1 || *number > longestInterval)
        return std::nullopt;
      rule.interval = *number;
    } else if (name == "COUNT") {
      if (!number || *number < 1)
        return std::nullopt;
      rule.count = *number;
    } else if (name == "UNTIL") {
      if (!parseWallTime(value))
        return std::nullopt;
      rule.until = value;
    } else if (name == "WKST") {
      if (!weekdayOf(value) || weekdayOf(value)->ordinal != 0)
        return std::nullopt;
      parts.append(";WKST=").append(value);
    } else if (name == "BYDAY") {
      if (!checkList(value, mostWeekdays, [&](std::string_view day) {
            const std::optional<Weekday> weekday = weekdayOf(day);
            if (weekday) {
              rule.ordinal = weekday->ordinal;
              rule.weekday = weekday->day;
            }
            return weekday.has_value();
          }))
        return std::nullopt;
      parts.append(";BYDAY=").append(value);
    } else if (isListPart(name, value)) {
      if (name == "BYMONTH")
        rule.month = number.value_or(0);
      parts.append(";").append(name).append("=").append(value);
    } else {
      return std::nullopt;
    }
  }
  if (names.count("FREQ") == 0)
    return std::nullopt;
  // libical passes over dates if BYHOUR and finer parts limit a rule instead of expanding it, and
  // ignores BYSETPOS in rules of weeks and shorter.
  const bool isTimed =
      names.count("BYHOUR") + names.count("BYMINUTE") + names.count("BYSECOND") != 0;
  if ((rule.frequency < Frequency::daily && isTimed) ||
      (rule.frequency < Frequency::monthly && names.count("BYSETPOS") != 0))
    return std::nullopt;
  // Whether it is the nth weekday of a month.
  names.erase("FREQ");
  names.erase("INTERVAL");
  names.erase("UNTIL");
  names.erase("WKST");
  constexpr int mostOrdinal = 5;
  const bool isPlain = rule.frequency == Frequency::yearly && rule.interval == 1 &&
                       names == std::set<std::string>{"BYDAY", "BYMONTH"} && rule.month != 0 &&
                       rule.ordinal != 0 && std::abs(rule.ordinal) <= mostOrdinal &&
                       parts.find(',') == std::string::npos;
  if (!isPlain)
    rule.month = 0;
  rule.text = "FREQ=" + std::string(frequencies[static_cast<std::size_t>(rule.frequency)]) +
              ";INTERVAL=" + std::to_string(rule.interval) + parts;
  return rule;
}

RuleDates::RuleDates(const RecurrenceRule& rule, std::int64_t start) {
  // Seconds between two steps of libical's search, of which it can do about 100,000 in a second.
  constexpr std::array<std::int64_t, 4> seconds = {1, 60, 3600, secondsPerDay};
  constexpr std::int64_t lastYear = 9999;
  const auto timeOf = [](std::int64_t wall) {
    const QDate day = dayOf(wall);
    const auto second = static_cast<int>(wall - wallOf(day));
    return RuleTime{day.year(),    day.month(),      day.day(),
                    second / 3600, second / 60 % 60, second % 60};
  };
  if (dayOf(start).year() > lastYear)
    return;
  const RuleFunctions* const functions = ruleFunctions();
  if (functions == nullptr)
    return;
  const auto frequency = static_cast<std::size_t>(rule.frequency);
  std::optional<RuleTime> until;
  if (frequency < seconds.size())
    until = timeOf(start + std::int64_t{ruleStepLimit} * rule.interval * seconds[frequency]);
  dates_ = functions->begin(rule.text.c_str(), timeOf(start), until ? &*until : nullptr);
}

RuleDates::~RuleDates() {
  if (isValid())
    ruleFunctions()->end(dates_);
}

std::optional<std::int64_t> RuleDates::next() {
  RuleTime time{};
  if (!isValid() || !ruleFunctions()->next(dates_, time))
    return std::nullopt;
  return wallOf(QDate(time.year, time.month, time.day),
                (time.hour * 60 + time.minute) * 60 + time.second);
}

namespace {

// Returns the nth weekday of a month; an invalid date if it has none.
QDate weekdayOfMonth(int year, int month, int ordinal, int weekday) {
  constexpr int daysPerWeek = 7;
  if (ordinal > 0) {
    const QDate first(year, month, 1);
    const int shift = (weekday - first.dayOfWeek() + daysPerWeek) % daysPerWeek;
    const QDate day = first.addDays(shift + (ordinal - 1) * daysPerWeek);
    return day.month() == month ? day : QDate();
  }
  const QDate last = QDate(year, month, 1).addMonths(1).addDays(-1);
  const int shift = (last.dayOfWeek() - weekday + daysPerWeek) % daysPerWeek;
  const QDate day = last.addDays(-shift + (ordinal + 1) * daysPerWeek);
  return day.month() == month ? day : QDate();
}

}  // namespace

bool forEachYearly(std::string_view text, std::int64_t start, std::int64_t offset,
                   std::int64_t first, std::int64_t last, std::size_t& work,
                   const std::function<bool(std::int64_t)>& add) {
  const std::optional<RecurrenceRule> rule = parseRule(text);
  if (!rule || rule->frequency != Frequency::yearly)
    return false;
  std::int64_t end = last;
  if (const std::optional<WallTime> until = parseWallTime(rule->until))
    end = std::min(last, until->seconds + (until->isUtc ? offset : 0) +
                             (until->isDate ? secondsPerDay - 1 : 0));
  if (rule->month != 0 && rule->count == 0) {
    const std::int64_t second = start - wallOf(dayOf(start));
    const int lastYear = dayOf(end).year();
    for (int year = std::max(dayOf(start).year(), dayOf(first).year()); year <= lastYear; ++year) {
      const QDate day = weekdayOfMonth(year, rule->month, rule->ordinal, rule->weekday);
      const std::int64_t wall = wallOf(day, second);
      if (day.isValid() && wall > start && (wall > end || !add(wall)))
        break;
    }
    return true;
  }
  if (work < yearlyRuleWork)
    return false;
  work -= yearlyRuleWork;
  RuleDates dates(*rule, start);
  if (!dates.isValid())
    return false;
  int count = 0;
  while (const std::optional<std::int64_t> date = dates.next()) {
    if (rule->count != 0 && ++count > rule->count)
      break;
    if (*date > end || (*date != start && !add(*date)))
      break;
  }
  return true;
}

}  // namespace ulo
