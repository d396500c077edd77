// What the fuzzers share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

// Ends the process when something does not hold that must hold for every input: the fuzzer keeps
// the input, and the replay of the tests fails.
#define FUZZ_REQUIRE(condition)                                                                    \
  ((condition) ? static_cast<void>(0) : fuzz::violated(#condition, __FILE__, __LINE__))

// One input. Called any number of times in a process; what one input leaves behind does not reach
// the next one.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {

[[noreturn]] inline void violated(const char* condition, const char* file, int line) {
  std::fprintf(stderr, "%s:%d: does not hold: %s\n", file, line, condition);
  std::abort();
}

// The surroundings of the fuzzers, to be made before anything else: nothing is logged, there is no
// bus, and files are kept in memory unless TMPDIR says otherwise.
void prepare();

inline std::string textOf(const std::uint8_t* data, std::size_t size) {
  return std::string(reinterpret_cast<const char*>(data), size);
}

// True for about one in `share` inputs, always for the same ones.
inline bool isOneIn(unsigned share, std::string_view input) {
  std::uint32_t sum = 2166136261U;
  for (const char c : input)
    sum = (sum ^ static_cast<unsigned char>(c)) * 16777619U;
  return sum % share == 0;
}

}  // namespace fuzz
