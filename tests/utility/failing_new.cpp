#include "failing_new.h"

#include <cstddef>
#include <new>

int allocationsLeft = allAllocationsSucceed;

namespace {

bool allocationFails() {
  if (allocationsLeft == allAllocationsSucceed)
    return false;
  if (allocationsLeft == 0)
    return true;
  --allocationsLeft;
  return false;
}

}  // namespace

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  if (allocationFails())
    return nullptr;
  try {
    return ::operator new(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  if (allocationFails())
    return nullptr;
  try {
    return ::operator new[](size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
