// Tests for the reporter when allocations fail.

#include "SVC_CT_ChangeReporter.h"
#include "failing_allocation.h"
#include "log_capture.h"
#include "temporary_directory.h"

#include <gtest/gtest.h>

#include <memory>
#include <new>

namespace {

TEST(ShortMemory, DoesNotFailReport) {
  const DataDirectory directory;
  SVC_CT_ChangeRecord record;
  record.changeType = SVC_CT_ADDED;
  bool failed = true;
  int allocations = 0;
  for (; failed; ++allocations) {
    int result = 1;
    failed = withoutMemory(allocations, false, [&] {
      const std::unique_ptr<SVC_CT_ChangeReporter> reporter(new (std::nothrow)
                                                                SVC_CT_ChangeReporter);
      // The database has already written the entry.
      result = reporter ? reporter->report(record, -1) : 0;
    });
    EXPECT_EQ(result, 0) << allocations;
  }
  EXPECT_GT(allocations, 2);
}

}  // namespace
