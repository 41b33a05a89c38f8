#include "content/plist/XpIniDict.h"

#include <iterator>
#include <string>

#include "content/plist/PlistReader.h"
#include "content/plist/PlistWriter.h"
#include "content/plist/XpIniKeyPath.h"
#include "content/plist/XpIniValues.h"

XpIniElement* XpIniDict::Get(const XpString& key) const {
  const XpIniKeyPath path(key);
  const auto found = m_elements.find(path.first);
  if (found == m_elements.end()) return nullptr;
  return path.isPath ? found->second->Get(path.rest) : found->second.get();
}

XpResult XpIniDict::Remove(const XpString& key) {
  const XpIniKeyPath path(key);
  const auto found = m_elements.find(path.first);
  if (found == m_elements.end()) return XpErrElementNotFound;
  if (path.isPath) return found->second->Remove(path.rest);
  m_elements.erase(found);
  return XpOk;
}

XpResult XpIniDict::Add(const XpString& key, XpIniType type, const XpIniValue& value) {
  const XpIniKeyPath path(key);
  const auto found = m_elements.find(path.first);
  if (path.isPath) {
    return found == m_elements.end() ? XpErrElementNotFound : found->second->Add(path.rest, type, value);
  }
  if (found != m_elements.end()) return XpErrKeyExists;
  if (key.IsEmpty()) return XpErrInvalidArgument;  // it would end the dict when the document is read
  XpResult result = XpOk;
  auto element = XpIniMakeElement(type, value, result);
  if (element) m_elements.emplace(key, std::move(element));
  return result;
}

XpResult XpIniDict::GetKeyAt(std::uint32_t index, XpString& key) const {
  if (index >= m_elements.size()) return XpErrElementNotFound;
  key = std::next(m_elements.begin(), index)->first;
  return XpOk;
}

XpIniElement* XpIniDict::GetValueAt(std::uint32_t index) const {
  return index < m_elements.size() ? std::next(m_elements.begin(), index)->second.get() : nullptr;
}

XpResult XpIniDict::Load(const XpString& path) { return vrx::plist::ReadFile(path, *this, nullptr); }
XpResult XpIniDict::Save(const XpString& path) const { return vrx::plist::WriteFile(*this, path); }

XpResult XpIniDict::LoadText(const XpString& text) {
  // The encoding that the XML declaration names is ignored: the text is UTF-16 in memory, and UTF-8 here.
  const XpNarrowString bytes = text.ToNarrow();
  const auto view = bytes.AsView();
  return vrx::plist::ReadBytes({view.data(), view.size()}, "UTF-8", *this, nullptr);
}

XpResult XpIniDict::SaveText(XpString& text) const {
  std::string bytes;
  const XpResult result = vrx::plist::WriteDocument(*this, bytes);
  if (result == XpOk) text = XpNarrowString(bytes).ToWide();
  return result;
}

XpResult XpIniDict::LoadClipboard(std::uint32_t /*format*/) { return XpErrFailed; }
XpResult XpIniDict::SaveClipboard(std::uint32_t /*format*/) const { return XpErrFailed; }
