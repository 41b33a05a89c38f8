// The leaves of a property-list document: one class for each type of value.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "content/plist/XpIniElement.h"

class XpIniBool : public XpIniElement {
 public:
  XpIniType GetType() const override { return XpIniType::Bool; }
  XpResult GetBool(bool& value) const override;
  XpResult SetBool(bool value) override;

 private:
  bool m_value = false;
};

class XpIniInt : public XpIniElement {
 public:
  XpIniType GetType() const override { return XpIniType::Int; }
  XpResult GetInt64(std::int64_t& value) const override;
  XpResult GetInt32(std::int32_t& value) const override;
  XpResult SetInt(std::int64_t value) override;

 private:
  std::int64_t m_value = 0;
};

class XpIniReal : public XpIniElement {
 public:
  XpIniType GetType() const override { return XpIniType::Real; }
  XpResult GetReal(double& value) const override;
  XpResult SetReal(double value) override;

 private:
  double m_value = 0.0;
};

class XpIniString : public XpIniElement {
 public:
  XpIniType GetType() const override { return XpIniType::String; }
  XpResult GetString(XpString& text) const override;
  XpResult SetString(const XpString& text) override;

 private:
  XpString m_text;
};

class XpIniMemChunk : public XpIniElement {
 public:
  XpIniType GetType() const override { return XpIniType::MemChunk; }
  /// The bytes stay owned by the element until it changes.
  XpResult GetData(const std::byte*& data, std::uint64_t& size) const override;
  XpResult SetData(const std::byte* data, std::uint64_t size) override;

 private:
  std::vector<std::byte> m_bytes;
};

class XpIniDate : public XpIniElement {
 public:
  XpIniType GetType() const override { return XpIniType::Date; }
  XpResult GetDate(XpDateTime& date) const override;
  XpResult SetDate(const XpDateTime& date) override;

 private:
  XpDateTime m_date;
};

/// A new element of this type that holds `value`; null with the cause in `result`, as from XpIniElement::Add.
std::unique_ptr<XpIniElement> XpIniMakeElement(XpIniType type, const XpIniValue& value, XpResult& result);
