// A key of a document together with the type that its value must have. Readers and checkers of project and
// painter documents share their tables of these.
#pragma once

#include "content/plist/XpIniElement.h"

namespace vrx::plist {

struct Key {
  const char16_t* name;
  XpIniType type;
};

/// The element of `dict` under `key` when it is there and has the key's type, else null: an element of
/// another type counts as absent, even one that could be converted.
inline const XpIniElement* Find(const XpIniElement* dict, const Key& key) {
  const XpIniElement* element = dict == nullptr ? nullptr : dict->Get(key.name);
  return element != nullptr && element->GetType() == key.type ? element : nullptr;
}

/// Sets `value` to the value of `key`, or to `absent` with XpErrElementNotFound.
template <class Value>
XpResult Read(const XpIniElement& dict, const Key& key, Value& value, const Value& absent,
              XpResult (XpIniElement::*get)(Value&) const) {
  value = absent;
  const XpIniElement* element = Find(&dict, key);
  if (element == nullptr) return XpErrElementNotFound;
  const XpResult result = (element->*get)(value);
  if (result != XpOk) value = absent;
  return result;
}

}  // namespace vrx::plist
