#pragma once

#include <cerrno>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include <dirent.h>

namespace ulo {

// The names of the entries of a directory, unsorted, as far as it can be read. The iterator of the
// standard library ends the program if memory is exhausted; this throws std::bad_alloc.
inline std::vector<std::string> fileNames(const std::string& directory) {
  struct Close {
    void operator()(DIR* stream) const { closedir(stream); }
  };
  std::vector<std::string> names;
  const std::unique_ptr<DIR, Close> stream(opendir(directory.c_str()));
  if (stream == nullptr) {
    if (errno == ENOMEM)
      throw std::bad_alloc();
    return names;
  }
  while (const dirent* entry = readdir(stream.get()))
    if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0)
      names.emplace_back(entry->d_name);
  return names;
}

}  // namespace ulo
