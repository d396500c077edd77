// Faults of the vObject library: missing functions, functions replaced with stubs, and failing
// allocations. The linker redirects the engine's calls to dlopen, dlsym, dlclose and malloc to this
// program.
#pragma once

#include "temporary_directory.h"

#include <gtest/gtest.h>

#include <QString>

#include <map>
#include <set>
#include <string>
#include <vector>

struct VObject;

// The results that the loader and the allocator return, and the calls that they received.
struct Loader {
  bool libraryMissing = false;
  std::set<std::string> missing;          // functions that the library lacks
  std::map<std::string, void*> replaced;  // functions and their stubs
  int failingMalloc = 0;                  // this malloc fails, counted from 1; 0: none

  std::vector<std::string> opened;    // name and mode of each dlopen
  std::vector<std::string> lookedUp;  // name of each dlsym
  int closed = 0;                     // calls to dlclose
};

class VObjectLibrary : public testing::Test {
protected:
  VObjectLibrary();
  ~VObjectLibrary() override;

  // Returns the name of a new file with these contents.
  std::string fileWith(const std::string& contents);
  [[nodiscard]] QString outName() const;
  // The contents of the file `outName`.
  [[nodiscard]] std::string written() const;

  Loader loader_;
  TemporaryDirectory directory_;
};

// Opens the library, bypassing the redirections.
class RealLibrary {
public:
  RealLibrary();
  RealLibrary(const RealLibrary&) = delete;
  RealLibrary& operator=(const RealLibrary&) = delete;
  ~RealLibrary();

  template <typename Function> Function* function(const char* name) const {
    return reinterpret_cast<Function*>(address(name));
  }
  // Returns true if the library is loaded into the process.
  static bool isLoaded();

private:
  void* address(const char* name) const;
  void* handle_;
};

// While an object exists, memory that is allocated and not released does not count as a leak.
class LeaksExpected {
public:
  LeaksExpected();
  LeaksExpected(const LeaksExpected&) = delete;
  LeaksExpected& operator=(const LeaksExpected&) = delete;
  ~LeaksExpected();
};

// A calendar with the to-dos "first" (in UTF-8, with an alarm), "second" and "third".
extern const std::string threeTodos;

// A log line of the codec, without its line number.
std::string errorLine(const std::string& message);
