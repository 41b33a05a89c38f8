#include "content/plist/XpIniArray.h"

#include <algorithm>
#include <limits>

#include "content/plist/PlistNumbers.h"
#include "content/plist/XpIniKeyPath.h"
#include "content/plist/XpIniValues.h"

namespace {

/// A number of 32 bits, or the nearest one. Negative numbers wrap, which makes -1 and -2 the indices that
/// append.
std::uint32_t IndexOf(const XpString& key) {
  using Limits = std::numeric_limits<std::int32_t>;
  const std::int64_t number = vrx::plist::ParseInteger(key.AsView());
  return static_cast<std::uint32_t>(std::clamp<std::int64_t>(number, Limits::min(), Limits::max()));
}

}  // namespace

XpIniElement* XpIniArray::Get(const XpString& key) const {
  const XpIniKeyPath path(key);
  XpIniElement* child = GetAt(IndexOf(path.first));
  return child != nullptr && path.isPath ? child->Get(path.rest) : child;
}

XpIniElement* XpIniArray::GetAt(std::uint32_t index) const {
  return index < m_elements.size() ? m_elements[index].get() : nullptr;
}

XpResult XpIniArray::Remove(const XpString& key) {
  const XpIniKeyPath path(key);
  if (!path.isPath) return RemoveAt(IndexOf(key));
  XpIniElement* child = GetAt(IndexOf(path.first));
  return child == nullptr ? XpErrElementNotFound : child->Remove(path.rest);
}

XpResult XpIniArray::RemoveAt(std::uint32_t index) {
  if (index >= m_elements.size()) return XpErrElementNotFound;
  m_elements.erase(m_elements.begin() + index);
  return XpOk;
}

XpResult XpIniArray::Add(const XpString& key, XpIniType type, const XpIniValue& value) {
  const XpIniKeyPath path(key);
  if (!path.isPath) return InsertAt(IndexOf(key), type, value);
  XpIniElement* child = GetAt(IndexOf(path.first));
  return child == nullptr ? XpErrElementNotFound : child->Add(path.rest, type, value);
}

XpResult XpIniArray::InsertAt(std::uint32_t index, XpIniType type, const XpIniValue& value) {
  if (index == kAppend || index == kAppendToo) index = GetCount();
  if (index > m_elements.size()) return XpErrElementNotFound;
  XpResult result = XpOk;
  auto element = XpIniMakeElement(type, value, result);
  if (element) m_elements.insert(m_elements.begin() + index, std::move(element));
  return result;
}
