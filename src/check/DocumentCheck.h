// Checks a project document's structure against the table of keys: types, missing parts, unknown keys.
#pragma once

#include <vector>

#include "src/check/ProjectReport.h"

namespace vrx::check {

/// Problems of the tree itself, in document order. `file` names the document.
void CheckDocument(const XpIniDict& document, const XpString& file, std::vector<Problem>& problems);

}  // namespace vrx::check
