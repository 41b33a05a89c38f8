// Renders a project as pieces at the same time on this machine and joins them, which `vrx render --jobs` asks
// for.
#pragma once

#include <cstdint>

#include "host/ProjectSource.h"
#include "host/RenderRun.h"

namespace vrx::host {

/// As RenderProject, in up to `jobs` processes. In one go, with a line that says why, where pieces bring
/// nothing or cannot be made.
int RenderInPieces(const RenderOptions& options, std::uint32_t jobs, const ProjectSource& project);

/// How many pieces are worth while: each has ten seconds of encoded frames or more.
std::uint32_t UsefulPieces(std::uint32_t jobs, std::int64_t encodedFrames, const VRXTimeInfo& frameDuration);

}  // namespace vrx::host
