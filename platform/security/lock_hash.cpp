// The library that lock_functions.h describes.

#include "lock_functions.h"
#include "ulo/export.h"

#include <cerrno>
#include <cstring>
#include <tuple>

#include <sodium.h>

namespace {

// Cost of a hash, as libsodium recommends for interactive use. They are fixed: a file with other
// values counts as damaged, so that it cannot make a check use up all memory.
constexpr unsigned long long passes = 2;
constexpr std::size_t memory = 64UL * 1024 * 1024;

static_assert(std::tuple_size_v<ulo::LockHash> == crypto_pwhash_STRBYTES);

bool begin() {
  return sodium_init() >= 0;
}

bool hash(const char* code, std::size_t size, ulo::LockHash& hash) {
  return crypto_pwhash_str(hash.data(), code, size, passes, memory) == 0;
}

bool isHash(const char* text) {
  constexpr char prefix[] = "$argon2id$";
  return std::strncmp(text, prefix, sizeof prefix - 1) == 0 &&
         std::strlen(text) < crypto_pwhash_STRBYTES &&
         crypto_pwhash_str_needs_rehash(text, passes, memory) == 0;
}

bool matches(const char* hash, const char* code, std::size_t size) {
  errno = 0;
  return crypto_pwhash_str_verify(hash, code, size) == 0;
}

}  // namespace

extern "C" ULO_EXPORT const ulo::LockFunctions ulo_lock_functions_1;
const ulo::LockFunctions ulo_lock_functions_1 = {begin, hash, isHash, matches};
