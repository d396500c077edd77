// Tests for the reporter when allocations fail.

#include "SVC_CT_ChangeReporter.h"
#include "log_capture.h"
#include "temporary_directory.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <new>

namespace {

// The number of allocations of this thread that succeed before one fails. If negative, none fails.
thread_local int allocationsLeft = -1;

}  // namespace

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return allocationsLeft >= 0 && allocationsLeft-- == 0 ? nullptr : std::malloc(size);
}
void* operator new(std::size_t size) {
  if (void* memory = operator new(size, std::nothrow))
    return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

namespace {

TEST(ShortMemory, DoesNotFailReport) {
  const DataDirectory directory;
  SVC_CT_ChangeRecord record;
  record.changeType = SVC_CT_ADDED;
  bool failed = true;
  int allocations = 0;
  for (; failed; ++allocations) {
    allocationsLeft = allocations;
    int result = 1;
    {
      const std::unique_ptr<SVC_CT_ChangeReporter> reporter(new (std::nothrow)
                                                                SVC_CT_ChangeReporter);
      // The database has already written the entry.
      result = reporter ? reporter->report(record, -1) : 0;
      failed = allocationsLeft < 0;
      allocationsLeft = -1;
    }
    EXPECT_EQ(result, 0) << allocations;
  }
  EXPECT_GT(allocations, 2);
}

}  // namespace
