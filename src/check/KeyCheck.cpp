#include "src/check/KeyCheck.h"

#include <array>

#include "foundation/text/XpFormat.h"
#include "foundation/text/XpPath.h"

namespace vrx::check {
namespace {

void CheckKey(const XpString& name, const XpIniElement& element, std::span<const plist::Key> known,
              const KeyReport& report) {
  for (const plist::Key& key : known) {
    if (!(name == key.name)) continue;
    if (element.GetType() == key.type) return;
    XpString message;
    XpFormat(message, u"is %s instead of %s: it is not read", TypeName(element.GetType()),
             TypeName(key.type));
    return report(Severity::Warning, name, message);
  }
  for (const plist::Key& key : known) {
    if (XpCompareNoCase(name, key.name) != 0) continue;
    return report(Severity::Warning, name, XpString(u"is an unknown key; did you mean ") + key.name + u"?");
  }
  report(Severity::Note, name, u"is an unknown key and is not read");
}

}  // namespace

XpString TypeName(XpIniType type) {
  constexpr std::array<const char16_t*, 8> kNames{u"true or false", u"integer", u"real",  u"string",
                                                  u"data",          u"date",    u"array", u"dict"};
  return kNames[static_cast<std::size_t>(type)];
}

void CheckKeys(const XpIniElement& dict, std::span<const plist::Key> known, const KeyReport& report) {
  for (const auto& [name, element] : static_cast<const XpIniDict&>(dict).GetElements()) {
    CheckKey(name, *element, known, report);
  }
}

}  // namespace vrx::check
