// The dictionary of a property-list document; the outermost one is the document, which it loads and saves.
#pragma once

#include <map>
#include <memory>

#include "content/plist/XpIniElement.h"

/// Keys are ordered by their 16-bit character values; case counts. A key cannot contain '/', which separates
/// the parts of a path.
class XpIniDict : public XpIniElement {
 public:
  XpIniType GetType() const override { return XpIniType::Dict; }
  std::uint32_t GetCount() const override { return static_cast<std::uint32_t>(m_elements.size()); }
  XpIniElement* Get(const XpString& key) const override;
  XpResult Remove(const XpString& key) override;
  XpResult Add(const XpString& key, XpIniType type, const XpIniValue& value) override;
  XpResult GetKeyAt(std::uint32_t index, XpString& key) const override;

  /// Reads the document at `path`. On failure the dict is empty: the file layer's code for a file that cannot
  /// be read, XpErrNoDocument for one that is no document, XpErrWrongRoot for one of another kind.
  XpResult Load(const XpString& path) override;
  /// Replaces the file at `path` by the document as XpReplaceFile does. The file layer's code when the file
  /// cannot be opened; XpErrNoDocument when it cannot be written, and for a tree that is too deep or too
  /// large to be read again.
  XpResult Save(const XpString& path) const override;

  /// There is no clipboard here: both return XpErrFailed.
  virtual XpResult LoadClipboard(std::uint32_t format);
  virtual XpResult SaveClipboard(std::uint32_t format) const;
  /// As Load and Save, with the document in memory.
  virtual XpResult LoadText(const XpString& text);
  virtual XpResult SaveText(XpString& text) const;
  /// In key order; null past the end.
  virtual XpIniElement* GetValueAt(std::uint32_t index) const;

  void Clear() { m_elements.clear(); }

  using Elements = std::map<XpString, std::unique_ptr<XpIniElement>>;
  const Elements& GetElements() const { return m_elements; }

 private:
  Elements m_elements;
};
