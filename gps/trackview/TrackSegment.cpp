#include "gps/trackview/TrackSegment.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "drawing/Geometry.h"
#include "foundation/number/Saturate.h"

namespace vrx::gps {
namespace {

constexpr double kRouteSize = 800.0;         // canvas units; the longer side of the bounds
constexpr std::int64_t kThinningSteps = 80;  // that the extent of a route is divided into

/// One direction of the way from arc-seconds to canvas units.
class CanvasAxis {
 public:
  CanvasAxis(double start, double span, double size)
      : m_start(start), m_span(span), m_size(std::trunc(size)), m_shift(HalfOf(size - kTrackCanvasSize)) {}

  /// Also remembers the extent of what was mapped.
  std::int32_t Map(double arcSeconds) {
    const std::int32_t place = Place(arcSeconds);
    m_greatest = std::max(m_greatest, place);
    m_smallest = std::min(m_smallest, place);
    return place;
  }
  /// How far the next position that is kept lies away; 0 in a route that is too small for steps.
  std::int64_t GetStep() const { return (std::int64_t{m_greatest} - m_smallest) / kThinningSteps; }

 private:
  static std::int32_t HalfOf(double margin) { return Saturate<std::int32_t>(margin) / 2; }

  std::int32_t Place(double arcSeconds) const {
    const double place = m_size * std::abs(arcSeconds - m_start) / m_span;
    // Also where there is no extent to divide by.
    if (!std::isfinite(place)) return kTrackCanvasSize / 2;
    return drawing::Saturated(std::int64_t{Saturate<std::int32_t>(place)} - m_shift);
  }

  double m_start;
  double m_span;
  double m_size;
  std::int32_t m_shift;
  std::int32_t m_greatest = 0;
  std::int32_t m_smallest = std::numeric_limits<std::int32_t>::max();
};

bool IsShown(const KVUGPSInfo& position) {
  return position.status != 0 || (position.kind != GPSPointBeforeFix && position.kind != GPSPointAfterFix);
}

std::int64_t Distance(std::int32_t a, std::int32_t b) { return std::abs(std::int64_t{a} - b); }

}  // namespace

TrackSegment MakeTrackSegment(const KVUGPSInfoList& list, const KVSGPSBounds& bounds, double startSeconds,
                              double endSeconds, bool keepLast) {
  double width = kRouteSize, height = kRouteSize;
  if (bounds.width != 0 && bounds.height != 0) {
    if (bounds.width / bounds.height <= 1) {
      width = bounds.width * kRouteSize / bounds.height;
    } else {
      height = bounds.height * kRouteSize / bounds.width;
    }
  }
  TrackSegment segment;
  segment.startTime = startSeconds;
  segment.endTime = endSeconds;
  CanvasAxis across(bounds.left, bounds.width, width), down(bounds.top, bounds.height, height);
  std::vector<TrackPoint> mapped;
  for (const KVUGPSInfo& position : list) {
    if (position.status == 0 && position.kind == GPSPointBeforeFix) ++segment.beforeFixCount;
    if (!IsShown(position)) continue;
    mapped.push_back({across.Map(position.longitude), down.Map(position.latitude),
                      static_cast<std::uint32_t>(mapped.size())});
  }
  const std::int64_t stepX = across.GetStep(), stepY = down.GetStep();
  for (const TrackPoint& point : mapped) {
    const bool isLast = &point == &mapped.back();
    if (segment.points.empty() || (keepLast && isLast) ||
        Distance(point.x, segment.points.back().x) >= stepX ||
        Distance(point.y, segment.points.back().y) >= stepY) {
      segment.points.push_back(point);
    }
  }
  return segment;
}

}  // namespace vrx::gps
