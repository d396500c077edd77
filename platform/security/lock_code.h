#pragma once

#include <QString>

#include <array>
#include <cstddef>

namespace ulo {

// Overwrites the characters of a text and empties it. Copies that share them are left alone.
void wipe(QString& text);

// A code as the lock compares it: UTF-8 in the composed normal form, so that it is the same from
// each keyboard. Overwritten when the object goes.
class LockCode {
public:
  // Characters of 16 bits that a new code may have.
  static constexpr int fewest = 4;
  static constexpr int most = 64;

  // Wipes `text`. The object is empty for a text that has more than `most` characters.
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
  static constexpr std::size_t bytesOfUnit = 3;  // the most that UTF-8 takes for 16 bits
  std::array<char, most * bytesOfUnit> bytes_{};
  std::size_t size_ = 0;
  int characters_ = 0;
};

}  // namespace ulo
