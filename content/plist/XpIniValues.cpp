#include "content/plist/XpIniValues.h"

#include <limits>

#include "content/plist/XpIniArray.h"
#include "content/plist/XpIniDict.h"

XpResult XpIniBool::GetBool(bool& value) const {
  value = m_value;
  return XpOk;
}

XpResult XpIniBool::SetBool(bool value) {
  m_value = value;
  return XpOk;
}

XpResult XpIniInt::GetInt64(std::int64_t& value) const {
  value = m_value;
  return XpOk;
}

XpResult XpIniInt::GetInt32(std::int32_t& value) const {
  using Limits = std::numeric_limits<std::int32_t>;
  value = static_cast<std::int32_t>(m_value);
  return m_value < Limits::min() || m_value > Limits::max() ? XpErrValueDoesNotFit : XpOk;
}

XpResult XpIniInt::SetInt(std::int64_t value) {
  m_value = value;
  return XpOk;
}

XpResult XpIniReal::GetReal(double& value) const {
  value = m_value;
  return XpOk;
}

XpResult XpIniReal::SetReal(double value) {
  m_value = value;
  return XpOk;
}

XpResult XpIniString::GetString(XpString& text) const {
  text = m_text;
  return XpOk;
}

XpResult XpIniString::SetString(const XpString& text) {
  m_text = text;
  return XpOk;
}

XpResult XpIniMemChunk::GetData(const std::byte*& data, std::uint64_t& size) const {
  data = m_bytes.data();
  size = m_bytes.size();
  return XpOk;
}

XpResult XpIniMemChunk::SetData(const std::byte* data, std::uint64_t size) {
  m_bytes.assign(data, data + size);
  return XpOk;
}

XpResult XpIniDate::GetDate(XpDateTime& date) const {
  date = m_date;
  return XpOk;
}

XpResult XpIniDate::SetDate(const XpDateTime& date) {
  m_date = date;
  return XpOk;
}

namespace {

std::unique_ptr<XpIniElement> MakeEmpty(XpIniType type) {
  switch (type) {
    case XpIniType::Bool:
      return std::make_unique<XpIniBool>();
    case XpIniType::Int:
      return std::make_unique<XpIniInt>();
    case XpIniType::Real:
      return std::make_unique<XpIniReal>();
    case XpIniType::String:
      return std::make_unique<XpIniString>();
    case XpIniType::MemChunk:
      return std::make_unique<XpIniMemChunk>();
    case XpIniType::Date:
      return std::make_unique<XpIniDate>();
    case XpIniType::Array:
      return std::make_unique<XpIniArray>();
    case XpIniType::Dict:
      return std::make_unique<XpIniDict>();
  }
  return nullptr;
}

struct Setter {
  XpIniElement& element;

  XpResult operator()(std::monostate) const { return XpOk; }
  XpResult operator()(bool value) const { return element.SetBool(value); }
  XpResult operator()(std::int64_t value) const { return element.SetInt(value); }
  XpResult operator()(double value) const { return element.SetReal(value); }
  XpResult operator()(const XpString& text) const { return element.SetString(text); }
  XpResult operator()(std::span<const std::byte> bytes) const {
    return element.SetData(bytes.data(), bytes.size());
  }
  XpResult operator()(const XpDateTime& date) const { return element.SetDate(date); }
};

}  // namespace

std::unique_ptr<XpIniElement> XpIniMakeElement(XpIniType type, const XpIniValue& value, XpResult& result) {
  auto element = MakeEmpty(type);
  result = element ? std::visit(Setter{*element}, value) : XpErrUnknownElementType;
  if (result != XpOk) element.reset();
  return element;
}
