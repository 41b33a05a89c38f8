#include "samples/clipmaker/RoadScene.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "samples/clipmaker/RoadColours.h"
#include "samples/clipmaker/RoadGround.h"
#include "samples/clipmaker/RoadProps.h"
#include "samples/clipmaker/RoadTunnel.h"

namespace vrx::test_support {
namespace {

using namespace road;

constexpr double kRadian = std::numbers::pi / 180;

/// A chain of hills all around: its height in pixels of something as wide as it is far, by the azimuth.
struct Ridge {
  double base;
  double relief;
  std::array<int, 3> waves;  // of a whole turn
  Rgb colour;
};

constexpr std::array kRidges = {Ridge{0.085, 0.05, {7, 17, 41}, {150, 178, 208}},
                                Ridge{0.05, 0.032, {9, 23, 67}, {124, 164, 168}},
                                Ridge{0.018, 0.016, {13, 37, 151}, {104, 152, 112}}};

void DrawSky(FlatCanvas& canvas, double horizon) {
  for (int y = 0; y < std::min(static_cast<int>(horizon) + 1, canvas.Height()); ++y) {
    const double share = std::clamp(y / std::max(horizon, 1.0), 0.0, 1.0);
    canvas.Row(y, 0, canvas.Width(), MixRgb(kSkyTop, kSkyLow, std::pow(share, 0.8)));
  }
}

/// Where on the picture something lies that is infinitely far; out of the picture when it is behind.
double ColumnOf(double azimuth, const RoadView& view, double width) {
  const double turned = std::remainder(azimuth - view.CourseDegrees(), 360);
  if (std::abs(turned) > 75) return -10 * width;
  return width / 2 + view.Focal() * std::tan(turned * kRadian);
}

void DrawClouds(RoadView& view, double seconds) {
  constexpr int kClouds = 13;
  FlatCanvas& canvas = view.Canvas();
  for (int i = 0; i < kClouds; ++i) {
    const double azimuth = 360.0 * (i + 0.5 * Chance(i, 61)) / kClouds + 0.05 * seconds;
    const double x = ColumnOf(azimuth, view, canvas.Width());
    const double y = view.Horizon() - view.Focal() * (0.13 + 0.12 * Chance(i, 62));
    const double size = view.Focal() * (0.045 + 0.04 * Chance(i, 63));
    const auto puff = [&](double right, double up, double radius) {
      canvas.Ellipse({x + right * size, y - up * size}, radius * size * 1.25, radius * size * 0.62, kCloud,
                     0.9);
    };
    puff(-1.0, 0, 0.55);
    puff(1.1, 0.02, 0.5);
    puff(-0.3, 0.22, 0.8);
    puff(0.5, 0.15, 0.65);
    puff(0.05, -0.12, 0.9);
  }
}

}  // namespace

RoadScene::RoadScene(RouteKind kind, int seconds)
    : m_kind(kind), m_route({.kind = kind, .times = {.seconds = seconds}}) {}

EyeOptions RoadScene::EyeAt(double meters) const {
  switch (m_kind) {
    case RouteKind::kDrive:
      return {.height = 1.45, .offset = 1.8, .lookMeters = 9, .sightMeters = 450};
    case RouteKind::kRun:  // bobs with the steps, of which one takes 1.1 m
      return {.height = 1.65 + 0.03 * std::sin(meters / 1.1 * 2 * std::numbers::pi),
              .offset = 0.3,
              .lookMeters = 3.5,
              .sightMeters = 170};
    case RouteKind::kWalk:
      break;
  }
  return {.height = 1.65 + 0.012 * std::sin(meters / 0.75 * 2 * std::numbers::pi),
          .offset = 0.4,
          .lookMeters = 2.5,
          .sightMeters = 100};
}

void RoadScene::Draw(double seconds, RgbImage& image) const {
  FlatCanvas canvas(image);
  const double meters = m_route.MetersAt(seconds);
  RoadView view(m_route.Plan(), meters, EyeAt(meters), canvas);
  DrawSky(canvas, view.Horizon());
  DrawClouds(view, seconds);
  DrawRidges(view);
  DrawWay(seconds, view);
  if (m_kind == RouteKind::kDrive) DrawBonnet(view);
}

void RoadScene::DrawRidges(RoadView& view) const {
  constexpr double kStep = 4;  // pixels
  const double width = view.Canvas().Width();
  std::vector<CanvasPoint> outline;
  for (const Ridge& ridge : kRidges) {
    outline.assign({{width + kStep, view.Horizon() + 1}, {-kStep, view.Horizon() + 1}});
    for (double x = -kStep; x <= width + kStep; x += kStep) {
      const double azimuth = view.CourseDegrees() * kRadian + std::atan((x - width / 2) / view.Focal());
      double wave = 0;
      for (std::size_t i = 0; i < ridge.waves.size(); ++i)
        wave += std::sin(ridge.waves[i] * azimuth + 2.0 * static_cast<double>(i)) /
                (1.0 + 1.6 * static_cast<double>(i));
      outline.push_back({x, view.Horizon() - view.Focal() * (ridge.base + ridge.relief * wave / 2)});
    }
    view.Canvas().Polygon(outline, ridge.colour);
  }
}

void RoadScene::DrawWay(double seconds, RoadView& view) const {
  constexpr double kBehind = 18;  // what begins behind the eye may reach into the picture
  RoadGround ground(m_route.Plan(), view);
  RoadTunnel tunnel(m_route.Plan().TunnelFrom(view.Meters() - kBehind), view);
  RoadProps props(m_route, seconds, view);
  RoadThings things;
  ground.Draw();
  tunnel.AddStretch(view.Meters() - kBehind, view.SightEnd(), things);
  props.AddStretch(view.Meters() - kBehind, view.SightEnd(), things);
  things.DrawAll();
}

void RoadScene::DrawBonnet(RoadView& view) const {
  FlatCanvas& canvas = view.Canvas();
  const double width = canvas.Width(), height = canvas.Height();
  const bool isDark = m_route.Plan().At(view.Meters()).scenery == Scenery::kTunnel;
  const double light = isDark ? 0.3 : 1;
  canvas.Ellipse({width * 0.47, height * 1.08}, width * 0.52, height * 0.19, Lit({34, 62, 112}, light));
  canvas.Ellipse({width * 0.47, height * 1.09}, width * 0.5, height * 0.185, Lit({48, 84, 146}, light));
  canvas.Ellipse({width * 0.42, height * 1.11}, width * 0.3, height * 0.175, Lit({66, 106, 172}, light));
}

}  // namespace vrx::test_support
