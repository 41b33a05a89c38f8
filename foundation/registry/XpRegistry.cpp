#include "foundation/registry/XpRegistry.h"

#include <algorithm>
#include <string>

namespace {

using namespace vrx::registry;

constexpr std::uint32_t kAccessMask = XpRegistryRead | XpRegistryWrite;

XpString WithBackslashes(const XpString& name) {
  std::u16string text(name.AsView());
  std::replace(text.begin(), text.end(), u'/', u'\\');
  return XpString(text);
}

}  // namespace

XpResult XpRegistry::Open(const XpString& path, std::uint32_t rootKind, std::uint32_t access) {
  return XpRegistry::OpenRaw(WithBackslashes(path), rootKind, access);
}

XpResult XpRegistry::OpenRaw(const XpString& path, std::uint32_t rootKind, std::uint32_t access) {
  m_isOpen = false;
  m_keyPath = NormalKeyPath(path);
  m_rootKind = rootKind;
  m_access = access;
  const Root root = RootOf(rootKind);
  if ((access & kAccessMask) == XpRegistryRead) {
    m_isOpen = ReadStore(root).HasKey(m_keyPath);
  } else {
    m_isOpen = ChangeStore(root, [this](Document& document) {
                 return document.HasKey(m_keyPath) ? false : document.keys.try_emplace(m_keyPath).second;
               }) == XpOk;
  }
  return m_isOpen ? XpOk : XpErrFailed;
}

XpResult XpRegistry::Close() {
  const bool wasOpen = m_isOpen;
  m_isOpen = false;
  return wasOpen ? XpOk : XpErrFailed;
}

bool XpRegistry::FindValue(const XpString& name, Value& value) const {
  if (!m_isOpen || (m_access & XpRegistryRead) == 0) return false;
  const Document document = ReadStore(RootOf(m_rootKind));
  const Value* found = document.Find(m_keyPath, WithBackslashes(name));
  if (found != nullptr) value = *found;
  return found != nullptr;
}

XpResult XpRegistry::SetValue(const XpString& name, const Value& value) {
  if (!m_isOpen || (m_access & XpRegistryWrite) == 0) return XpErrFailed;
  return ChangeStore(RootOf(m_rootKind), [&](Document& document) {
    document.keys[m_keyPath][WithBackslashes(name)] = value;
    return true;
  });
}

XpString XpRegistry::GetString(const XpString& name, const XpString& absent) const {
  Value value;
  return FindValue(name, value) && std::holds_alternative<XpString>(value) ? std::get<XpString>(value)
                                                                           : absent;
}

std::uint32_t XpRegistry::GetDword(const XpString& name, std::uint32_t absent) const {
  Value value;
  const bool found = FindValue(name, value) && std::holds_alternative<std::uint32_t>(value);
  return found ? std::get<std::uint32_t>(value) : absent;
}

bool XpRegistry::GetBool(const XpString& name) const { return GetDword(name, 0) != 0; }

bool XpRegistry::HasValue(const XpString& name) const {
  Value value;
  return FindValue(name, value);
}

XpResult XpRegistry::SetString(const XpString& name, const XpString& value) { return SetValue(name, value); }

XpResult XpRegistry::SetDword(const XpString& name, std::uint32_t value) { return SetValue(name, value); }

std::unique_ptr<XpRegistry> XpRegistry::OpenSubKey(const XpString& name) const {
  return m_isOpen ? XpRegistryOpen(m_keyPath + u"\\" + name, m_rootKind, XpRegistryRead) : nullptr;
}

std::unique_ptr<XpRegistry> XpRegistryOpen(const XpString& path, std::uint32_t rootKind,
                                           std::uint32_t access) {
  auto key = std::make_unique<XpRegistry>();
  return key->Open(path, rootKind, access) == XpOk ? std::move(key) : nullptr;
}
