// Compares the keys of a dict with those that its reader knows. Used by the checks of project and painter
// documents.
#pragma once

#include <functional>
#include <span>

#include "content/plist/XpIniDict.h"
#include "content/plist/XpIniKey.h"
#include "src/check/ProjectReport.h"

namespace vrx::check {

using KeyReport = std::function<void(Severity severity, const XpString& key, const XpString& message)>;

/// Reports values of a wrong type, which are not read, and unknown keys. `dict` must be a dict.
void CheckKeys(const XpIniElement& dict, std::span<const plist::Key> known, const KeyReport& report);

/// "dict", "real" and so on, as the elements of a document are called; a boolean is "true or false".
XpString TypeName(XpIniType type);

}  // namespace vrx::check
