// The files in which users and systems keep settings (XDG base directories).
#pragma once

#include "ulo/data_directory.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace ulo {

// Returns the paths at which the settings file `name` may exist, the most important one first: the
// user's, in userDirectory("XDG_CONFIG_HOME", ".config"), then one in "ulo" in each directory of
// $XDG_CONFIG_DIRS, or in /etc/xdg if that is unset or empty. Relative directories are ignored. The
// user's is missing if HOME is needed but not set.
inline std::vector<std::string> configFiles(const std::string& name) {
  std::vector<std::string> paths;
  if (const std::string own = userDirectory("XDG_CONFIG_HOME", ".config"); !own.empty())
    paths.push_back(own + '/' + name);
  const char* setting = std::getenv("XDG_CONFIG_DIRS");
  std::string_view rest = setting != nullptr && *setting != '\0' ? setting : "/etc/xdg";
  while (!rest.empty()) {
    const std::string_view directory = rest.substr(0, rest.find(':'));
    rest.remove_prefix(std::min(directory.size() + 1, rest.size()));
    if (directory.starts_with('/'))
      paths.push_back(std::string(directory) + "/ulo/" + name);
  }
  return paths;
}

}  // namespace ulo
