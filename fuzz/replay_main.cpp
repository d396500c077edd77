// Runs a fuzzer on files, for builds without libFuzzer. The arguments are files, or directories
// whose files are all used.
#include "fuzz_support.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

namespace fs = std::filesystem;

namespace {

std::vector<fs::path> filesOf(const fs::path& argument) {
  if (!fs::is_directory(argument))
    return {argument};
  std::vector<fs::path> files;
  for (const auto& entry : fs::recursive_directory_iterator(argument))
    if (entry.is_regular_file())
      files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

bool replay(const fs::path& path) {
  // If the function does not return, the last line names the input.
  std::cout << path.string() << std::endl;
  std::ifstream file(path, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(file), {}};
  if (!file.is_open() || file.bad())
    return false;
  // In a separate allocation, so that a sanitizer detects each access beyond the last byte.
  const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
  LLVMFuzzerTestOneInput(input.data(), input.size());
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  std::size_t count = 0;
  for (int i = 1; i < argc; ++i)
    for (const fs::path& path : filesOf(argv[i])) {
      if (!replay(path)) {
        std::cerr << path.string() << " can't be read\n";
        return 1;
      }
      ++count;
    }
  std::cout << count << " inputs\n";
  return count > 0 ? 0 : 1;
}
