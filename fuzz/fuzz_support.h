// Shared by the fuzzers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

// Aborts the process if a condition that must hold for every input does not hold. The fuzzer then
// keeps the input, and a replay in the tests fails.
#define FUZZ_REQUIRE(condition)                                                                    \
  ((condition) ? static_cast<void>(0) : fuzz::violated(#condition, __FILE__, __LINE__))

// Runs one input. Called any number of times in a process; an input does not affect the following
// ones.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {

[[noreturn]] inline void violated(const char* condition, const char* file, int line) {
  std::fprintf(stderr, "%s:%d: does not hold: %s\n", file, line, condition);
  std::abort();
}

// Prepares the environment; must be called first. Disables logging and the bus, and keeps files in
// memory unless TMPDIR is set.
void prepare();

inline std::string textOf(const std::uint8_t* data, std::size_t size) {
  return std::string(reinterpret_cast<const char*>(data), size);
}

// Returns true for approximately one in `share` inputs, always the same ones.
inline bool isOneIn(unsigned share, std::string_view input) {
  std::uint32_t sum = 2166136261U;
  for (const char c : input)
    sum = (sum ^ static_cast<unsigned char>(c)) * 16777619U;
  return sum % share == 0;
}

}  // namespace fuzz
