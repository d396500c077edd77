// Minimal versions of the Qt 2 types in the engine's interface that Qt 6 no longer provides.
// QString, QDateTime, QFile, QUuid and others are those of Qt 6.
#pragma once

#include <QByteArray>
#include <QString>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <utility>
#include <vector>

// A zero-terminated 8-bit string.
class QCString : public QByteArray {
public:
  QCString() = default;
  QCString(const char* text) : QByteArray(text) {}
  QCString(const QByteArray& bytes) : QByteArray(bytes) {}
  // Copies at most maxSizeWithTerminator - 1 characters of `text`, up to the first zero byte. A
  // null `text` or a size of 0 results in a null string.
  QCString(const char* text, uint maxSizeWithTerminator)
      : QByteArray(text == nullptr || maxSizeWithTerminator == 0
                       ? QByteArray()
                       : QByteArray(text, static_cast<qsizetype>(
                                              strnlen(text, maxSizeWithTerminator - 1)))) {}

  // Returns a copy with ASCII letters in upper case.
  [[nodiscard]] QCString upper() const { return toUpper(); }

  // Returns the number of occurrences of `word`, including overlapping ones; 0 for an empty word.
  [[nodiscard]] int contains(const char* word, bool caseSensitive = true) const {
    if (word == nullptr || *word == '\0')
      return 0;
    return static_cast<int>(caseSensitive ? count(word)
                                          : toLower().count(QCString(word).toLower()));
  }
};

// A list of values, in the order in which they were appended.
template <typename T> class QValueList {
public:
  using iterator = typename std::vector<T>::iterator;
  using const_iterator = typename std::vector<T>::const_iterator;

  void append(T value) { items_.push_back(std::move(value)); }
  [[nodiscard]] uint count() const { return static_cast<uint>(items_.size()); }
  [[nodiscard]] bool isEmpty() const { return items_.empty(); }
  // Requires: index < count(). The reference is valid until the list changes.
  [[nodiscard]] T& at(uint index) { return items_[index]; }
  [[nodiscard]] const T& at(uint index) const { return items_[index]; }
  T& operator[](uint index) { return items_[index]; }
  const T& operator[](uint index) const { return items_[index]; }

  // Removes an item. Returns an iterator to the following one.
  iterator remove(iterator position) { return items_.erase(position); }
  // Removes all items equal to `value`. Returns their number.
  uint remove(const T& value) { return static_cast<uint>(std::erase(items_, value)); }
  // Removes all items for which `unwanted` returns true; the others keep their order.
  template <typename Predicate> void removeIf(Predicate unwanted) {
    std::erase_if(items_, unwanted);
  }
  // Removes all items after the first `count`.
  void truncate(uint count) {
    if (count < items_.size())
      items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(count), items_.end());
  }
  void clear() { items_.clear(); }
  void reserve(std::size_t size) { items_.reserve(size); }

  iterator begin() { return items_.begin(); }
  iterator end() { return items_.end(); }
  [[nodiscard]] const_iterator begin() const { return items_.begin(); }
  [[nodiscard]] const_iterator end() const { return items_.end(); }

  bool operator==(const QValueList&) const = default;

private:
  std::vector<T> items_;
};

// An array of plain values, not shared. A zero value always follows the last one, so that bytes can
// be read as a C string.
template <typename T> class QArray {
public:
  QArray() = default;
  explicit QArray(int size) { resize(size); }

  [[nodiscard]] uint size() const { return static_cast<uint>(items_.size() - 1); }
  [[nodiscard]] uint count() const { return size(); }
  [[nodiscard]] bool isEmpty() const { return size() == 0; }
  // New values are zero. Returns false and does nothing if `size` is negative.
  bool resize(int size) {
    if (size < 0)
      return false;
    items_.back() = T();
    items_.resize(static_cast<std::size_t>(size) + 1);
    items_.back() = T();
    return true;
  }
  // Replaces the content with a copy of `size` values.
  QArray& duplicate(const T* values, uint size) {
    items_.assign(values, values + size);
    items_.push_back(T());
    return *this;
  }
  [[nodiscard]] T* data() { return items_.data(); }
  [[nodiscard]] const T* data() const { return items_.data(); }
  // Requires: index < size().
  [[nodiscard]] T& at(uint index) { return items_[index]; }
  [[nodiscard]] const T& at(uint index) const { return items_[index]; }
  T& operator[](int index) { return items_[static_cast<std::size_t>(index)]; }
  const T& operator[](int index) const { return items_[static_cast<std::size_t>(index)]; }

private:
  std::vector<T> items_ = std::vector<T>(1);
};

// A list of pointers. Deletes the items it removes only while auto-delete is on; otherwise the
// caller owns them.
template <typename T> class QPtrListOf {
public:
  QPtrListOf() = default;
  QPtrListOf(const QPtrListOf&) = delete;
  QPtrListOf& operator=(const QPtrListOf&) = delete;
  ~QPtrListOf() { clear(); }

  void append(const T* item) { items_.push_back(const_cast<T*>(item)); }
  [[nodiscard]] uint count() const { return static_cast<uint>(items_.size()); }
  [[nodiscard]] bool isEmpty() const { return items_.empty(); }
  // Returns null if there is no such item.
  [[nodiscard]] T* at(uint index) const { return index < items_.size() ? items_[index] : nullptr; }
  [[nodiscard]] T* first() const { return at(0); }
  // Returns false if the list is empty.
  bool removeFirst() {
    if (items_.empty())
      return false;
    drop(items_.front());
    items_.erase(items_.begin());
    return true;
  }
  void clear() {
    std::for_each(items_.begin(), items_.end(), [this](T* item) { drop(item); });
    items_.clear();
  }
  void setAutoDelete(bool on) { autoDelete_ = on; }
  [[nodiscard]] bool autoDelete() const { return autoDelete_; }

private:
  void drop(T* item) {
    if (autoDelete_)
      delete item;
  }

  std::vector<T*> items_;
  bool autoDelete_ = false;
};
