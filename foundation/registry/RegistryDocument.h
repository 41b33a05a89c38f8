// The keys and values of one registry root in memory, and their form as a JSON document: an object of keys by
// path, each an object of values by name, which are texts or numbers of 32 bits. Used by RegistryStore.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <variant>

#include "vrx/XpString.h"

namespace vrx::registry {

/// Case does not count.
struct NameOrder {
  bool operator()(const XpString& a, const XpString& b) const;
};

using Value = std::variant<XpString, std::uint32_t>;
using Values = std::map<XpString, Value, NameOrder>;

class Document {
 public:
  using Keys = std::map<XpString, Values, NameOrder>;

  /// False when the bytes are no such document; this one is then empty.
  bool Parse(std::string_view bytes);
  std::string Write() const;

  /// There is such a key, or one below it.
  bool HasKey(const XpString& path) const;
  const Value* Find(const XpString& path, const XpString& name) const;

  Keys keys;  // by path without separators at its ends
};

/// The path without empty parts: no backslash at either end, none doubled.
XpString NormalKeyPath(const XpString& path);

}  // namespace vrx::registry
