// Checks a project's output settings and the place that the movie goes to.
#pragma once

#include <vector>

#include "src/check/ProjectReport.h"

namespace vrx::check {

/// `file` is the document, `report` holds its settings; problems are added to it.
void CheckOutput(const XpString& file, ProjectReport& report);

}  // namespace vrx::check
