#include "src/overlay/OverlayRanges.h"

#include <algorithm>
#include <cmath>

#include "foundation/number/Saturate.h"
#include "src/overlay/CaptionTimes.h"

namespace vrx::overlay {
namespace {

constexpr double kMillisecondsPerSecond = 1000.0;

/// Turns times into frame times. All of it in doubles, as the ranges are defined.
class FrameGrid {
 public:
  explicit FrameGrid(const VRXTimeInfo& frame)
      : m_value(static_cast<double>(frame.value)), m_scale(static_cast<double>(frame.scale)) {}

  double Frames(double milliseconds) const {
    return m_scale * milliseconds / (m_value * kMillisecondsPerSecond);
  }
  double FramesOfSeconds(double seconds) const {
    return m_scale * seconds * kMillisecondsPerSecond / (m_value * kMillisecondsPerSecond);
  }
  std::int64_t TimeOf(double frames) const { return Saturate<std::int64_t>(frames * m_value); }

 private:
  double m_value;
  double m_scale;
};

/// Exact while it fits, at the limit beyond.
std::int64_t Add(std::int64_t a, std::int64_t b) {
  std::int64_t sum = 0;
  if (!__builtin_add_overflow(a, b, &sum)) return sum;
  return Saturate<std::int64_t>(static_cast<double>(a) + static_cast<double>(b));
}
std::int64_t Subtract(std::int64_t a, std::int64_t b) {
  std::int64_t difference = 0;
  if (!__builtin_sub_overflow(a, b, &difference)) return difference;
  return Saturate<std::int64_t>(static_cast<double>(a) - static_cast<double>(b));
}

}  // namespace

std::int64_t GetTotalDuration(const timeline::ClipSums& sums) {
  std::int64_t total = sums.overlayDuration;
  for (const std::int64_t duration : sums.nonOverlayDurations) total = Add(total, duration);
  return total;
}

OverlayRange ComputeTemplateRange(const MovieTimes& movie, double drawStartSeconds, double drawEndSeconds) {
  const FrameGrid grid(movie.frame);
  OverlayRange range;
  range.start = grid.TimeOf(std::ceil(grid.FramesOfSeconds(drawStartSeconds)));
  range.end = grid.TimeOf(std::floor(grid.FramesOfSeconds(drawEndSeconds)) - 1.0);
  if (range.end != movie.sums.overlayDuration && range.start == 0) {
    range.end = movie.sums.overlayDuration;
  } else if (range.start > 0 && !movie.sums.nonOverlayDurations.empty()) {
    range.start = movie.sums.nonOverlayDurations.front();
    range.end = Add(movie.sums.overlayDuration, range.start);
  }
  return range;
}

std::vector<OverlayRange> ComputeCaptionRanges(const MovieTimes& movie,
                                               std::span<const CaptionItem> captions) {
  const FrameGrid grid(movie.frame);
  const std::int64_t limit = GetTotalDuration(movie.sums);
  const auto frameValue = static_cast<std::int64_t>(movie.frame.value);
  std::vector<OverlayRange> ranges;
  for (const CaptionItem& caption : captions) {
    const std::int64_t start = grid.TimeOf(std::ceil(grid.Frames(caption.startMs)));
    if (movie.hasBaseband) {
      ranges.push_back({start, grid.TimeOf(std::floor(grid.Frames(caption.endMs)))});
      continue;
    }
    // One frame longer than the caption, which still shows at its very end.
    const std::int64_t end = std::min(grid.TimeOf(std::floor(grid.Frames(caption.endMs) + 1.0)), limit);
    const bool touches = !ranges.empty() && Subtract(start, ranges.back().end) <= frameValue;
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
  const bool hasTemplate = info.templateInfo.valid || info.tennisMetaInfo.valid;
  if ((!hasTemplate && !info.captionInfo.valid) || !movie.IsUsable()) return plan;
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

}  // namespace vrx::overlay
