#include "host/ModdValues.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <iterator>

#include "host/LocalDate.h"

namespace vrx::host {
namespace {

std::string HexText(const XpIniElement& element) {
  const std::byte* data = nullptr;
  std::uint64_t size = 0;
  element.GetData(data, size);
  std::string text;
  char digits[4];
  for (std::uint64_t i = 0; i < size; ++i) {
    std::snprintf(digits, sizeof(digits), "%02x", std::to_integer<unsigned>(data[i]));
    text += digits;
  }
  return text;
}

/// As in ISO 8601, without a zone: dates have none.
Json DateJson(const XpIniElement& element) {
  XpDateTime date;
  element.GetDate(date);
  if (!date.IsValid()) return {};
  char text[64];
  std::snprintf(text, sizeof(text), "%04d-%02d-%02dT%02d:%02d:%02d", date.GetYear(), date.GetMonth(),
                date.GetDay(), date.GetHour(), date.GetMinute(), date.GetSecond());
  return text;
}

template <class Value>
Value Get(const XpIniElement& element, XpResult (XpIniElement::*get)(Value&) const) {
  Value value{};
  (element.*get)(value);
  return value;
}

Json DictJson(const XpIniElement& dict) {
  Json object = Json::object();
  XpString key;
  for (std::uint32_t i = 0; i < dict.GetCount(); ++i) {
    if (dict.GetKeyAt(i, key) != XpOk) continue;
    if (const XpIniElement* value = dict.Get(key)) object[Utf8(key)] = ValueJson(*value);
  }
  return object;
}

struct TypeRow {
  XpIniType type;
  const char* name;
};
constexpr TypeRow kTypes[] = {{XpIniType::String, "text"},
                              {XpIniType::Int, "integer"},
                              {XpIniType::Real, "real"},
                              {XpIniType::Bool, "bool"},
                              {XpIniType::Date, "date"}};

template <class Number>
bool ParseNumber(const std::string& text, XpIniValue& value) {
  Number number{};
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end) return false;
  value = number;
  return true;
}

bool ParseDate(const std::string& text, XpIniValue& value) {
  XpDateTime date;
  if (!ReadLocalDate(text, date)) return false;
  value = date;
  return true;
}

}  // namespace

/// The depth is that of the document, which its reader limits.
Json ValueJson(const XpIniElement& element) {
  switch (element.GetType()) {
    case XpIniType::Bool:
      return Get(element, &XpIniElement::GetBool);
    case XpIniType::Int:
      return Get(element, &XpIniElement::GetInt64);
    case XpIniType::Real:
      return Get(element, &XpIniElement::GetReal);
    case XpIniType::String:
      return Utf8(Get(element, &XpIniElement::GetString));
    case XpIniType::MemChunk:
      return HexText(element);
    case XpIniType::Date:
      return DateJson(element);
    case XpIniType::Dict:
      return DictJson(element);
    case XpIniType::Array:
      break;
  }
  Json array = Json::array();
  for (std::uint32_t i = 0; i < element.GetCount(); ++i) array.push_back(ValueJson(*element.GetAt(i)));
  return array;
}

std::string InOneLine(const Json& value) {
  return Masked(value.dump(-1, ' ', false, Json::error_handler_t::replace));
}

bool ParseValue(const std::string& text, XpIniType type, XpIniValue& value) {
  switch (type) {
    case XpIniType::String:
      value = XpNarrowString(text.c_str()).ToWide();
      return true;
    case XpIniType::Int:
      return ParseNumber<std::int64_t>(text, value);
    case XpIniType::Real:
      return ParseNumber<double>(text, value);
    case XpIniType::Bool:
      value = text == "true";
      return text == "true" || text == "false";
    case XpIniType::Date:
      return ParseDate(text, value);
    default:
      return false;
  }
}

bool FindValueType(const std::string& name, XpIniType& type) {
  const auto* row = std::ranges::find(kTypes, name, &TypeRow::name);
  if (row == std::end(kTypes)) return false;
  type = row->type;
  return true;
}

const char* ValueTypeName(XpIniType type) {
  const auto* row = std::ranges::find(kTypes, type, &TypeRow::type);
  return row == std::end(kTypes) ? "value" : row->name;
}

}  // namespace vrx::host
