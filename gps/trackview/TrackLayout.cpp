#include "gps/trackview/TrackLayout.h"

#include <algorithm>
#include <cmath>

#include "foundation/number/Saturate.h"

namespace vrx::gps {
namespace {

// Squares of lengths in pixels.
constexpr double kShortestLeg = 25.0;
constexpr double kLongestArcLeg = 900.0;

TrackPlace operator+(TrackPlace a, TrackPlace b) { return {a.x + b.x, a.y + b.y}; }
TrackPlace operator-(TrackPlace a, TrackPlace b) { return {a.x - b.x, a.y - b.y}; }
TrackPlace operator*(TrackPlace a, double factor) { return {a.x * factor, a.y * factor}; }
TrackPlace operator/(TrackPlace a, double divisor) { return {a.x / divisor, a.y / divisor}; }
double Dot(TrackPlace a, TrackPlace b) { return a.x * b.x + a.y * b.y; }
double Cross(TrackPlace a, TrackPlace b) { return a.x * b.y - b.x * a.y; }
double Length(TrackPlace a) { return std::hypot(a.x, a.y); }

std::int32_t Stretch(std::int32_t canvasUnits, std::int32_t pixels) {
  return drawing::Saturated(std::int64_t{canvasUnits} * pixels / kTrackCanvasSize);
}

}  // namespace

void LayoutSegment(drawing::Size view, TrackSegment& segment) {
  segment.display.clear();
  segment.display.reserve(segment.points.size());
  for (const TrackPoint& point : segment.points) {
    TrackDisplayPoint& shown = segment.display.emplace_back();
    shown.x = Stretch(point.x, view.width);
    shown.y = Stretch(point.y, view.height);
    shown.index = point.index;
  }
}

void RoundCorners(TrackSegment& segment) {
  std::vector<TrackDisplayPoint>& display = segment.display;
  for (std::size_t i = 1; i + 1 < display.size(); ++i)
    RoundCorner(display[i - 1], display[i], display[i + 1]);
}

void RoundCorner(const TrackDisplayPoint& before, TrackDisplayPoint& corner, const TrackDisplayPoint& after) {
  const TrackPlace place = corner.GetPlace();
  const TrackPlace in = place - before.GetPlace(), out = after.GetPlace() - place;
  corner.hasArc = false;
  const double turn = Cross(in, out);
  if (std::abs(turn) < 1) return;
  const double inSquare = Dot(in, in), outSquare = Dot(out, out);
  double leg = std::min(inSquare, outSquare);
  if (leg < kShortestLeg) return;
  leg = std::min(leg, kLongestArcLeg);
  corner.arcStart = place - in / std::sqrt(inSquare / leg) * 0.5;
  corner.arcEnd = place + out / std::sqrt(outSquare / leg) * 0.5;
  // The centre lies at right angles to both legs: it has the same projection on each as that end of the arc.
  const double onIn = Dot(corner.arcStart, in), onOut = Dot(corner.arcEnd, out);
  const TrackPlace centre = TrackPlace{onIn * out.y - onOut * in.y, onOut * in.x - onIn * out.x} / turn;
  const TrackPlace toCorner = place - centre;
  const double distance = Length(toCorner);
  if (!(distance > 0)) return;
  corner.arcMid = centre + toCorner * Length(centre - corner.arcStart) / distance;
  corner.hasArc = true;
}

void MakeLine(drawing::Point origin, TrackSegment& segment) {
  segment.line.reset();
  if (segment.display.empty()) return;
  const auto line = std::make_shared<TrackLine>();
  for (TrackDisplayPoint& point : segment.display) {
    point.linePoint = line->size();
    if (point.hasArc) {
      line->push_back(ToFrame(point.arcStart, origin));
      line->push_back(ToFrame(point.arcMid, origin));
      line->push_back(ToFrame(point.arcEnd, origin));
    } else {
      line->push_back(ToFrame(point.GetPlace(), origin));
    }
  }
  segment.line = line;
}

drawing::Point ToFrame(TrackPlace place, drawing::Point origin) {
  return {drawing::Saturated(Saturate<std::int32_t>(place.x) + std::int64_t{origin.x}),
          drawing::Saturated(Saturate<std::int32_t>(place.y) + std::int64_t{origin.y})};
}

}  // namespace vrx::gps
