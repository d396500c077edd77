// Time zones: those that a calendar text defines, and those of the system.
#pragma once

#include "calendar_text.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ulo {

// The offsets of a zone from 1969 to 2038. Does not change after it was made, so threads may share
// it.
class ZoneRules {
public:
  // `work` is reduced by what the computation needs (zoneWorkLimit). Returns null if the component
  // has no offset that can be read, or if no work is left.
  static std::shared_ptr<const ZoneRules> ofComponent(std::string_view vtimezone,
                                                      std::size_t& work);
  // Knows the names of the Olson database, these with a prefix such as
  // "/freeassociation.sourceforge.net/Europe/Berlin", and the names of Windows. Returns null for
  // other names. Any thread may call it.
  static std::shared_ptr<const ZoneRules> ofSystem(const std::string& id);

  // Like local time: a time that is skipped is read with the offset before the change, and one that
  // occurs twice as its first occurrence.
  [[nodiscard]] std::int64_t instantOf(std::int64_t wall) const;
  [[nodiscard]] std::int64_t wallAt(std::int64_t instant) const;

private:
  struct Change {
    std::int64_t instant = 0;
    std::int64_t offset = 0;  // from this instant on
  };
  [[nodiscard]] std::int64_t offsetAt(std::int64_t instant) const;

  std::int64_t firstOffset_ = 0;
  std::vector<Change> changes_;
};

// Work for all zones of a text: one for each change of an offset, yearlyRuleWork for a rule that is
// not of the usual form, and systemZoneWork for a name that the text does not define. Texts with
// all zones of the world need less. Zones after the limit are not known.
constexpr std::size_t zoneWorkLimit = 500'000;
constexpr std::size_t systemZoneWork = 500;

// The zones of a text by their names.
class ZoneTable {
public:
  explicit ZoneTable(const CalendarText& text) : text_(text) {}

  // Returns the zone that the calendar defines, otherwise the system's, otherwise null.
  std::shared_ptr<const ZoneRules> find(int calendar, const std::string& id);
  // To be called after a zone was added to the text.
  void forget() { known_.clear(); }

private:
  const CalendarText& text_;
  std::map<std::pair<int, std::string>, std::shared_ptr<const ZoneRules>> known_;
  std::size_t work_ = zoneWorkLimit;
};

}  // namespace ulo
