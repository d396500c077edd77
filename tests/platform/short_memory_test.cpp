// The reporter while allocations fail.

#include "SVC_CT_ChangeReporter.h"
#include "change_journal.h"
#include "log_capture.h"
#include "temporary_directory.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <new>

namespace {

// How many allocations of this thread succeed before one fails; none fails while negative.
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

TEST(ShortMemory, MakesAReportFailButThrowsNothing) {
  const DataDirectory directory;
  LogCapture log;
  SVC_CT_ChangeRecord record;
  record.source = "a source whose name is too long for a string without memory of its own";
  record.changeType = SVC_CT_ADDED;
  std::int64_t written = 0;
  bool failed = true;
  for (int allocations = 0; failed; ++allocations) {
    allocationsLeft = allocations;
    int result = 1;
    {
      const std::unique_ptr<SVC_CT_ChangeReporter> reporter(new (std::nothrow)
                                                                SVC_CT_ChangeReporter);
      if (reporter)
        result = reporter->report(record, -1);
      failed = allocationsLeft < 0;
      allocationsLeft = -1;
    }
    EXPECT_EQ(result, failed ? 1 : 0) << allocations;
    std::int64_t last = 0;
    EXPECT_TRUE(ulo::ChangeJournal().lastEntry(last));
    written += result == 0 ? 1 : 0;
    EXPECT_EQ(last, written) << allocations;
  }
  EXPECT_EQ(written, 1);
}

}  // namespace
