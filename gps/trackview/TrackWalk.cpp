#include "gps/trackview/TrackWalk.h"

#include <algorithm>
#include <cmath>

#include "gps/trackview/TrackLayout.h"

namespace vrx::gps {
namespace {

using drawing::Point;

constexpr double kShownAfterEndSeconds = 3.0;

double Distance(TrackPlace a, TrackPlace b) { return std::hypot(b.x - a.x, b.y - a.y); }

/// 0 where there is nothing to divide by.
double Ratio(double part, double whole) { return whole == 0 ? 0.0 : part / whole; }

/// The start and the way gone are truncated each for itself.
Point Between(TrackPlace from, TrackPlace to, double ratio, Point origin) {
  return ToFrame({(to.x - from.x) * ratio, (to.y - from.y) * ratio}, ToFrame(from, origin));
}

/// `seconds` after `current` was reached, which is before `next` is. The speed is the same from one point to
/// the next, over the rest of the arc and the straight line.
void SplitAfter(const TrackDisplayPoint& current, const TrackDisplayPoint& next, double seconds, Point origin,
                TrackWalk& walk) {
  const TrackPlace end = next.hasArc ? next.arcStart : next.GetPlace();
  const double duration = next.index - current.index;
  walk.passed = current.linePoint + 1;
  if (!current.hasArc) {
    walk.present = Between(current.GetPlace(), end, Ratio(seconds, duration), origin);
    return;
  }
  const double toMid = Distance(current.arcStart, current.arcMid);
  const double toArcEnd = Distance(current.arcMid, current.arcEnd);
  const double toEnd = Distance(current.arcEnd, end);
  const double way = seconds * Ratio(toMid + toArcEnd + toEnd, duration);
  if (way < toMid) {
    walk.present = Between(current.arcStart, current.arcMid, Ratio(way, toMid), origin);
  } else if (way <= toMid + toArcEnd) {
    walk.passed += 1;
    walk.present = Between(current.arcMid, current.arcEnd, Ratio(way - toMid, toArcEnd), origin);
  } else {
    walk.passed += 2;
    walk.present = Between(current.arcEnd, end, Ratio(way - toMid - toArcEnd, toEnd), origin);
  }
}

}  // namespace

std::span<const Point> TrackWalk::GetPassed() const {
  return line ? std::span(*line).first(passed) : std::span<const Point>();
}

std::span<const Point> TrackWalk::GetAhead() const {
  return line ? std::span(*line).subspan(passed) : std::span<const Point>();
}

std::optional<Point> TrackWalk::GetPosition() const {
  if (!line || line->empty()) return std::nullopt;
  if (present) return present;
  return passed == 0 ? line->front() : (*line)[passed - 1];
}

TrackWalk WalkSegment(const TrackSegment& segment, Point origin, double seconds) {
  TrackWalk walk;
  if (!segment.line) return walk;
  walk.line = segment.line;
  const double fixSeconds = segment.beforeFixCount;
  const double time = seconds >= fixSeconds ? seconds - fixSeconds : 0.0;
  if (time < 1) return walk;  // in the first second nothing has been travelled
  const auto& display = segment.display;
  const auto next =
      std::upper_bound(display.begin(), display.end(), time,
                       [](double moment, const TrackDisplayPoint& point) { return moment < point.index; });
  if (next == display.end()) {
    walk.passed = walk.line->size();
    return walk;
  }
  walk.isJoined = true;
  const TrackDisplayPoint& current = *(next - 1);
  if (&current == &display.front()) {  // the position rests on the first point until the second is reached
    walk.passed = 1;
  } else {
    SplitAfter(current, *next, time - current.index, origin, walk);
  }
  return walk;
}

bool IsPositionKnown(const TrackSegment& segment, double seconds) {
  if (segment.points.empty()) return false;
  const double fixSeconds = segment.beforeFixCount;
  return fixSeconds <= seconds && seconds <= segment.points.back().index + fixSeconds + kShownAfterEndSeconds;
}

}  // namespace vrx::gps
