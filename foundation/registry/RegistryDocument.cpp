#include "foundation/registry/RegistryDocument.h"

#include <limits>

#include <nlohmann/json.hpp>

#include "foundation/text/XpPath.h"

namespace vrx::registry {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kIndent = 2;
constexpr int kDeepest = 64;

XpString Wide(const std::string& text) { return XpNarrowString(text).ToWide(); }
std::string Narrow(const XpString& text) { return std::string(text.ToNarrow().AsView()); }

ForeignValue Foreign(const Json& json) { return {json.dump(-1, ' ', false, Json::error_handler_t::replace)}; }

Value ReadValue(const Json& json) {
  if (json.is_string()) return Wide(json.get_ref<const std::string&>());
  if (json.is_number_unsigned()) {
    const auto number = json.get<std::uint64_t>();
    if (number <= std::numeric_limits<std::uint32_t>::max()) return static_cast<std::uint32_t>(number);
  }
  return Foreign(json);
}

Json WriteValue(const Value& value) {
  if (const auto* text = std::get_if<XpString>(&value)) return Narrow(*text);
  if (const auto* number = std::get_if<std::uint32_t>(&value)) return *number;
  return Json::parse(std::get<ForeignValue>(value).json);
}

/// Discarded when the bytes are no JSON or nested too deeply for what walks through it.
Json ParseJson(std::string_view bytes) {
  bool isTooDeep = false;
  const auto limit = [&](int depth, Json::parse_event_t, const Json&) {
    isTooDeep = isTooDeep || depth > kDeepest;
    return !isTooDeep;
  };
  Json json = Json::parse(bytes, limit, false);
  return isTooDeep ? Json(Json::value_t::discarded) : json;
}

}  // namespace

bool NameOrder::operator()(const XpString& a, const XpString& b) const { return XpCompareNoCase(a, b) < 0; }

XpString NormalKeyPath(const XpString& path) {
  std::u16string normal;
  for (const char16_t c : path.AsView()) {
    if (c == u'\\' && (normal.empty() || normal.back() == u'\\')) continue;
    normal.push_back(c);
  }
  if (!normal.empty() && normal.back() == u'\\') normal.pop_back();
  return XpString(normal);
}

bool Document::Parse(std::string_view bytes) {
  keys.clear();
  foreign.clear();
  const Json json = ParseJson(bytes);
  if (!json.is_object()) return false;
  for (const auto& [path, values] : json.items()) {
    const XpString key = NormalKeyPath(Wide(path));
    if (!values.is_object()) {
      foreign[key] = Foreign(values);
      continue;
    }
    Values& known = keys[key];
    for (const auto& [name, value] : values.items()) known[Wide(name)] = ReadValue(value);
  }
  return true;
}

std::string Document::Write() const {
  Json json = Json::object();
  for (const auto& [path, value] : foreign) json[Narrow(path)] = WriteValue(value);
  for (const auto& [path, values] : keys) {
    Json& key = json[Narrow(path)] = Json::object();
    for (const auto& [name, value] : values) key[Narrow(name)] = WriteValue(value);
  }
  // Text that is not Unicode cannot be kept in this form.
  return json.dump(kIndent, ' ', false, Json::error_handler_t::replace) + "\n";
}

bool Document::HasKey(const XpString& path) const {
  if (path.IsEmpty() || keys.contains(path)) return true;
  const XpString below = path + u"\\";
  for (const auto& [key, values] : keys) {
    if (XpCompareNoCase(key.Left(below.Length()), below) == 0) return true;
  }
  return false;
}

const Value* Document::Find(const XpString& path, const XpString& name) const {
  const auto key = keys.find(path);
  if (key == keys.end()) return nullptr;
  const auto value = key->second.find(name);
  return value == key->second.end() ? nullptr : &value->second;
}

}  // namespace vrx::registry
