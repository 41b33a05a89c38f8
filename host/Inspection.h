// What the commands find out about a project before they render it.
#pragma once

#include "host/EngineModule.h"
#include "host/ProjectSource.h"
#include "src/check/ProjectReport.h"

namespace vrx::host {

/// For a render or a single frame, which find the rest themselves: a source is only looked into where the
/// movie's length or sound depends on it, and still pictures only by their size.
check::ProjectReport InspectQuickly(const ProjectSource& project, const EngineModule& engine);

/// For `vrx check`: sources and still pictures are decoded, and the engine opens the whole job.
check::ProjectReport InspectWhole(const ProjectSource& project, EngineModule& engine);

/// As InspectQuickly, and how the movie would be made: the engine opens the whole job. `spans` stays empty
/// for a project that cannot be rendered.
check::ProjectReport InspectSpans(const ProjectSource& project, EngineModule& engine, EngineSpans& spans);

/// A line of the engine about the project, whose clips are in the report.
check::Problem ProblemOf(const ProjectSource& project, const check::ProjectReport& report,
                         const EngineLine& line);

}  // namespace vrx::host
