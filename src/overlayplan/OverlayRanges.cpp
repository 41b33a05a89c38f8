#include "src/overlayplan/OverlayRanges.h"

#include <algorithm>
#include <cmath>

#include "foundation/number/Saturate.h"
#include "src/overlayplan/CaptionTimes.h"
#include "src/overlayplan/PainterTable.h"

namespace vrx::overlayplan {
std::int64_t GetTotalDuration(const timeline::ClipSums& sums) {
  std::int64_t total = sums.overlayDuration;
  for (const std::int64_t duration : sums.nonOverlayDurations) total = SaturatedAdd(total, duration);
  return total;
}

OverlayRange ComputeTemplateRange(const MovieTimes& movie, double drawStartSeconds, double drawEndSeconds) {
  const timeline::FrameClock clock(movie.frame);
  OverlayRange range;
  range.start = clock.TimeOf(std::ceil(clock.FramesInSeconds(drawStartSeconds)));
  range.end = clock.TimeOf(std::floor(clock.FramesInSeconds(drawEndSeconds)) - 1.0);
  if (range.end != movie.sums.overlayDuration && range.start == 0) {
    range.end = movie.sums.overlayDuration;
  } else if (range.start > 0 && !movie.sums.nonOverlayDurations.empty()) {
    range.start = movie.sums.nonOverlayDurations.front();
    range.end = SaturatedAdd(movie.sums.overlayDuration, range.start);
  }
  return range;
}

std::vector<OverlayRange> ComputeCaptionRanges(const MovieTimes& movie,
                                               std::span<const CaptionItem> captions) {
  const timeline::FrameClock clock(movie.frame);
  const std::int64_t limit = GetTotalDuration(movie.sums);
  std::vector<OverlayRange> ranges;
  for (const CaptionItem& caption : captions) {
    const std::int64_t start = clock.TimeOf(std::ceil(clock.FramesIn(caption.startMs)));
    if (movie.hasBaseband) {
      ranges.push_back({start, clock.TimeOf(std::floor(clock.FramesIn(caption.endMs)))});
      continue;
    }
    // One frame longer than the caption, which still shows at its very end.
    const std::int64_t end = std::min(clock.TimeOf(std::floor(clock.FramesIn(caption.endMs) + 1.0)), limit);
    const bool touches =
        !ranges.empty() && SaturatedSubtract(start, ranges.back().end) <= clock.GetFrameValue();
    if (touches) {
      ranges.back().end = end;
    } else {
      ranges.push_back({start, end});
    }
  }
  return ranges;
}

OverlayPlan PlanOverlays(const MovieTimes& movie, const PainterInfo& info) {
  OverlayPlan plan;
  const auto wants = [&](overlay::PainterRange range) {
    const overlay::PainterKinds kinds = GetPainterKinds();
    return std::any_of(kinds.begin(), kinds.end(), [&](const overlay::PainterKind& kind) {
      return kind.range == range && kind.IsWanted(info);
    });
  };
  const bool hasTemplate = wants(overlay::PainterRange::Template);
  if ((!hasTemplate && !wants(overlay::PainterRange::Captions)) || !movie.IsUsable()) return plan;
  plan.isWanted = true;
  ParseSlowInfoData(info.slowInfoData, plan.speedSections);
  ParseCaptionString(info.captionInfo.captionString, plan.captions);
  PrepareCaptions({movie.frame, movie.sums.clipRanges, info.templateInfo.drawStartTime}, plan.speedSections,
                  plan.captions);
  if (hasTemplate) {
    plan.ranges = {
        ComputeTemplateRange(movie, info.templateInfo.drawStartTime, info.templateInfo.drawEndTime)};
  } else {
    plan.ranges = ComputeCaptionRanges(movie, plan.captions);
  }
  return plan;
}

}  // namespace vrx::overlayplan
