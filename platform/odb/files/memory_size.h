#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>

namespace ulo::odb {

// Converts the size of a file's content. Throws std::bad_alloc if it exceeds the address space, as
// it can on 32-bit systems.
inline std::size_t memorySize(std::uint64_t bytes) {
  if (bytes > std::uint64_t{std::numeric_limits<std::ptrdiff_t>::max()})
    throw std::bad_alloc();
  return static_cast<std::size_t>(bytes);
}

}  // namespace ulo::odb
