// An ordered list of values in a property-list document.
#pragma once

#include <memory>
#include <vector>

#include "content/plist/XpIniElement.h"

class XpIniArray : public XpIniElement {
 public:
  XpIniType GetType() const override { return XpIniType::Array; }
  std::uint32_t GetCount() const override { return static_cast<std::uint32_t>(m_elements.size()); }
  XpIniElement* Get(const XpString& key) const override;
  XpIniElement* GetAt(std::uint32_t index) const override;
  XpResult Remove(const XpString& key) override;
  XpResult RemoveAt(std::uint32_t index) override;
  /// InsertAt of the key's number.
  XpResult Add(const XpString& key, XpIniType type, const XpIniValue& value) override;
  /// XpErrElementNotFound for an index above the count; kAppend and kAppendToo append.
  XpResult InsertAt(std::uint32_t index, XpIniType type, const XpIniValue& value) override;

 private:
  std::vector<std::unique_ptr<XpIniElement>> m_elements;
};
