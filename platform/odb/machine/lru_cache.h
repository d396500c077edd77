#pragma once

#include <cstddef>
#include <list>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <utility>

namespace ulo::odb {

// Values by key. Evicts the least recently used one beyond `capacity`.
template <typename Key, typename Value> class LruCache {
public:
  // How a key is passed for a search.
  using View = std::conditional_t<std::is_same_v<Key, std::string>, std::string_view, Key>;

  explicit LruCache(std::size_t capacity) : capacity_(capacity) {}

  // Returns null if the key is unknown. Valid until something is added.
  Value* find(View key) {
    const auto found = places_.find(key);
    if (found == places_.end())
      return nullptr;
    entries_.splice(entries_.begin(), entries_, found->second);
    return &entries_.front().second;
  }

  // Requires: the key is unknown. Valid until something is added. Changes nothing if it throws.
  Value& add(Key key, Value value) {
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
  using Entries = std::list<std::pair<Key, Value>>;

  std::size_t capacity_;
  Entries entries_;  // most recently used first
  std::unordered_map<View, typename Entries::iterator> places_;
};

}  // namespace ulo::odb
