#include "samples/clipmaker/RoadView.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vrx::test_support {
namespace {

constexpr double kRadian = std::numbers::pi / 180;
constexpr double kHorizonHeight = 0.41;       // of the picture's height, on level ground
constexpr double kFocalWidth = 0.78;          // of the picture's width
constexpr double kMostTurned = 75 * kRadian;  // from the eye, before the way counts as turned away

}  // namespace

RoadView::RoadView(const RoutePlan& plan, double meters, const EyeOptions& eye, FlatCanvas& canvas)
    : m_canvas(canvas),
      m_meters(meters),
      m_sightMeters(eye.sightMeters),
      m_turnedAway(meters + eye.sightMeters),
      m_courseDegrees(plan.At(meters + eye.lookMeters).courseDegrees),
      m_focal(kFocalWidth * canvas.Width()),
      m_horizon(kHorizonHeight * canvas.Height()),
      m_eyeHeight(eye.height) {
  const auto count = static_cast<int>(kBehind + eye.sightMeters) + 1;
  Spot spot;
  for (int i = 0; i < count; ++i) {
    const double at = meters - kBehind + i;
    const PlanPoint point = plan.At(at + 0.5);
    spot.turned = (point.courseDegrees - m_courseDegrees) * kRadian;
    m_spots.push_back(spot);
    spot.right += std::sin(spot.turned);
    spot.ahead += std::cos(spot.turned);
    if (at > meters && std::abs(spot.turned) > kMostTurned) m_turnedAway = std::min(m_turnedAway, at);
  }
  const Spot eyeSpot = m_spots[static_cast<std::size_t>(kBehind)];
  const double right = eyeSpot.right + eye.offset * std::cos(eyeSpot.turned);
  const double ahead = eyeSpot.ahead - eye.offset * std::sin(eyeSpot.turned);
  for (Spot& each : m_spots) {
    each.right -= right;
    each.ahead -= ahead;
  }
}

EyePlace RoadView::At(double meters, double offset, double height) const {
  const auto last = static_cast<double>(m_spots.size() - 1);
  const double at = std::clamp(meters - m_meters + kBehind, 0.0, last);
  const auto before = static_cast<std::size_t>(at);
  const Spot& a = m_spots[before];
  const Spot& b = m_spots[std::min(before + 1, m_spots.size() - 1)];
  const double t = at - std::floor(at);
  const double turned = std::lerp(a.turned, b.turned, t);
  return {std::lerp(a.right, b.right, t) + offset * std::cos(turned), height - m_eyeHeight,
          std::lerp(a.ahead, b.ahead, t) - offset * std::sin(turned)};
}

CanvasPoint RoadView::OnPicture(const EyePlace& place) const {
  const double scale = Scale(place);
  return {m_canvas.Width() / 2.0 + scale * place.right, m_horizon - scale * place.up};
}

void RoadView::Face(std::span<const EyePlace> corners, const Rgb& colour, double opacity) {
  m_outline.clear();
  for (std::size_t i = 0; i < corners.size(); ++i) {
    const EyePlace& a = corners[i];
    const EyePlace& b = corners[i + 1 == corners.size() ? 0 : i + 1];
    if (IsAhead(a)) m_outline.push_back(OnPicture(a));
    if (IsAhead(a) == IsAhead(b)) continue;
    const double t = (kNear - a.ahead) / (b.ahead - a.ahead);
    m_outline.push_back(OnPicture({std::lerp(a.right, b.right, t), std::lerp(a.up, b.up, t), kNear}));
  }
  m_canvas.Polygon(m_outline, colour, opacity);
}

void RoadView::Face(const EyePlace& a, const EyePlace& b, const EyePlace& c, const EyePlace& d,
                    const Rgb& colour, double opacity) {
  const EyePlace corners[] = {a, b, c, d};
  Face(corners, colour, opacity);
}

}  // namespace vrx::test_support
