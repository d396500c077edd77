#pragma once

#include <utility>

#include <unistd.h>

namespace ulo {

// Owns a file descriptor; -1 means none.
class Descriptor {
public:
  explicit Descriptor(int number = -1) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(other.release()) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    reset(other.release());
    return *this;
  }
  ~Descriptor() { reset(); }

  [[nodiscard]] int get() const { return number_; }
  [[nodiscard]] bool isOpen() const { return number_ >= 0; }
  void reset(int number = -1) {
    if (const int old = std::exchange(number_, number); old >= 0)
      close(old);
  }
  // Returns the descriptor without closing it; the caller becomes its owner.
  int release() { return std::exchange(number_, -1); }

private:
  int number_;
};

}  // namespace ulo
