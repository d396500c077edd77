#pragma once

#include "rooms.h"

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

// The include directives between the files of a source tree.
struct Arrows {
  // Number of directives by the names of the including and the included room.
  std::map<std::pair<std::string, std::string>, int> counts;
  // What the list of rooms does not allow, as "file:line: reason".
  std::vector<std::string> faults;
};

// Reads the headers and sources in the directories `folders` of `root`. `isWidget` tells whether a
// header of Qt, by its name, declares a widget.
Arrows readArrows(const std::filesystem::path& root, const std::vector<std::string>& folders,
                  const std::vector<Room>& rooms,
                  const std::function<bool(const std::string&)>& isWidget);

// Returns a line for each pair of rooms, from the bottom to the top.
std::string tableOf(const Arrows& arrows, const std::vector<Room>& rooms);
