// Counts the bytes that this process has allocated on the heap. Programs link heap_meter.cpp, which
// wraps the C library's allocation functions.
#pragma once

#include <cstddef>

namespace bench {

// Returns the number of bytes in use, as rounded by the allocator.
std::size_t heapInUse();
// Returns the maximum in use since the last restart of the peak.
std::size_t heapPeak();
void restartHeapPeak();

}  // namespace bench
