#include "zone_rules.h"

#include "component_lines.h"
#include "recurrence_rule.h"
#include "utc_zone.h"
#include "wall_time.h"

#include <QTimeZone>

#include <algorithm>
#include <mutex>

namespace ulo {
namespace {

constexpr int firstYear = 1969;
constexpr int lastYear = 2038;

// "+0100", "-043015".
std::optional<std::int64_t> parseOffset(std::string_view text) {
  constexpr std::size_t shortLength = 5;
  constexpr std::size_t longLength = 7;
  if ((text.size() != shortLength && text.size() != longLength) ||
      (text[0] != '+' && text[0] != '-') ||
      text.find_first_not_of("0123456789", 1) != std::string_view::npos)
    return std::nullopt;
  const auto number = [&](std::size_t at) { return (text[at] - '0') * 10 + (text[at + 1] - '0'); };
  const std::int64_t seconds =
      number(1) * 3600 + number(3) * 60 + (text.size() == longLength ? number(shortLength) : 0);
  constexpr std::int64_t mostSeconds = secondsPerDay;
  if (seconds >= mostSeconds)
    return std::nullopt;
  return text[0] == '-' ? -seconds : seconds;
}

bool isPlainName(const std::string& id) {
  constexpr std::size_t longestName = 100;
  return id.size() <= longestName && id.find("..") == std::string::npos;
}

// Returns the zone of the system that a name means; invalid if it is not known.
QTimeZone systemZone(const std::string& id) {
  if (!isPlainName(id))
    return {};
  const QByteArray name = QByteArray::fromStdString(id);
  const QByteArray olson = QTimeZone::windowsIdToDefaultIanaId(name);
  if (!olson.isEmpty())
    return QTimeZone(olson);
  // The last three, two and one parts of the name: America/Argentina/Salta, Europe/Berlin, UTC.
  const QList<QByteArray> parts = name.split('/');
  constexpr qsizetype mostParts = 3;
  for (qsizetype count = std::min(mostParts, parts.size()); count > 0; --count) {
    const QByteArray end = parts.last(count).join('/');
    if (!end.isEmpty() && QTimeZone::isTimeZoneIdAvailable(end))
      return QTimeZone(end);
  }
  return {};
}

QDateTime startOfYear(int year) {
  return QDateTime(QDate(year, 1, 1), QTime(0, 0), ulo::utcZone);
}

}  // namespace

std::shared_ptr<const ZoneRules> ZoneRules::ofComponent(std::string_view vtimezone,
                                                        std::size_t& work) {
  const ComponentLines lines(vtimezone);
  auto result = std::make_shared<ZoneRules>();
  std::vector<ComponentLines::Range> observances = lines.nested("STANDARD");
  const std::vector<ComponentLines::Range> daylight = lines.nested("DAYLIGHT");
  observances.insert(observances.end(), daylight.begin(), daylight.end());
  std::optional<std::int64_t> earliest;
  bool isExhausted = false;
  const std::int64_t first = wallOf(QDate(firstYear, 1, 1));
  const std::int64_t last = wallOf(QDate(lastYear + 1, 1, 1));
  for (const ComponentLines::Range& range : observances) {
    const auto find = [&](std::string_view name) {
      const std::size_t line = lines.find(name, range);
      return line == ComponentLines::none ? std::string_view() : lines.value(line);
    };
    const std::optional<WallTime> start = parseWallTime(find("DTSTART"));
    const std::optional<std::int64_t> from = parseOffset(find("TZOFFSETFROM"));
    const std::optional<std::int64_t> to = parseOffset(find("TZOFFSETTO"));
    if (!start || !to)
      continue;
    const std::int64_t before = from.value_or(*to);
    if (!earliest || start->seconds - before < *earliest) {
      earliest = start->seconds - before;
      result->firstOffset_ = before;
    }
    const auto add = [&](std::int64_t wall) {
      isExhausted = work == 0;
      if (isExhausted)
        return false;
      --work;
      if (wall < last)
        result->changes_.push_back({wall - before, *to});
      return wall < last;
    };
    add(start->seconds);
    for (std::size_t i = range.begin; i < range.end; ++i) {
      const std::optional<ContentLine> content = lines.property(i);
      if (!content)
        continue;
      if (sameName(content->name, "RDATE")) {
        for (std::string_view rest = content->value; !rest.empty() && !isExhausted;) {
          const std::size_t comma = std::min(rest.find(','), rest.size());
          const std::optional<WallTime> date = parseWallTime(withoutBlanks(rest.substr(0, comma)));
          if (date)
            add(date->isUtc ? date->seconds + before : date->seconds);
          rest.remove_prefix(std::min(comma + 1, rest.size()));
        }
      } else if (sameName(content->name, "RRULE")) {
        if (!forEachYearly(withoutBlanks(content->value), start->seconds, before, first, last, work,
                           add))
          return nullptr;
      }
    }
    if (isExhausted)
      return nullptr;
  }
  if (!earliest)
    return nullptr;
  std::stable_sort(
      result->changes_.begin(), result->changes_.end(),
      [](const Change& one, const Change& other) { return one.instant < other.instant; });
  return result;
}

std::shared_ptr<const ZoneRules> ZoneRules::ofSystem(const std::string& id) {
  // The number of zones of the system bounds the table; unknown names are not kept.
  static std::mutex mutex;
  static std::map<std::string, std::shared_ptr<const ZoneRules>> known;
  const std::lock_guard<std::mutex> lock(mutex);
  if (const auto found = known.find(id); found != known.end())
    return found->second;
  const QTimeZone zone = systemZone(id);
  if (!zone.isValid())
    return nullptr;
  const std::string name = zone.id().toStdString();
  if (const auto found = known.find(name); found != known.end())
    return found->second;
  auto result = std::make_shared<ZoneRules>();
  result->firstOffset_ = zone.offsetFromUtc(startOfYear(firstYear));
  const QTimeZone::OffsetDataList changes =
      zone.transitions(startOfYear(firstYear), startOfYear(lastYear + 1));
  for (const QTimeZone::OffsetData& change : changes)
    result->changes_.push_back({change.atUtc.toSecsSinceEpoch(), change.offsetFromUtc});
  known.emplace(name, result);
  return result;
}

std::int64_t ZoneRules::offsetAt(std::int64_t instant) const {
  const auto next = std::upper_bound(
      changes_.begin(), changes_.end(), instant,
      [](std::int64_t wanted, const Change& change) { return wanted < change.instant; });
  return next == changes_.begin() ? firstOffset_ : std::prev(next)->offset;
}

std::int64_t ZoneRules::instantOf(std::int64_t wall) const {
  const std::int64_t before = offsetAt(wall - secondsPerDay);
  const std::int64_t after = offsetAt(wall + secondsPerDay);
  const bool isBefore = offsetAt(wall - before) == before;
  const bool isAfter = offsetAt(wall - after) == after;
  return wall - (isAfter && !isBefore ? after : before);
}

std::int64_t ZoneRules::wallAt(std::int64_t instant) const {
  return instant + offsetAt(instant);
}

std::shared_ptr<const ZoneRules> ZoneTable::find(int calendar, const std::string& id) {
  const auto [entry, isNew] = known_.try_emplace({calendar, id});
  if (!isNew)
    return entry->second;
  if (const Piece* piece = text_.zonePiece(calendar, id); piece != nullptr)
    entry->second = ZoneRules::ofComponent(text_.bytes(*piece), work_);
  if (!entry->second && work_ >= systemZoneWork) {
    work_ -= systemZoneWork;
    entry->second = ZoneRules::ofSystem(id);
  }
  return entry->second;
}

}  // namespace ulo
