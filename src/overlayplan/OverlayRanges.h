// Which parts of a movie pass through the overlay callback, and when in the movie each caption shows. Pure
// functions over records; the manager and the checker call them.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "overlay/document/CaptionItem.h"
#include "overlay/document/PainterInfo.h"
#include "overlay/document/SlowInfoRecord.h"
#include "src/timeline/TimelineBuilder.h"

namespace vrx::overlayplan {

/// What of the project decides about ranges. `frame` is the length of a frame; one without a length gives no
/// ranges and leaves captions at their times.
struct MovieTimes {
  VRXTimeInfo frame;
  timeline::ClipSums sums;
  bool hasBaseband = false;

  bool IsUsable() const { return timeline::FrameClock(frame).IsUsable(); }
};

/// Both ends included, in units of 1 / scale seconds; the end may lie before the start.
struct OverlayRange {
  std::int64_t start = 0;
  std::int64_t end = 0;
  friend bool operator==(const OverlayRange&, const OverlayRange&) = default;
};

/// Sum of all file clips of the movie, in the units of a range.
std::int64_t GetTotalDuration(const timeline::ClipSums& sums);

/// The one range of GPS and tennis overlays.
OverlayRange ComputeTemplateRange(const MovieTimes& movie, double drawStartSeconds, double drawEndSeconds);

/// The ranges of captions whose times PrepareCaptions has adjusted, merged where they touch.
std::vector<OverlayRange> ComputeCaptionRanges(const MovieTimes& movie,
                                               std::span<const CaptionItem> captions);

/// All that the set-up of a render's overlays decides.
struct OverlayPlan {
  std::vector<SlowInfoRecord> speedSections;
  std::vector<CaptionItem> captions;  // in the movie's time
  std::vector<OverlayRange> ranges;
  bool isWanted = false;  // a record is valid: the callback is set, though there may be no range
};
OverlayPlan PlanOverlays(const MovieTimes& movie, const PainterInfo& info);

}  // namespace vrx::overlayplan
