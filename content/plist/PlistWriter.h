// Writes a tree of XpIni elements as a property-list document.
#pragma once

#include <string>

#include "content/plist/XpIniDict.h"

namespace vrx::plist {

/// The whole document in UTF-8. Characters that XML 1.0 cannot hold (control characters, lone surrogates) are
/// written as U+FFFD, so that the document can always be read again.
std::string WriteDocument(const XpIniDict& dict);

/// Writes the document beside `path` and then renames it, so that an older file stays whole when it fails.
XpResult WriteFile(const XpIniDict& dict, const XpString& path);

}  // namespace vrx::plist
