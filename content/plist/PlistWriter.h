// Writes a tree of XpIni elements as a property-list document.
#pragma once

#include <string>
#include <string_view>

#include "content/plist/XpIniDict.h"

namespace vrx::plist {

/// The whole document in UTF-8. Characters that XML 1.0 cannot hold (control characters, lone surrogates) are
/// written as U+FFFD. XpErrNoDocument for a tree that is too deep or too large to be read again.
XpResult WriteDocument(const XpIniDict& dict, std::string& text);

/// Appends `text` as it stands between the tags of an element, in UTF-8, with the same replacement.
void AppendEscaped(std::string& out, std::u16string_view text);

/// Results as XpIniDict::Save.
XpResult WriteFile(const XpIniDict& dict, const XpString& path);

}  // namespace vrx::plist
