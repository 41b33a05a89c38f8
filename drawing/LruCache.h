// A small cache that drops the least recently used entry. The search is linear, which for some dozens of
// entries is faster than hashing a text, and needs no key object.
#pragma once

#include <cstddef>
#include <iterator>
#include <list>
#include <utility>

namespace vrx::drawing {

template <class Value>
class LruCache {
 public:
  explicit LruCache(std::size_t limit) : m_limit(limit) {}

  /// The entry that `matches`, now the youngest, or null. Valid until the next Insert or DropOldest.
  template <class Matches>
  Value* Find(Matches matches) {
    for (auto it = m_entries.begin(); it != m_entries.end(); ++it) {
      if (!matches(*it)) continue;
      m_entries.splice(m_entries.begin(), m_entries, it);
      return &m_entries.front();
    }
    return nullptr;
  }

  Value& Insert(Value value) {
    m_entries.push_front(std::move(value));
    if (m_entries.size() > m_limit) m_entries.pop_back();
    return m_entries.front();
  }

  void DropOldest() { m_entries.pop_back(); }
  std::size_t Count() const { return m_entries.size(); }
  auto begin() const { return m_entries.begin(); }
  auto end() const { return m_entries.end(); }

 private:
  std::list<Value> m_entries;
  std::size_t m_limit;
};

}  // namespace vrx::drawing
