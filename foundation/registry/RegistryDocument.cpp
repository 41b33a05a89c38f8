#include "foundation/registry/RegistryDocument.h"

#include <limits>

#include <nlohmann/json.hpp>

#include "foundation/text/XpPath.h"

namespace vrx::registry {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kIndent = 2;

XpString Wide(const std::string& text) { return XpNarrowString(text).ToWide(); }
std::string Narrow(const XpString& text) { return std::string(text.ToNarrow().AsView()); }

bool ReadValue(const Json& json, Value& value) {
  if (json.is_string()) {
    value = Wide(json.get_ref<const std::string&>());
    return true;
  }
  if (!json.is_number_unsigned()) return false;
  const auto number = json.get<std::uint64_t>();
  if (number > std::numeric_limits<std::uint32_t>::max()) return false;
  value = static_cast<std::uint32_t>(number);
  return true;
}

bool ReadKeys(const Json& json, Document::Keys& keys) {
  if (!json.is_object()) return false;
  for (const auto& [path, values] : json.items()) {
    if (!values.is_object()) return false;
    Values& key = keys[NormalKeyPath(Wide(path))];
    for (const auto& [name, content] : values.items()) {
      if (!ReadValue(content, key[Wide(name)])) return false;
    }
  }
  return true;
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
  const Json json = Json::parse(bytes, nullptr, false);
  if (!json.is_discarded() && ReadKeys(json, keys)) return true;
  keys.clear();
  return false;
}

std::string Document::Write() const {
  Json json = Json::object();
  for (const auto& [path, values] : keys) {
    Json& key = json[Narrow(path)] = Json::object();
    for (const auto& [name, value] : values) {
      Json& entry = key[Narrow(name)];
      if (const auto* text = std::get_if<XpString>(&value)) {
        entry = Narrow(*text);
      } else {
        entry = std::get<std::uint32_t>(value);
      }
    }
  }
  // Text that is not Unicode cannot be kept in this form.
  return json.dump(kIndent, ' ', false, Json::error_handler_t::replace) + "\n";
}

bool Document::HasKey(const XpString& path) const {
  if (keys.contains(path)) return true;
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
