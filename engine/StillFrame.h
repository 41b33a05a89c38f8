// One frame of a movie as a picture, without the others: what a host shows before it renders. Used by the
// module's export.
#pragma once

#include <cstdint>
#include <span>

#include "engine/EngineResult.h"
#include "vrx/VRXOutputSetting.h"

namespace vrx::engine {

/// Writes output frame `number` as packed bottom-up 4-byte BGR, after the overlay callback has seen it if a
/// range holds it. kInvalidArgument for a frame after the end or a span that does not hold the picture's
/// width * height pixels; otherwise as a sequence fails.
Result RenderStillFrame(const VRXTimeline& timeline, const VRXSystemOutputSetting& output,
                        std::uint64_t number, std::span<std::uint32_t> pixels);

}  // namespace vrx::engine
