// Checks a painter document's structure: types, unknown keys, and the keys without which it does not count.
#pragma once

#include <vector>

#include "overlay/document/TKLXPainterInfoXml.h"
#include "src/check/ProjectReport.h"

namespace vrx::check {

/// Problems of the tree itself. `file` names the document.
void CheckPainterDocument(const XpIniDict& document, const XpString& file, std::vector<Problem>& problems);

/// The key whose absence makes the document fail as a whole.
XpString DecidingKey(const XpIniDict& document);

}  // namespace vrx::check
