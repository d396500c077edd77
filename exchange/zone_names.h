// The names of the time zones in a calendar whose to-dos come from several calendars.
#pragma once

#include <QByteArray>

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace ulo {

// The name of a time zone and its VTIMEZONE component.
using NamedZone = std::pair<std::string, QByteArray>;
// The new names of zones by their old names. Contains only names that change.
using RenamedZones = std::map<std::string, std::string>;

// Gives each zone a name that no different zone of the calendar has. Zones that differ only in
// folding and line ends are the same. The memory grows with the number of different zones.
class ZoneNames {
public:
  struct Zones {
    std::vector<NamedZone> added;  // those that the calendar lacks, under their new names
    RenamedZones renamed;
  };
  // Adds a zone of the calendar itself. Of those with one name, the first one counts.
  void add(const NamedZone& zone);
  // Takes the zones of a to-do. A zone keeps its name if that is free or belongs to the same zone.
  // Otherwise it has the name of a zone with the same content, or a new one.
  Zones take(const std::vector<NamedZone>& zones);

private:
  // Returns the name that a zone has in the calendar, and whether the calendar lacks the zone. One
  // without a name, which no line can mean after renaming, is the first such zone.
  std::pair<std::string, bool> nameOf(const NamedZone& zone);
  // Returns false if the name is taken.
  bool addContent(const std::string& name, const QByteArray& content);
  std::string freeName(const std::string& name);

  std::map<std::string, QByteArray> contents_;  // by the names of the zones
  std::map<QByteArray, std::string> names_;     // by the contents, that of the first zone
  std::map<std::string, int> numbers_;          // the last ones of names that were made
};

// Returns an unfolded line with the new name if it has a TZID parameter that was renamed.
std::string lineWithZoneNames(const std::string& line, const RenamedZones& renamed);
// Returns components with the new names in their lines. Other lines keep their bytes.
std::vector<QByteArray> withZoneNames(const std::vector<QByteArray>& components,
                                      const RenamedZones& renamed);

}  // namespace ulo
