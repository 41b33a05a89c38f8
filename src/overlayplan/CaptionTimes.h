// Moves captions from the time of the unchanged material to the time of the movie: past slowed and fast
// stretches, and onto frames and clip ends. Used by the overlay set-up.
#pragma once

#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "overlay/document/CaptionItem.h"
#include "overlay/document/SlowInfoRecord.h"
#include "vrx/VRXTimeline.h"

namespace vrx::overlayplan {

struct CaptionTimeContext {
  VRXTimeInfo frame;  // must have a length
  std::span<const std::pair<std::int64_t, std::int64_t>> clipRanges;
  double drawStartSeconds = 0.0;
};

/// Where a caption that runs from `startMs` to `endMs` of the unchanged material is in the movie. A section
/// of speed 0 changes nothing, and a last one of negative speed counts with its absolute speed.
void ApplySpeedSections(std::span<const SlowInfoRecord> sections, CaptionItem& caption);

/// Adjusts all captions in place, in order: speed sections, gaps of up to two frames, clip ends, start of the
/// drawn span.
void PrepareCaptions(const CaptionTimeContext& context, std::span<const SlowInfoRecord> sections,
                     std::span<CaptionItem> captions);

}  // namespace vrx::overlayplan
