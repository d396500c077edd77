#include "files/memory_size.h"

#include <gtest/gtest.h>

namespace {

using ulo::odb::memorySize;

TEST(MemorySize, RefusesWhatCannotBeAddressed) {
  constexpr std::uint64_t most = std::numeric_limits<std::ptrdiff_t>::max();
  EXPECT_EQ(memorySize(0), 0U);
  EXPECT_EQ(memorySize(most), most);
  EXPECT_THROW(memorySize(most + 1), std::bad_alloc);
  EXPECT_THROW(memorySize(std::uint64_t{1} << 63U), std::bad_alloc);
}

}  // namespace
