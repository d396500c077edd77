// Lets allocations fail that ask with new (std::nothrow), in the whole program with its
// libraries: the database's for parameter blocks, the store's for its reporter.
#pragma once

#include <limits>

constexpr int allAllocationsSucceed = std::numeric_limits<int>::max();
// How many of them still succeed.
extern int allocationsLeft;
