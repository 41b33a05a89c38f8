#include "gps/trackview/TrackWalk.h"

#include <cmath>

#include "foundation/number/Saturate.h"

namespace vrx::gps {
namespace {

using drawing::Point;

constexpr double kShownAfterEndSeconds = 3.0;

double Distance(TrackPlace a, TrackPlace b) { return std::hypot(b.x - a.x, b.y - a.y); }

/// 0 where there is nothing to divide by.
double Ratio(double part, double whole) { return whole == 0 ? 0.0 : part / whole; }

/// The walk over the display points of one segment, which is at `time` seconds after the first fix.
class Walker {
 public:
  Walker(const TrackSegment& segment, Point origin, double time, TrackWalk& walk)
      : m_points(segment.display), m_origin(origin), m_time(time), m_walk(walk) {}

  void Run() {
    if (m_points.empty()) return;
    const TrackPlace start = m_points.front().GetPlace();
    if (Saturate<std::int64_t>(m_time) == 0) {
      Meet(start);
    } else {
      Walk(start);
    }
    for (std::size_t i = 1; i < m_points.size(); ++i) {
      if (m_points[i].index <= m_time) {
        PassPoint(i);
      } else {
        ApproachPoint(i);
      }
    }
  }

 private:
  void PassPoint(std::size_t i) {
    const TrackDisplayPoint &previous = m_points[i - 1], &current = m_points[i];
    const bool isPresent = i + 1 < m_points.size() && m_points[i + 1].index > m_time;
    if (previous.hasArc) Walk(previous.arcEnd);
    if (current.hasArc) {
      Walk(current.arcStart);
      if (isPresent) {
        LeaveCorner(current, m_points[i + 1]);
      } else {
        Walk(current.arcMid);
      }
    } else {
      Walk(current.GetPlace());
      if (isPresent) {
        const TrackDisplayPoint& next = m_points[i + 1];
        WalkBetween(current.GetPlace(), EndOfLeg(next), m_time - current.index, next.index - current.index);
      }
    }
  }

  /// The position lies on the second part of the line between two points, which begins on the first one's
  /// arc.
  void LeaveCorner(const TrackDisplayPoint& corner, const TrackDisplayPoint& next) {
    const double toMid = Distance(corner.arcStart, corner.arcMid);
    const double toEnd = Distance(corner.arcMid, corner.arcEnd);
    const double toNext = Distance(corner.arcEnd, EndOfLeg(next));
    const double speed = Ratio(toMid + toEnd + toNext, next.index - corner.index);
    const double way = (m_time - corner.index) * speed;
    if (way < toMid) {
      WalkBetween(corner.arcStart, corner.arcMid, way, toMid);
      m_isMidPending = true;
      return;
    }
    Walk(corner.arcMid);
    if (way <= toMid + toEnd) {
      WalkBetween(corner.arcMid, corner.arcEnd, way - toMid, toEnd);
      return;
    }
    Walk(corner.arcEnd);
    WalkBetween(corner.arcEnd, EndOfLeg(next), way - toMid - toEnd, toNext);
    m_isEndPending = false;
  }

  void ApproachPoint(std::size_t i) {
    const TrackDisplayPoint &previous = m_points[i - 1], &current = m_points[i];
    if (previous.hasArc) {
      if (m_isMidPending) Meet(previous.arcMid);
      if (m_isEndPending) Meet(previous.arcEnd);
    }
    m_isMidPending = false;
    m_isEndPending = true;
    if (current.hasArc) {
      Meet(current.arcStart);
      Meet(current.arcMid);
    } else {
      Meet(current.GetPlace());
    }
  }

  static TrackPlace EndOfLeg(const TrackDisplayPoint& next) {
    return next.hasArc ? next.arcStart : next.GetPlace();
  }
  Point ToFrame(std::int64_t x, std::int64_t y) const {
    return {drawing::Saturated(x + m_origin.x), drawing::Saturated(y + m_origin.y)};
  }
  Point ToFrame(TrackPlace place) const {
    return ToFrame(Saturate<std::int32_t>(place.x), Saturate<std::int32_t>(place.y));
  }
  void Walk(TrackPlace place) { m_walk.walked.push_back(ToFrame(place)); }
  void Meet(TrackPlace place) { m_walk.ahead.push_back(ToFrame(place)); }
  /// The start and the way gone are truncated each for itself.
  void WalkBetween(TrackPlace from, TrackPlace to, double part, double whole) {
    const double ratio = Ratio(part, whole);
    m_walk.walked.push_back(ToFrame(
        std::int64_t{Saturate<std::int32_t>(from.x)} + Saturate<std::int32_t>((to.x - from.x) * ratio),
        std::int64_t{Saturate<std::int32_t>(from.y)} + Saturate<std::int32_t>((to.y - from.y) * ratio)));
  }

  const std::vector<TrackDisplayPoint>& m_points;
  Point m_origin;
  double m_time;
  TrackWalk& m_walk;
  bool m_isMidPending = false;  // the middle of the arc behind the position lies ahead
  bool m_isEndPending = true;   // and so does its end
};

}  // namespace

void TrackWalk::Clear() {
  walked.clear();
  ahead.clear();
  isJoined = false;
}

std::optional<Point> WalkSegment(const TrackSegment& segment, Point origin, double seconds, TrackWalk& walk) {
  walk.Clear();
  const double fixSeconds = segment.beforeFixCount;
  Walker(segment, origin, seconds < fixSeconds ? 0.0 : seconds - fixSeconds, walk).Run();
  walk.isJoined = !walk.walked.empty() && !walk.ahead.empty() && seconds != 0;
  if (segment.points.empty() || !(fixSeconds <= seconds) ||
      !(seconds <= segment.points.back().index + fixSeconds + kShownAfterEndSeconds)) {
    return std::nullopt;
  }
  if (!walk.walked.empty()) return walk.walked.back();
  if (!walk.ahead.empty()) return walk.ahead.front();
  return std::nullopt;
}

}  // namespace vrx::gps
