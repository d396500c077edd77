#include "write_ahead_log.h"

#include "files/memory_size.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace ulo::odb {
namespace {

// Offsets and values of SQLite's file format.
constexpr std::size_t logHeaderSize = 32;
constexpr std::size_t frameHeaderSize = 24;
constexpr std::size_t logPageSizeAt = 8;
constexpr std::size_t saltAt = 16;
constexpr std::size_t saltSize = 8;
constexpr std::size_t headerSumAt = 24;
constexpr std::size_t frameSaltAt = 8;
constexpr std::size_t frameSumAt = 16;
constexpr std::uint32_t magic = 0x377f0682;  // last bit set: checksums of big-endian words
constexpr std::uint32_t largestLogPage = 65536;

std::uint32_t word(std::string_view bytes, std::size_t at, bool bigEndian) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    const std::size_t place = bigEndian ? i : 3 - i;
    value = value << 8U | static_cast<unsigned char>(bytes[at + place]);
  }
  return value;
}

// The running checksum of a log.
struct Sum {
  bool bigEndian;
  std::uint32_t first = 0;
  std::uint32_t second = 0;

  void add(std::string_view bytes) {
    for (std::size_t at = 0; at + 8 <= bytes.size(); at += 8) {
      first += word(bytes, at, bigEndian) + second;
      second += word(bytes, at + 4, bigEndian) + first;
    }
  }
  [[nodiscard]] bool isAt(std::string_view bytes, std::size_t at) const {
    return word(bytes, at, true) == first && word(bytes, at + 4, true) == second;
  }
};

}  // namespace

void applyLog(std::string& file, std::string_view log) {
  if (log.size() < logHeaderSize || (word(log, 0, true) & ~1U) != magic)
    return;
  Sum sum{(word(log, 0, true) & 1U) != 0};
  const std::uint32_t pageSize = word(log, logPageSizeAt, true);
  sum.add(log.substr(0, headerSumAt));
  if (!sum.isAt(log, headerSumAt) || pageSize == 0 || pageSize > largestLogPage)
    return;

  std::vector<std::size_t> frames;  // of the current transaction
  for (std::size_t at = logHeaderSize; at + frameHeaderSize + pageSize <= log.size();
       at += frameHeaderSize + pageSize) {
    if (log.substr(at + frameSaltAt, saltSize) != log.substr(saltAt, saltSize))
      return;
    sum.add(log.substr(at, frameSaltAt));
    sum.add(log.substr(at + frameHeaderSize, pageSize));
    if (!sum.isAt(log, at + frameSumAt) || word(log, at, true) == 0)
      return;
    frames.push_back(at);
    const std::uint64_t pages = word(log, at + 4, true);
    if (pages == 0)
      continue;
    for (const std::size_t frame : frames) {
      const std::size_t place = memorySize((word(log, frame, true) - std::uint64_t{1}) * pageSize);
      file.resize(std::max(file.size(), place + pageSize));
      file.replace(place, pageSize, log.substr(frame + frameHeaderSize, pageSize));
    }
    frames.clear();
    file.resize(memorySize(pages * pageSize));
  }
}

}  // namespace ulo::odb
