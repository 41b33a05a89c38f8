// The keys and values of one registry root in memory, and their form as a JSON document: an object of keys by
// path, each an object of values by name, which are texts or numbers of 32 bits. Anything else in
// the document is kept. Used by RegistryStore.
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

/// A value of another JSON type, as its JSON text. Readers get their defaults for it.
struct ForeignValue {
  std::string json;
};

using Value = std::variant<XpString, std::uint32_t, ForeignValue>;
using Values = std::map<XpString, Value, NameOrder>;

class Document {
 public:
  using Keys = std::map<XpString, Values, NameOrder>;

  /// False when the bytes are no such document, or nested deeper than any settings are; this one is then
  /// empty.
  bool Parse(std::string_view bytes);
  std::string Write() const;

  /// There is such a key, or one below it. The root, whose path is empty, is always there.
  bool HasKey(const XpString& path) const;
  const Value* Find(const XpString& path, const XpString& name) const;

  Keys keys;                                            // by path without separators at its ends
  std::map<XpString, ForeignValue, NameOrder> foreign;  // by path: entries that are no key
};

/// The path without empty parts: no backslash at either end, none doubled.
XpString NormalKeyPath(const XpString& path);

}  // namespace vrx::registry
