#include "src/check/KeyCheck.h"

#include <algorithm>
#include <array>
#include <optional>
#include <set>
#include <vector>

#include "foundation/text/NearestName.h"
#include "foundation/text/XpFormat.h"

namespace vrx::check {
namespace {

bool Holds(std::span<const plist::Key> keys, const XpString& name) {
  return std::ranges::any_of(keys, [&](const plist::Key& key) { return name == key.name; });
}

/// `leftOut` are parts of the dict that are missing, of which one line is enough.
std::optional<KeyProblem> UnknownKey(const XpString& name, const XpIniElement& dict,
                                     std::span<const plist::Key> known, std::span<const DictPart> parts,
                                     std::set<XpString>& leftOut) {
  std::vector<std::u16string_view> names;
  for (const plist::Key& key : known) names.emplace_back(key.name);
  if (const auto nearest = NearestName(name.AsView(), names)) {
    const XpString meant(*nearest);
    const bool isThere = dict.Get(meant) != nullptr;
    return KeyProblem{.severity = Severity::Warning,
                      .key = name,
                      .message = u"is an unknown key; did you mean " + meant + u"?",
                      .meant = isThere ? XpString() : meant};
  }
  for (const DictPart& part : parts) {
    if (!Holds(part.keys, name)) continue;
    const XpString where = XpString(u"belongs into ") + part.name;
    // A part that lies in this very dict, and is not there, was left out around its keys.
    const bool isLeftOut = Holds(known, part.name) && dict.Get(part.name) == nullptr;
    if (isLeftOut && !leftOut.insert(part.name).second) return std::nullopt;
    return KeyProblem{.severity = Severity::Warning,
                      .key = name,
                      .message = where + (isLeftOut ? u", which is missing" : u": here it is not read"),
                      .meant = isLeftOut ? XpString(part.name) : name};
  }
  return KeyProblem{.severity = Severity::Note, .key = name, .message = u"is an unknown key and is not read"};
}

}  // namespace

XpString TypeName(XpIniType type) {
  constexpr std::array<const char16_t*, 8> kNames{u"true or false", u"integer", u"real",  u"string",
                                                  u"data",          u"date",    u"array", u"dict"};
  return kNames[static_cast<std::size_t>(type)];
}

XpString TypeWithArticle(XpIniType type) {
  if (type == XpIniType::Bool) return TypeName(type);
  const bool isVowel = type == XpIniType::Array || type == XpIniType::Int;
  return (isVowel ? u"an " : u"a ") + TypeName(type);
}

void CheckKeys(const XpIniElement& dict, std::span<const plist::Key> known, std::span<const DictPart> parts,
               const KeyReport& report) {
  std::set<XpString> leftOut;  // parts of the dict that one of their keys has named
  for (const auto& entry : static_cast<const XpIniDict&>(dict).GetElements()) {
    const XpString& name = entry.first;
    const auto& element = entry.second;
    const auto key = std::ranges::find_if(known, [&](const plist::Key& each) { return name == each.name; });
    KeyProblem problem;
    if (key == known.end()) {
      const auto unknown = UnknownKey(name, dict, known, parts, leftOut);
      if (!unknown) continue;
      problem = *unknown;
    } else if (element->GetType() != key->type) {
      problem = {.severity = Severity::Warning, .key = name, .meant = name};
      XpFormat(problem.message, u"is %s instead of %s: it is not read", TypeName(element->GetType()),
               TypeName(key->type));
    } else {
      continue;
    }
    problem.line = element->GetLines().element;
    report(problem);
  }
}

}  // namespace vrx::check
