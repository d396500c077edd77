#pragma once

#include <cstddef>
#include <list>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace ulo::odb {

// Values by text. Evicts the least recently used one beyond `capacity`.
template <typename Value> class LruCache {
public:
  explicit LruCache(std::size_t capacity) : capacity_(capacity) {}

  // Returns null if the key is unknown. Valid until something is added.
  Value* find(std::string_view key) {
    const auto found = places_.find(key);
    if (found == places_.end())
      return nullptr;
    entries_.splice(entries_.begin(), entries_, found->second);
    return &entries_.front().second;
  }

  // Requires: the key is unknown. Valid until something is added. Changes nothing if it throws.
  Value& add(std::string key, Value value) {
    Entries added;
    added.emplace_front(std::move(key), std::move(value));
    places_.emplace(added.front().first, added.begin());
    entries_.splice(entries_.begin(), added);
    if (entries_.size() > capacity_) {
      places_.erase(entries_.back().first);
      entries_.pop_back();
    }
    return entries_.front().second;
  }

  void clear() {
    places_.clear();
    entries_.clear();
  }

private:
  using Entries = std::list<std::pair<std::string, Value>>;

  std::size_t capacity_;
  Entries entries_;  // most recently used first
  std::unordered_map<std::string_view, typename Entries::iterator> places_;
};

}  // namespace ulo::odb
