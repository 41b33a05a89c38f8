#include "samples/clipmaker/RoadProps.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "samples/clipmaker/RoadColours.h"

namespace vrx::test_support {
namespace {

using namespace road;

constexpr double kPlotMeters = 4;  // things stand at the beginnings of plots of that length

constexpr double kStorey = 2.9;  // height of a house's

constexpr std::array<Rgb, 4> kLeaves = {{{62, 126, 58}, {84, 146, 62}, {48, 108, 62}, {112, 158, 66}}};
constexpr std::array<Rgb, 5> kWalls = {
    {{236, 222, 196}, {214, 186, 158}, {232, 232, 226}, {206, 148, 116}, {188, 200, 204}}};
constexpr std::array<Rgb, 3> kRoofs = {{{168, 78, 58}, {126, 66, 56}, {104, 92, 92}}};
constexpr std::array<Rgb, 3> kSails = {{{255, 255, 252}, {250, 214, 110}, {226, 92, 78}}};

template <std::size_t Count>
const Rgb& Pick(const std::array<Rgb, Count>& colours, double chance) {
  return colours[static_cast<std::size_t>(chance * Count)];
}

}  // namespace

Rgb RoadProps::Far(const Rgb& colour, double meters) const {
  return Hazed(colour, std::max(meters - m_view.Meters(), 0.0));
}

void RoadProps::AddStretch(double fromMeters, double toMeters, RoadThings& things) {
  m_things = &things;
  auto plot = static_cast<std::int64_t>(std::ceil(toMeters / kPlotMeters)) - 1;
  for (; static_cast<double>(plot) * kPlotMeters >= fromMeters; --plot) AddPlot(plot);
  for (const RouteStop& stop : m_route.Stops()) {
    if (stop.meters >= fromMeters && stop.meters < toMeters) Add(stop.meters, 0, [=, this] { Lights(stop); });
  }
}

void RoadProps::AddPlot(std::int64_t plot) {
  const PlanPoint point = m_route.Plan().At(static_cast<double>(plot) * kPlotMeters);
  switch (point.scenery) {
    case Scenery::kHills:
      AddHills(plot, point);
      break;
    case Scenery::kTown:
      AddTown(plot);
      break;
    case Scenery::kPark:
      AddPark(plot);
      break;
    case Scenery::kShore:
      AddShore(plot);
      break;
    case Scenery::kTunnel:
      break;
  }
}

void RoadProps::AddTrees(std::int64_t plot, double nearest, double farthest, double share, double leftShare) {
  const double meters = static_cast<double>(plot) * kPlotMeters;
  for (const double row : {0.0, 0.33, 0.66}) {
    for (const double side : {-1.0, 1.0}) {
      const std::uint32_t what = static_cast<std::uint32_t>(row * 100) + (side > 0 ? 7 : 3);
      if (Chance(plot, what) > share * (side < 0 ? leftShare : 1)) continue;
      const double away = (row + 0.33 * Chance(plot, what + 300)) * (farthest - nearest) + nearest;
      const double height = 4.5 + 5 * Chance(plot, what + 400);
      const auto kind = static_cast<std::uint32_t>(Chance(plot, what + 500) * 6);
      const double at = meters + 3 * Chance(plot, what + 600);
      Add(at, side * away, [=, this] { Tree(at, side * away, height, kind); });
    }
  }
}

void RoadProps::AddHills(std::int64_t plot, const PlanPoint& point) {
  const double meters = static_cast<double>(plot) * kPlotMeters;
  AddTrees(plot, 8.5, 50, 0.34, 1);
  const double bend = point.degreesPerMeter;
  if (std::abs(bend) > 0.45 && plot % 4 == 0) {
    const double outside = bend > 0 ? -5.6 : 5.6;
    Add(meters, outside, [=, this] { Chevron(meters, outside, bend > 0); });
  }
  if (plot % 6 != 0) return;
  for (const double side : {-4.7, 4.7}) Add(meters, side, [=, this] { Post(meters, side); });
}

void RoadProps::AddTown(std::int64_t plot) {
  const double meters = static_cast<double>(plot) * kPlotMeters;
  for (const double side : {-1.0, 1.0}) {
    const std::int64_t place = plot + (side > 0 ? 2 : 0);
    if (place % 5 == 0 && Chance(plot, 11) > 0.1) Add(meters, side * 10, [=, this] { House(plot, side); });
    if (place % 5 == 4 && Chance(plot, 12) > 0.3)
      Add(meters + 2, side * 7.6, [=, this] { Tree(meters + 2, side * 7.6, 4.5 + Chance(plot, 13), 1); });
    if (place % 8 == 3) Add(meters, side * 5, [=, this] { Lamp(meters, side * 5, 6.5); });
  }
}

void RoadProps::AddPark(std::int64_t plot) {
  const double meters = static_cast<double>(plot) * kPlotMeters;
  AddTrees(plot, 4.2, 34, 0.4, 1);
  if (plot % 7 == 0) Add(meters, 2.6, [=, this] { Lamp(meters, 2.6, 3.4); });
  if (plot % 9 == 4) Add(meters, -3, [=, this] { Bench(meters, -3); });
}

void RoadProps::AddShore(std::int64_t plot) {
  const double meters = static_cast<double>(plot) * kPlotMeters;
  if (Chance(plot, 21) > 0.55) {
    const double offset = -18 - 90 * Chance(plot, 22);
    Add(meters, offset, [=, this] { Boat(meters, offset, Pick(kSails, Chance(plot, 23))); });
  }
  AddTrees(plot, 4.5, 30, 0.4, 0);
  if (plot % 5 == 0) Add(meters, 2.8, [=, this] { Lamp(meters, 2.8, 3.4); });
  if (plot % 6 == 3) Add(meters, 3.1, [=, this] { Bench(meters, 3.1); });
  Add(meters + kPlotMeters / 2, -3.8, [=, this] { Railing(meters); });
}

void RoadProps::Upright(double meters, double offset, double halfWidth, double bottom, double top,
                        const Rgb& colour) {
  const EyePlace foot = m_view.At(meters, offset);
  if (!RoadView::IsAhead(foot)) return;
  const CanvasPoint at = m_view.OnPicture(foot);
  const double scale = m_view.Scale(foot);
  m_view.Canvas().Rectangle(at.x - halfWidth * scale, at.y - top * scale, at.x + halfWidth * scale,
                            at.y - bottom * scale, Far(colour, meters));
}

void RoadProps::Disc(double meters, double offset, double height, double radius, const Rgb& colour) {
  const EyePlace place = m_view.At(meters, offset, height);
  if (!RoadView::IsAhead(place)) return;
  const double pixels = radius * m_view.Scale(place);
  m_view.Canvas().Ellipse(m_view.OnPicture(place), pixels, pixels, Far(colour, meters));
}

void RoadProps::Tree(double meters, double offset, double height, std::uint32_t kind) {
  const EyePlace foot = m_view.At(meters, offset);
  if (!RoadView::IsAhead(foot)) return;
  const CanvasPoint at = m_view.OnPicture(foot);
  const double scale = m_view.Scale(foot) * height;
  m_view.Canvas().Ellipse({at.x + 0.1 * scale, at.y}, 0.4 * scale, 0.055 * scale, kBlack, 0.22);
  if (kind >= 4) return Fir(meters, offset, height * 1.25);
  Upright(meters, offset, 0.035 * height, 0, 0.45 * height, kTrunk);
  const Rgb& leaves = kLeaves[kind];
  const Rgb dark = Far(MixRgb(leaves, kBlack, 0.16), meters);
  const Rgb light = Far(MixRgb(leaves, {226, 236, 150}, 0.16), meters);
  const Rgb plain = Far(leaves, meters);
  const auto leaf = [&](double x, double y, double radius, const Rgb& colour) {
    m_view.Canvas().Ellipse({at.x + x * scale, at.y - y * scale}, radius * scale, radius * scale, colour);
  };
  leaf(0.12, 0.52, 0.24, dark);
  leaf(-0.14, 0.54, 0.24, dark);
  leaf(0.0, 0.7, 0.29, plain);
  leaf(-0.16, 0.62, 0.2, plain);
  leaf(-0.08, 0.78, 0.17, light);
}

void RoadProps::Fir(double meters, double offset, double height) {
  const EyePlace foot = m_view.At(meters, offset);
  const CanvasPoint at = m_view.OnPicture(foot);
  const double scale = m_view.Scale(foot) * height;
  Upright(meters, offset, 0.025 * height, 0, 0.2 * height, kTrunk);
  const Rgb needles = Far({40, 98, 66}, meters);
  const Rgb lit = Far({58, 118, 76}, meters);
  for (int tier = 0; tier < 3; ++tier) {
    const double bottom = at.y - (0.12 + 0.24 * tier) * scale;
    const double top = bottom - (0.46 - 0.04 * tier) * scale;
    const double half = (0.25 - 0.055 * tier) * scale;
    const CanvasPoint whole[] = {{at.x - half, bottom}, {at.x, top}, {at.x + half, bottom}};
    const CanvasPoint left[] = {{at.x - half, bottom}, {at.x, top}, {at.x - 0.2 * half, bottom}};
    m_view.Canvas().Polygon(whole, needles);
    m_view.Canvas().Polygon(left, lit);
  }
}

void RoadProps::Post(double meters, double offset) {
  Upright(meters, offset, 0.07, 0, 1.05, {244, 244, 240});
  Upright(meters, offset, 0.07, 0.72, 0.92, kBlack);
}

void RoadProps::Chevron(double meters, double offset, bool pointsRight) {
  Upright(meters, offset, 0.06, 0, 1.0, kMetal);
  Upright(meters, offset, 0.42, 1.0, 1.84, kRed);
  const double side = pointsRight ? 1 : -1;
  const auto corner = [&](double x, double y) { return m_view.At(meters, offset + side * x, 1.0 + y); };
  const EyePlace arrow[] = {corner(-0.3, 0.06),  corner(0.06, 0.42), corner(-0.3, 0.78),
                            corner(-0.02, 0.78), corner(0.34, 0.42), corner(-0.02, 0.06)};
  m_view.Face(arrow, Far(kPaint, meters));
}

void RoadProps::House(std::int64_t plot, double side) {
  constexpr double kLength = 14;
  const auto chance = [&](std::uint32_t what) { return Chance(plot, what + (side > 0 ? 50 : 0)); };
  const double from = static_cast<double>(plot) * kPlotMeters;
  const double to = from + kLength;
  const double front = side * (9.0 + 2.5 * chance(14));
  const double back = front + side * 9;
  const int storeys = 2 + static_cast<int>(chance(15) * 2.4);
  const double height = 0.6 + kStorey * storeys;
  const double roof = height + 3.2;
  const Rgb wall = Far(Pick(kWalls, chance(16)), from);
  const Rgb tiles = Far(Pick(kRoofs, chance(17)), from);
  const auto at = [&](double meters, double offset, double up) { return m_view.At(meters, offset, up); };
  const double ridge = (front + back) / 2;
  m_view.Face(at(from, front, 0), at(to, front, 0), at(to, front, height), at(from, front, height), wall);
  const EyePlace gable[] = {at(from, front, 0), at(from, front, height), at(from, ridge, roof),
                            at(from, back, height), at(from, back, 0)};
  m_view.Face(gable, MixRgb(wall, kBlack, 0.13));
  const double eaves = front - side * 0.5;
  m_view.Face(at(from - 0.4, eaves, height - 0.3), at(to, eaves, height - 0.3), at(to, ridge, roof),
              at(from - 0.4, ridge, roof), tiles);
  Windows(from, to, front, side, storeys);
}

void RoadProps::Windows(double from, double to, double front, double side, int storeys) {
  const Rgb glass = Far({92, 118, 142}, from);
  const auto at = [&](double meters, double offset, double up) { return m_view.At(meters, offset, up); };
  const EyePlace corner = at(to, front, 0);
  if (!RoadView::IsAhead(corner) || m_view.Scale(corner) < 2.5) return;  // windows would be dust
  for (int storey = 0; storey < storeys; ++storey) {
    const double sill = 1.3 + kStorey * storey;
    for (double window = from + 1.4; window < to - 1.5; window += 2.9) {
      m_view.Face(at(window, front, sill), at(window + 1.2, front, sill), at(window + 1.2, front, sill + 1.5),
                  at(window, front, sill + 1.5), glass);
    }
    for (const double across : {1.6, 6.0}) {
      m_view.Face(at(from, front + side * across, sill), at(from, front + side * (across + 1.3), sill),
                  at(from, front + side * (across + 1.3), sill + 1.5),
                  at(from, front + side * across, sill + 1.5), MixRgb(glass, kBlack, 0.1));
    }
  }
}

void RoadProps::Lamp(double meters, double offset, double height) {
  Upright(meters, offset, 0.06, 0, height, kMetal);
  if (height < 5) {
    Disc(meters, offset, height + 0.15, 0.24, {252, 246, 222});
    return;
  }
  const double head = offset - (offset > 0 ? 1.6 : -1.6);
  m_view.Face(m_view.At(meters, offset, height - 0.1), m_view.At(meters, head, height + 0.1),
              m_view.At(meters, head, height + 0.25), m_view.At(meters, offset, height + 0.05),
              Far(kMetal, meters));
}

void RoadProps::Bench(double meters, double offset) {
  const double front = offset > 0 ? -0.45 : 0.45;
  const auto board = [&](double across, double bottom, double top, const Rgb& colour) {
    m_view.Face(m_view.At(meters, offset + across, bottom), m_view.At(meters + 1.8, offset + across, bottom),
                m_view.At(meters + 1.8, offset + across, top), m_view.At(meters, offset + across, top),
                Far(colour, meters));
  };
  for (const double along : {0.15, 1.65}) Upright(meters + along, offset + front / 2, 0.05, 0, 0.45, kMetal);
  board(0, 0.5, 0.9, kWood);
  m_view.Face(m_view.At(meters, offset, 0.45), m_view.At(meters + 1.8, offset, 0.45),
              m_view.At(meters + 1.8, offset + front, 0.45), m_view.At(meters, offset + front, 0.45),
              Far(MixRgb(kWood, kPaint, 0.2), meters));
  board(front, 0.36, 0.45, MixRgb(kWood, kBlack, 0.2));
}

void RoadProps::Boat(double meters, double offset, const Rgb& sail) {
  const auto at = [&](double across, double up) { return m_view.At(meters, offset + across, up); };
  const EyePlace hull[] = {at(-2.4, 0.9), at(2.7, 0.9), at(1.9, 0), at(-2.0, 0)};
  const EyePlace main[] = {at(0.1, 1.2), at(0.1, 8.0), at(-2.5, 1.2)};
  const EyePlace jib[] = {at(0.3, 1.2), at(0.3, 6.8), at(2.4, 1.0)};
  const EyePlace mirror[] = {at(-2.2, 0), at(2.2, 0), at(1.2, -1.4), at(-1.4, -1.4)};
  m_view.Face(mirror, Far(sail, meters), 0.25);
  m_view.Face(hull, Far({250, 250, 250}, meters));
  m_view.Face(main, Far(sail, meters));
  m_view.Face(jib, Far(MixRgb(sail, kBlack, 0.08), meters));
}

void RoadProps::Railing(double meters) {
  constexpr double kOffset = -3.8;
  for (const double up : {0.5, 1.0}) {
    m_view.Face(m_view.At(meters, kOffset, up), m_view.At(meters + kPlotMeters, kOffset, up),
                m_view.At(meters + kPlotMeters, kOffset, up + 0.06), m_view.At(meters, kOffset, up + 0.06),
                Far({236, 238, 238}, meters));
  }
  for (const double along : {2.0, 0.0}) Upright(meters + along, kOffset, 0.05, 0, 1.1, {226, 228, 228});
}

void RoadProps::Lights(const RouteStop& stop) {
  if (m_route.Plan().At(stop.meters).scenery != Scenery::kTown) return;
  const auto bar = [&](double from, double to, double left, double right) {
    m_view.Face(m_view.At(from, left), m_view.At(to, left), m_view.At(to, right), m_view.At(from, right),
                Far(kPaint, from), 0.95);
  };
  for (double at = -3.4; at < 3.3; at += 1.0) bar(stop.meters + 6, stop.meters + 9.5, at, at + 0.5);
  bar(stop.meters + 4, stop.meters + 4.5, 0.1, 3.7);
  const double pole = stop.meters + 10.5;
  constexpr double kGreenBefore = 1.0;  // seconds until the driver goes
  const bool isRed = m_seconds < stop.departureSeconds - kGreenBefore;
  for (const double side : {-4.6, 4.6}) {
    Upright(pole, side, 0.08, 0, 2.5, kMetal);
    Upright(pole, side, 0.28, 2.4, 3.9, kBlack);
    Disc(pole, side, 3.6, 0.19, isRed ? Rgb{255, 58, 44} : Rgb{70, 26, 26});
    Disc(pole, side, 3.15, 0.19, {74, 60, 24});
    Disc(pole, side, 2.7, 0.19, isRed ? Rgb{20, 60, 36} : Rgb{64, 240, 120});
  }
}

}  // namespace vrx::test_support
