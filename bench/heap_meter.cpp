#include "heap_meter.h"

#include <algorithm>
#include <atomic>
#include <cerrno>

#include <malloc.h>

extern "C" {
// The functions of the C library, under the names reserved for replacements.
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}

namespace {

std::atomic<std::size_t> inUse{0};
std::atomic<std::size_t> peak{0};

void* taken(void* block) {
  const std::size_t now = inUse += block == nullptr ? 0 : malloc_usable_size(block);
  std::size_t highest = peak;
  while (now > highest && !peak.compare_exchange_weak(highest, now)) {
  }
  return block;
}

void given(void* block) {
  if (block != nullptr)
    inUse -= malloc_usable_size(block);
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) {
  return taken(__libc_malloc(size));
}

void* calloc(std::size_t count, std::size_t size) {
  return taken(__libc_calloc(count, size));
}

// While a block is moved, both copies are in use.
void* realloc(void* block, std::size_t size) {
  const std::size_t before = block == nullptr ? 0 : malloc_usable_size(block);
  void* moved = __libc_realloc(block, size);
  if (moved == nullptr && size != 0)
    return nullptr;
  if (moved != block)
    taken(moved);
  else
    inUse += moved == nullptr ? 0 : malloc_usable_size(moved);
  inUse -= before;
  return moved;
}

void* memalign(std::size_t alignment, std::size_t size) {
  return taken(__libc_memalign(alignment, size));
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
  return memalign(alignment, size);
}

int posix_memalign(void** place, std::size_t alignment, std::size_t size) {
  void* block = memalign(alignment, size);
  if (block == nullptr)
    return ENOMEM;
  *place = block;
  return 0;
}

void free(void* block) {
  given(block);
  __libc_free(block);
}
}

namespace bench {

std::size_t heapInUse() {
  return inUse;
}

std::size_t heapPeak() {
  return peak;
}

void restartHeapPeak() {
  peak = inUse.load();
}

}  // namespace bench
