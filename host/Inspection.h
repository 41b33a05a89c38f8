// What the commands find out about a project before they render it.
#pragma once

#include "host/EngineModule.h"
#include "src/check/ProjectReport.h"

namespace vrx::host {

/// For a render or a single frame, which find the rest themselves: a source is only looked into where the
/// movie's length depends on it, and still pictures only by their size.
check::ProjectReport InspectQuickly(const XpString& project, const EngineModule& engine);

/// For `vrx check`: sources and still pictures are decoded, and the engine opens the whole job.
check::ProjectReport InspectWhole(const XpString& project, EngineModule& engine);

/// A line of the engine about the project.
check::Problem ProblemOf(const XpString& project, const EngineLine& line);

}  // namespace vrx::host
