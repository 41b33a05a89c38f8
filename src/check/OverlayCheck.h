// What of a project's overlays shows, when, and what never does.
#pragma once

#include "src/check/ProjectReport.h"

namespace vrx::check {

/// Adds the ranges, captions and problems of the painter document that `project` names to `report`, whose
/// settings and length are there already. `file` is the project document.
void CheckOverlays(const XpString& file, const TKLXOutputXml& project, ProjectReport& report);

}  // namespace vrx::check
