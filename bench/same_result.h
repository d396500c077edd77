// Describe the difference between two results; empty if they are the same.
#pragma once

#include "hand_store.h"

#include <cstddef>
#include <string>

namespace bench {

std::string differenceOf(int given, int expected);
std::string differenceOf(const std::string& given, const std::string& expected);
std::string differenceOf(const Uids& given, const Uids& expected);
std::string differenceOf(const Task& given, const Task& expected);
std::string differenceOf(const Tasks& given, const Tasks& expected);
// For lists of the codec.
std::string differenceOf(const QList<Task>& given, const QList<Task>& expected);

inline std::size_t sizeOf(int) {
  return 1;
}
inline std::size_t sizeOf(const Task&) {
  return 1;
}
inline std::size_t sizeOf(const std::string&) {
  return 1;
}
template <typename List> std::size_t sizeOf(const List& list) {
  return list.count();
}

}  // namespace bench
