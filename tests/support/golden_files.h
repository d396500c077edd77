// Files that tests compare results with. ULO_RENEW_GOLDEN=1 rewrites them.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

inline std::string contentOf(const std::filesystem::path& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

// Returns the names of the input files in a directory, sorted and without ".in".
inline std::vector<std::string> caseNames(const std::filesystem::path& directory) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(directory))
    if (entry.path().extension() == ".in")
      names.push_back(entry.path().stem());
  std::sort(names.begin(), names.end());
  return names;
}

inline void compareWithFile(const std::string& seen, const std::filesystem::path& expected) {
  if (std::getenv("ULO_RENEW_GOLDEN") != nullptr)
    std::ofstream(expected, std::ios::binary) << seen;
  EXPECT_EQ(seen, contentOf(expected)) << expected;
}
