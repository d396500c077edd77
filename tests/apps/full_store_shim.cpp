// Preloaded into a process: limits the database of the store to $ULO_TEST_MAX_PAGES pages, so that
// it fills up as on a small device.

#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <sqlite3.h>
#include <string>

extern "C" __attribute__((visibility("default"))) int
sqlite3_open_v2(const char* name, sqlite3** database, int flags, const char* vfs) {
  using Open = int (*)(const char*, sqlite3**, int, const char*);
  static const Open next = reinterpret_cast<Open>(dlsym(RTLD_NEXT, "sqlite3_open_v2"));
  const int result = next(name, database, flags, vfs);
  const char* pages = std::getenv("ULO_TEST_MAX_PAGES");
  const char* file = std::getenv("ULO_TEST_FULL_FILE");
  if (result == SQLITE_OK && pages != nullptr && file != nullptr && name != nullptr &&
      std::strstr(name, file) != nullptr) {
    const std::string pragma = std::string("PRAGMA max_page_count=") + pages;
    if (sqlite3_exec(*database, pragma.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
      std::abort();
  }
  return result;
}
