#pragma once

#include <QString>

#include <array>
#include <cstddef>

namespace ulo {

// Overwrites the characters of a text and empties it. Does not affect copies that share them.
void wipe(QString& text);

// A code in the form that the lock compares: UTF-8 in composed normal form, so that it does not
// depend on the keyboard. The destructor overwrites it.
class LockCode {
public:
  // Length of a new code, in 16-bit characters.
  static constexpr int fewest = 4;
  static constexpr int most = 64;

  // Wipes `text`. The object is empty if the text has more than `most` characters.
  explicit LockCode(QString& text);
  LockCode(const LockCode&) = delete;
  LockCode& operator=(const LockCode&) = delete;
  ~LockCode();

  [[nodiscard]] const char* data() const { return bytes_.data(); }
  [[nodiscard]] std::size_t size() const { return size_; }
  [[nodiscard]] bool isEmpty() const { return size_ == 0; }
  [[nodiscard]] int characters() const { return characters_; }
  friend bool operator==(const LockCode& one, const LockCode& other);

private:
  static constexpr std::size_t bytesOfUnit = 3;  // maximum in UTF-8 for 16 bits
  std::array<char, most * bytesOfUnit> bytes_{};
  std::size_t size_ = 0;
  int characters_ = 0;
};

}  // namespace ulo
