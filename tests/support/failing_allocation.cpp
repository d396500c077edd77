#include "failing_allocation.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

constexpr int allSucceed = -1;

// How many allocations of this thread succeed before one fails; none fails while negative.
thread_local int allocationsLeft = allSucceed;
// Whether all further ones fail as well.
thread_local bool memoryIsUsedUp = false;
thread_local int failures = 0;

}  // namespace

bool allocationFails() {
  if (allocationsLeft < 0 || (allocationsLeft > 0 && --allocationsLeft >= 0))
    return false;
  if (!memoryIsUsedUp)
    allocationsLeft = allSucceed;
  ++failures;
  return true;
}

bool withoutMemory(int number, bool usedUp, const std::function<void()>& work) {
  failures = 0;
  memoryIsUsedUp = usedUp;
  allocationsLeft = number;
  work();
  allocationsLeft = allSucceed;
  return failures > 0;
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return allocationFails() ? nullptr : std::malloc(size);
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
