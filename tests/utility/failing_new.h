// Makes allocations with new (std::nothrow) fail in the whole program and its libraries, such as
// those of the database for parameter blocks, the store for its reporter, and the codec for
// records.
#pragma once

#include <limits>

constexpr int allAllocationsSucceed = std::numeric_limits<int>::max();
// How many more of them succeed.
extern int allocationsLeft;
