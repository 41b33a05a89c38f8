#include "samples/clipmaker/RoadGround.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "samples/clipmaker/RoadColours.h"

namespace vrx::test_support {

/// One row of pixels beside the way.
struct RoadGround::Row {
  int y = 0;
  double middle = 0;  // pixel of the way's middle
  double scale = 0;   // pixels of a meter across
  double meters = 0;  // of the way
};

namespace {

using namespace road;

constexpr double kFar = std::numeric_limits<double>::infinity();
constexpr std::size_t kMostBands = 5;
constexpr double kLapShare =
    0.06;  // of their length by which parts lap, so that nothing shines through between them

/// From left to right of the way's middle, in meters.
struct Band {
  double left;
  double right;
  Rgb colour;
};

constexpr std::array kHillBands = {Band{-9, 9, kGrass}, Band{-4.3, 4.3, {176, 168, 142}},
                                   Band{-3.7, 3.7, kAsphalt}, Band{-3.53, -3.37, kPaint},
                                   Band{3.37, 3.53, kPaint}};
constexpr std::array kTownBands = {Band{-6.6, 6.6, {190, 188, 182}}, Band{-4.0, 4.0, {222, 220, 212}},
                                   Band{-3.75, 3.75, kAsphalt}};
constexpr std::array kTunnelBands = {Band{-5.3, 5.3, {150, 148, 142}}, Band{-3.7, 3.7, kAsphalt},
                                     Band{-3.53, -3.37, kPaint}, Band{3.37, 3.53, kPaint}};
constexpr std::array kParkBands = {Band{-1.75, 1.75, {190, 160, 116}}, Band{-1.6, 1.6, {226, 202, 160}}};
constexpr std::array kShoreBands = {Band{-4.2, 4.2, {150, 150, 146}}, Band{-3.4, 25, {132, 184, 96}},
                                    Band{-2.0, 2.0, {220, 214, 202}}, Band{-1.85, 1.85, {198, 190, 176}}};
constexpr std::array<Rgb, 4> kFields = {{{136, 184, 90}, {222, 198, 110}, {108, 162, 80}, {168, 190, 96}}};
constexpr Rgb kTownGrass = {140, 178, 104};
constexpr Rgb kParkGrass = {126, 184, 88};

/// Marks that come again and again along the way.
struct Mark {
  double period;
  double length;
  double halfWidth;
  Rgb colour;
};

std::span<const Band> BandsOf(Scenery scenery) {
  switch (scenery) {
    case Scenery::kHills:
      return kHillBands;
    case Scenery::kTown:
      return kTownBands;
    case Scenery::kTunnel:
      return kTunnelBands;
    case Scenery::kPark:
      return kParkBands;
    case Scenery::kShore:
      break;
  }
  return kShoreBands;
}

Mark MarkOf(Scenery scenery) {
  switch (scenery) {
    case Scenery::kHills:
    case Scenery::kTunnel:
      return {9, 4, 0.08, kPaint};
    case Scenery::kTown:
      return {6, 3, 0.08, kPaint};
    case Scenery::kPark:
      return {8, 4, 1.6, {220, 194, 150}};
    case Scenery::kShore:
      break;
  }
  return {2, 0.08, 1.85, {164, 156, 144}};  // joints between slabs
}

const Rgb& FieldAt(double meters, std::uint32_t side) {
  constexpr double kFieldMeters = 85;
  const auto field = static_cast<std::int64_t>(std::floor(meters / kFieldMeters));
  return kFields[static_cast<std::size_t>(Chance(field, side) * kFields.size())];
}

}  // namespace

void RoadGround::Draw() {
  DrawFar();
  const std::vector<Stretch> stretches = Stretches();
  for (const Stretch& stretch : stretches) {
    if (stretch.fromMeters < m_view.TurnedAway()) DrawSides(stretch);
  }
  // Layer by layer, since at the seam of two stretches a lower band would show through the upper one.
  for (std::size_t layer = 0; layer < kMostBands; ++layer) {
    for (const Stretch& stretch : stretches) DrawWay(stretch, layer);
  }
  DrawMarks();
}

std::vector<RoadGround::Stretch> RoadGround::Stretches() const {
  // They end at places of the way, longer ones far away, so that nothing flickers while the eye moves.
  std::vector<Stretch> stretches;
  double to = m_view.SightEnd();
  while (to > m_view.Meters() - 2) {
    const double away = to - m_view.Meters();
    const double length = away > 120 ? 8 : away > 40 ? 4 : away > 12 ? 2 : 1;
    double from = (std::ceil(to / length) - 1) * length;
    if (to > m_view.TurnedAway()) from = std::max(from, m_view.TurnedAway());
    stretches.push_back({from, to});
    to = from;
  }
  return stretches;
}

void RoadGround::DrawFar() {
  FlatCanvas& canvas = m_view.Canvas();
  const Scenery scenery = m_plan.At(m_view.Meters()).scenery;
  const Rgb& colour = scenery == Scenery::kShore ? kWater : scenery == Scenery::kPark ? kParkGrass : kGrass;
  const double eyeHeight = -m_view.At(m_view.Meters(), 0).up;
  for (int y = std::max(static_cast<int>(m_view.Horizon()), 0); y < canvas.Height(); ++y) {
    const double below = std::max(y + 0.5 - m_view.Horizon(), 0.5);
    canvas.Row(y, 0, kFar, Hazed(colour, m_view.Focal() * eyeHeight / below));
  }
}

void RoadGround::DrawSides(const Stretch& stretch) {
  const EyePlace nearPlace = m_view.At(stretch.fromMeters, 0);
  const EyePlace farPlace = m_view.At(stretch.toMeters, 0);
  if (!RoadView::IsAhead(nearPlace) || farPlace.ahead <= nearPlace.ahead) return;
  const CanvasPoint nearPoint = m_view.OnPicture(nearPlace);
  const CanvasPoint farPoint = m_view.OnPicture(farPlace);
  const double height = m_view.Canvas().Height();
  const auto first = static_cast<int>(std::ceil(std::clamp(farPoint.y, 0.0, height) - 0.5));
  const auto end = static_cast<int>(std::ceil(std::clamp(nearPoint.y, 0.0, height) - 0.5));
  for (int y = first; y < end; ++y) {
    // On the picture, what is linear is one divided by the distance.
    const double t = (nearPoint.y - y - 0.5) / (nearPoint.y - farPoint.y);
    const double ahead = 1 / std::lerp(1 / nearPlace.ahead, 1 / farPlace.ahead, t);
    const double share = (ahead - nearPlace.ahead) / (farPlace.ahead - nearPlace.ahead);
    DrawSideRow({.y = y,
                 .middle = std::lerp(nearPoint.x, farPoint.x, t),
                 .scale = m_view.Focal() / ahead,
                 .meters = std::lerp(stretch.fromMeters, stretch.toMeters, share)});
  }
}

void RoadGround::DrawSideRow(const Row& row) {
  const auto sides = [&](const Rgb& left, const Rgb& right) {
    m_view.Canvas().Row(row.y, -kFar, row.middle, Shade(left, row.meters));
    m_view.Canvas().Row(row.y, row.middle, kFar, Shade(right, row.meters));
  };
  switch (m_plan.At(row.meters).scenery) {
    case Scenery::kHills:
    case Scenery::kTunnel:
      return sides(FieldAt(row.meters, 1), FieldAt(row.meters, 2));
    case Scenery::kTown:
      return sides(kTownGrass, kTownGrass);
    case Scenery::kPark:
      return sides(kParkGrass, kParkGrass);
    case Scenery::kShore:
      break;
  }
  sides(kWater, kShoreBands[1].colour);
  const double distance = m_view.Focal() / row.scale;
  for (std::int64_t i = 0; i < 12; ++i) {
    const std::int64_t wave = static_cast<std::int64_t>(std::floor(row.meters * 3)) * 16 + i;
    if (Chance(wave, 34) > 0.3) continue;
    const double at = row.middle - (7 + 80 * Chance(wave, 31) * Chance(wave, 32)) * row.scale;
    m_view.Canvas().Row(row.y, at, at + (0.6 + Chance(wave, 33)) * row.scale, kSkyLow,
                        0.4 / (1 + distance / 20));
  }
}

Rgb RoadGround::Shade(const Rgb& colour, double meters) const {
  constexpr double kStripe = 8;
  const bool isStripe = std::fmod(meters, 2 * kStripe) < kStripe;
  return Hazed(MixRgb(colour, kBlack, isStripe ? 0.02 : 0.055), std::max(meters - m_view.Meters(), 0.0));
}

void RoadGround::DrawPart(const Stretch& stretch, double left, double right, const Rgb& colour) {
  const double to = stretch.toMeters + kLapShare * (stretch.toMeters - stretch.fromMeters);
  m_view.Face(m_view.At(stretch.fromMeters, left), m_view.At(to, left), m_view.At(to, right),
              m_view.At(stretch.fromMeters, right), colour);
}

void RoadGround::DrawWay(const Stretch& stretch, std::size_t layer) {
  // From the middle on, so that the change lies within one stretch of the places where sections meet.
  const Scenery scenery = m_plan.At((stretch.fromMeters + stretch.toMeters) / 2).scenery;
  const std::span<const Band> bands = BandsOf(scenery);
  if (layer >= bands.size()) return;
  const Band& band = bands[layer];
  const double distance = std::max(stretch.fromMeters - m_view.Meters(), 0.0);
  const Rgb colour = scenery == Scenery::kTunnel ? Lit(band.colour, TunnelLight(distance))
                     : band.right > 5            ? Shade(band.colour, stretch.fromMeters)
                                                 : Hazed(band.colour, distance);
  DrawPart(stretch, band.left, band.right, colour);
}

void RoadGround::DrawMarks() {
  constexpr double kMostPixels = 4;  // to a meter; marks farther away are too small to be seen
  const Mark mark = MarkOf(m_plan.At(m_view.Meters()).scenery);
  const double sight = std::min(m_view.SightEnd(), m_view.Meters() + m_view.Focal() / kMostPixels);
  double at = std::floor((m_view.Meters() - mark.length) / mark.period) * mark.period;
  for (; at < sight; at += mark.period) {
    const Scenery scenery = m_plan.At(at).scenery;
    const double distance = std::max(at - m_view.Meters(), 0.0);
    const Rgb colour = scenery == Scenery::kTunnel
                           ? Lit(mark.colour, std::min(1.5 * TunnelLight(distance), 1.0))
                           : Hazed(mark.colour, distance);
    DrawPart({at, at + mark.length}, -mark.halfWidth, mark.halfWidth, colour);
  }
}

}  // namespace vrx::test_support
