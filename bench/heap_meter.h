// Counts the bytes that this process has taken from the heap. Programs link heap_meter.cpp, which
// stands in front of the C library's allocation.
#pragma once

#include <cstddef>

namespace bench {

// Bytes in use, as the allocator rounds them.
std::size_t heapInUse();
// The most that was in use since the last restart of the peak.
std::size_t heapPeak();
void restartHeapPeak();

}  // namespace bench
