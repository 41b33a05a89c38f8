// Opens the sources of a plan for a first look and works out how long the movie is. Used by the sequence and
// by the still frame.
#pragma once

#include <cstdint>

#include "engine/TimelinePlan.h"

namespace vrx::engine {

/// Opens each file once, however many clips come from it, fills in the frames of the clips that are whole
/// sources, and counts the frames of the movie. The failures of SourceFile, and kUnusableSettings for a movie
/// without frames or with too many; each with a logged line.
Result MeasureSources(FrameDuration duration, TimelinePlan& plan, std::int64_t& totalFrames);

}  // namespace vrx::engine
