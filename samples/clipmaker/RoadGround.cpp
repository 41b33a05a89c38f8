#include "samples/clipmaker/RoadGround.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "samples/clipmaker/RoadColours.h"

namespace vrx::test_support {

/// What one row of pixels shows.
struct RoadGround::Strip {
  int row;
  double middle;      // pixel of the way's middle
  double scale;       // pixels of a meter across
  double fromMeters;  // of the way
  double toMeters;
  double distance;  // meters from the eye
};

namespace {

using namespace road;

constexpr double kFar = std::numeric_limits<double>::infinity();

/// From left to right of the way's middle, in meters.
struct Band {
  double left;
  double right;
  Rgb colour;
};

constexpr std::array kHillBands = {Band{-10, 10, kGrass}, Band{-4.3, 4.3, {176, 168, 142}},
                                   Band{-3.7, 3.7, kAsphalt}};
constexpr std::array kTownBands = {Band{-kFar, kFar, {140, 178, 104}}, Band{-6.6, 6.6, {190, 188, 182}},
                                   Band{-4.0, 4.0, {222, 220, 212}}, Band{-3.75, 3.75, kAsphalt}};
constexpr std::array kTunnelBands = {Band{-10, 10, kGrass}, Band{-5.3, 5.3, {150, 148, 142}},
                                     Band{-3.7, 3.7, kAsphalt}};
constexpr std::array kParkBands = {Band{-kFar, kFar, {126, 184, 88}}, Band{-1.75, 1.75, {190, 160, 116}},
                                   Band{-1.6, 1.6, {226, 202, 160}}};
constexpr std::array kShoreBands = {
    Band{-kFar, -4.2, kWater},        Band{-4.2, -3.4, {150, 150, 146}},  Band{-3.4, kFar, {132, 184, 96}},
    Band{-2.0, 2.0, {214, 208, 196}}, Band{-1.85, 1.85, {198, 190, 176}},
};
constexpr std::array<Rgb, 4> kFields = {{{136, 184, 90}, {222, 198, 110}, {108, 162, 80}, {168, 190, 96}}};

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

/// The share of a stretch on which marks lie that come once in `period`; far away they melt into a mean.
double MarkShare(double from, double to, double period, double length) {
  const auto marked = [&](double x) {
    const double whole = std::floor(x / period);
    return whole * length + std::min(x - whole * period, length);
  };
  return (marked(to) - marked(from)) / std::max(to - from, 1e-6);
}

const Rgb& FieldAt(double meters, std::uint32_t side) {
  constexpr double kFieldMeters = 85;
  const auto field = static_cast<std::int64_t>(std::floor(meters / kFieldMeters));
  return kFields[static_cast<std::size_t>(Chance(field, side) * kFields.size())];
}

}  // namespace

void RoadGround::DrawFar() {
  FlatCanvas& canvas = m_view.Canvas();
  const int top = std::max(static_cast<int>(m_view.Horizon()), 0);
  const Scenery scenery = m_plan.At(m_view.Meters()).scenery;
  const double eyeHeight = -m_view.At(m_view.Meters(), 0).up;
  for (int y = top; y < canvas.Height(); ++y) {
    const double distance = m_view.Focal() * eyeHeight / (y + 0.5 - m_view.Horizon() + 0.6);
    canvas.Row(y, 0, kFar, Hazed(scenery == Scenery::kShore ? kWater : kGrass, distance));
  }
}

void RoadGround::DrawStretch(double fromMeters, double toMeters) {
  const EyePlace nearPlace = m_view.At(fromMeters, 0);
  const EyePlace farPlace = m_view.At(toMeters, 0);
  if (!RoadView::IsAhead(nearPlace) || farPlace.ahead <= nearPlace.ahead) return;
  const CanvasPoint nearPoint = m_view.OnPicture(nearPlace);
  const CanvasPoint farPoint = m_view.OnPicture(farPlace);
  const double height = m_view.Canvas().Height();
  const auto first = static_cast<int>(std::ceil(std::clamp(farPoint.y, 0.0, height) - 0.5));
  const auto end = static_cast<int>(std::ceil(std::clamp(nearPoint.y, 0.0, height) - 0.5));
  const auto metersAt = [&](double y, double& t) {
    // On the picture, what is linear is one divided by the distance.
    t = std::clamp((nearPoint.y - y) / (nearPoint.y - farPoint.y), 0.0, 1.0);
    const double ahead = 1 / std::lerp(1 / nearPlace.ahead, 1 / farPlace.ahead, t);
    return std::lerp(fromMeters, toMeters, (ahead - nearPlace.ahead) / (farPlace.ahead - nearPlace.ahead));
  };
  for (int y = first; y < end; ++y) {
    double t = 0;
    Strip strip{.row = y};
    strip.fromMeters = metersAt(y + 1, t);
    strip.toMeters = metersAt(y, t);
    metersAt(y + 0.5, t);
    strip.middle = std::lerp(nearPoint.x, farPoint.x, t);
    strip.scale = std::lerp(m_view.Scale(nearPlace), m_view.Scale(farPlace), t);
    strip.distance = m_view.Focal() / strip.scale;
    DrawRow(strip);
  }
}

void RoadGround::DrawRow(const Strip& strip) {
  const double meters = (strip.fromMeters + strip.toMeters) / 2;
  const PlanPoint point = m_plan.At(meters);
  FlatCanvas& canvas = m_view.Canvas();
  const bool isTunnel = point.scenery == Scenery::kTunnel;
  const double stripe = 0.06 * (MarkShare(strip.fromMeters, strip.toMeters, 12, 6) - 0.5);
  const auto shade = [&](const Rgb& colour, bool isInside) {
    if (isTunnel && isInside) return Lit(colour, TunnelLight(strip.distance));
    return Hazed(MixRgb(colour, kBlack, 0.03 + stripe), strip.distance);
  };
  if (point.scenery == Scenery::kHills || isTunnel) {
    canvas.Row(strip.row, -kFar, strip.middle, shade(FieldAt(meters, 1), false));
    canvas.Row(strip.row, strip.middle, kFar, shade(FieldAt(meters, 2), false));
  }
  for (const Band& band : BandsOf(point.scenery)) {
    canvas.Row(strip.row, strip.middle + band.left * strip.scale, strip.middle + band.right * strip.scale,
               shade(band.colour, band.right < 6));
  }
  DrawLines(strip, point);
}

void RoadGround::DrawLines(const Strip& strip, const PlanPoint& point) {
  const bool isTunnel = point.scenery == Scenery::kTunnel;
  const Rgb paint = isTunnel ? Lit(kPaint, 1.6 * TunnelLight(strip.distance)) : Hazed(kPaint, strip.distance);
  const auto line = [&](double at, double half, const Rgb& colour, double opacity) {
    m_view.Canvas().Row(strip.row, strip.middle + (at - half) * strip.scale,
                        strip.middle + (at + half) * strip.scale, colour, opacity);
  };
  switch (point.scenery) {
    case Scenery::kHills:
    case Scenery::kTunnel:
      for (const double edge : {-3.45, 3.45}) line(edge, 0.08, paint, 0.95);
      line(0, 0.08, paint, 0.95 * MarkShare(strip.fromMeters, strip.toMeters, 9, 4));
      break;
    case Scenery::kTown:
      line(0, 0.08, paint, 0.95 * MarkShare(strip.fromMeters, strip.toMeters, 6, 3));
      break;
    case Scenery::kShore: {
      // Slabs across the way, and light on the water.
      const double joint = MarkShare(strip.fromMeters, strip.toMeters, 2, 0.1);
      line(0, 1.85, Hazed({160, 152, 140}, strip.distance), joint);
      for (std::int64_t i = 0; i < 14; ++i) {
        const auto wave = static_cast<std::int64_t>(std::floor(strip.fromMeters / 1.5)) * 16 + i;
        const double at = -6 - 70 * Chance(wave, 31) * Chance(wave, 32);
        line(at, 0.5 + Chance(wave, 33), kSkyLow,
             0.3 * MarkShare(strip.fromMeters, strip.toMeters, 1.5, 0.3));
      }
      break;
    }
    case Scenery::kPark:
      break;
  }
}

}  // namespace vrx::test_support
