// The library that hashes codes, which is opened when a lock is first read or set: most programs
// find no lock, and loading libsodium takes longer than to find that out.
#pragma once

#include <array>
#include <cstddef>

namespace ulo {

// The text of a hash, with its final null character.
using LockHash = std::array<char, 128>;

// What the library exports, under the name `lockFunctionsName`.
struct LockFunctions {
  // Must be called first, in any thread. Returns false if the library cannot be used.
  bool (*begin)();
  // Hashes a code (argon2id). Returns false if memory is exhausted.
  bool (*hash)(const char* code, std::size_t size, LockHash& hash);
  // Returns true for a text that `hash` may have written.
  bool (*isHash)(const char* text);
  // Returns true if `hash` is that of the code. Otherwise errno is EINVAL if it is not, or the
  // reason why they could not be compared.
  bool (*matches)(const char* hash, const char* code, std::size_t size);
};

inline constexpr char lockLibraryName[] = "libulolock.so";
// Changes with every change of LockFunctions, so that a library of another version is rejected.
inline constexpr char lockFunctionsName[] = "ulo_lock_functions_1";

// Opens the library at the first call. Returns null if that failed; the reason is logged once.
const LockFunctions* lockFunctions();

}  // namespace ulo
