// Tests for the names of the files in a directory. The linker redirects the call that opens one.

#include "file_names.h"

#include "temporary_directory.h"
#include "ulo/export.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace {

bool isMemoryExhausted = false;

}  // namespace

extern "C" {
DIR* __real_opendir(const char* name);
ULO_EXPORT DIR* __wrap_opendir(const char* name);
DIR* __wrap_opendir(const char* name) {
  if (!isMemoryExhausted)
    return __real_opendir(name);
  errno = ENOMEM;
  return nullptr;
}
}

namespace {

class FileNames : public testing::Test {
protected:
  TemporaryDirectory directory_;
};

TEST_F(FileNames, ListFilesAndDirectories) {
  EXPECT_THAT(ulo::fileNames(directory_.path()), IsEmpty());
  std::ofstream(directory_.path() / ".a");
  std::filesystem::create_directory(directory_.path() / "b");
  EXPECT_THAT(ulo::fileNames(directory_.path()), UnorderedElementsAre(".a", "b"));
}

TEST_F(FileNames, MissingDirectoryHasNone) {
  EXPECT_THAT(ulo::fileNames(directory_.path() / "a"), IsEmpty());
}

// The directory may have files, so their absence must not be assumed.
TEST_F(FileNames, ThrowIfMemoryIsExhausted) {
  isMemoryExhausted = true;
  EXPECT_THROW(ulo::fileNames(directory_.path()), std::bad_alloc);
  isMemoryExhausted = false;
}

}  // namespace
