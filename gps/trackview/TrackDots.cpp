#include "gps/trackview/TrackDots.h"

#include <algorithm>
#include <cmath>

#include "foundation/number/Saturate.h"

namespace vrx::gps {
namespace {

constexpr double kUnitsPerWidth = 380.0;  // sizes are given for a view of this width
constexpr double kNoTimeSeconds = 0.03;   // a gap up to this length is passed at once
constexpr double kMostDots = 4096;        // no view is so large; bounds the work on one of odd shape

std::int32_t ScaledSize(double units, double scale, std::int32_t least) {
  return std::max(least, Saturate<std::int32_t>(units * scale));
}

drawing::Rect Around(double x, double y, std::int32_t size) {
  const double reach = size * 0.5 + 1;
  return {Saturate<std::int32_t>(x - reach), Saturate<std::int32_t>(y - reach),
          Saturate<std::int32_t>(x + reach), Saturate<std::int32_t>(y + reach)};
}

}  // namespace

void MakeGapDots(const TrackDisplayPoint& from, const TrackDisplayPoint& to, const drawing::Rect& rect,
                 const TrackGap& gap, std::vector<TrackDot>& dots) {
  dots.clear();
  const double scale = static_cast<double>(rect.Width()) / kUnitsPerWidth;
  const std::int32_t shadowSize = ScaledSize(10, scale, 3), dotSize = ScaledSize(6, scale, 1);
  const std::int32_t spacing = ScaledSize(4, scale, 1);
  const double dx = static_cast<double>(to.x) - from.x, dy = static_cast<double>(to.y) - from.y;
  const double length = std::sqrt(dx * dx + dy * dy);
  const double pitch = static_cast<double>(shadowSize) + spacing;
  if (length < pitch) return;
  const double count = std::min(std::trunc(length / pitch), kMostDots);
  const double span = gap.end - gap.start;
  const double reached = span > 0 ? std::trunc(count * (gap.now - gap.start) / span) : 0.0;
  const bool isPassedAtOnce = span <= kNoTimeSeconds && gap.end <= gap.now;
  const double slack = length - shadowSize * count - (count - 1) * spacing;
  const double offset = (slack + spacing) / 2;
  double x = static_cast<double>(rect.left) + from.x + dx * offset / length;
  double y = static_cast<double>(rect.top) + from.y + dy * offset / length;
  for (double i = 0; i < count; ++i) {
    dots.push_back({Around(x, y, shadowSize), Around(x, y, dotSize), i < reached || isPassedAtOnce});
    x += dx * pitch / length;
    y += dy * pitch / length;
  }
}

}  // namespace vrx::gps
