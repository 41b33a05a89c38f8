#include "samples/clipmaker/RoadTunnel.h"

#include <algorithm>
#include <cmath>

#include "samples/clipmaker/RoadColours.h"

namespace vrx::test_support {
namespace {

using namespace road;

constexpr double kHalfWidth = 5.3;
constexpr double kHeight = 5.6;
constexpr double kLampMeters = 12;  // from lamp to lamp
constexpr double kPanelMeters = 4;
constexpr Rgb kLamp = {255, 226, 160};

}  // namespace

void RoadTunnel::AddStretch(double fromMeters, double toMeters, RoadThings& things) {
  const double from = std::max(fromMeters, m_stretch.fromMeters);
  const double to = std::min(toMeters, m_stretch.toMeters);
  if (from >= to) return;
  // Panels keep their places while the eye moves.
  const auto first = static_cast<std::int64_t>(std::floor(from / kPanelMeters));
  for (auto panel = static_cast<std::int64_t>(std::ceil(to / kPanelMeters)) - 1; panel >= first; --panel) {
    const double start = static_cast<double>(panel) * kPanelMeters;
    const double end = std::min(start + kPanelMeters, to);
    things.Add(m_view.At(end, 0).ahead, [=, this] { DrawWalls(std::max(start, from), end); });
    if (start < from || std::fmod(start, kLampMeters) >= 1) continue;
    things.Add(m_view.At(start, 0).ahead, [=, this] { DrawLamp(start); });
  }
  if (m_stretch.fromMeters < fromMeters) return;
  things.Add(m_view.At(m_stretch.fromMeters, 0).ahead, [this] { DrawPortal(); });
}

void RoadTunnel::DrawWalls(double fromMeters, double toMeters) {
  const double distance = std::max(fromMeters - m_view.Meters(), 0.0);
  const bool isOdd = std::fmod(fromMeters, 2 * kPanelMeters) < kPanelMeters;
  const double light = TunnelLight(distance) * (isOdd ? 1 : 0.88);
  const double behind = toMeters + 0.3;  // so that no light shines through between two panels
  const auto at = [&](double meters, double offset, double up) { return m_view.At(meters, offset, up); };
  m_view.Face(at(fromMeters, -kHalfWidth, kHeight), at(behind, -kHalfWidth, kHeight),
              at(behind, kHalfWidth, kHeight), at(fromMeters, kHalfWidth, kHeight),
              Lit({150, 146, 138}, 0.7 * light));
  for (const double side : {-kHalfWidth, kHalfWidth}) {
    m_view.Face(at(fromMeters, side, 0), at(behind, side, 0), at(behind, side, kHeight + 0.1),
                at(fromMeters, side, kHeight + 0.1), Lit({176, 170, 158}, light));
    m_view.Face(at(fromMeters, side, 0.9), at(behind, side, 0.9), at(behind, side, 1.25),
                at(fromMeters, side, 1.25), Lit({240, 190, 70}, std::min(1.7 * light, 1.0)));
  }
}

void RoadTunnel::DrawLamp(double meters) {
  for (const double side : {-2.0, 2.0}) {
    m_view.Face(m_view.At(meters, side - 0.25, kHeight - 0.05),
                m_view.At(meters + 2.2, side - 0.25, kHeight - 0.05),
                m_view.At(meters + 2.2, side + 0.25, kHeight - 0.05),
                m_view.At(meters, side + 0.25, kHeight - 0.05), kLamp, 0.8);
  }
}

void RoadTunnel::DrawPortal() {
  const double meters = m_stretch.fromMeters;
  const double distance = std::max(meters - m_view.Meters(), 0.0);
  const auto at = [&](double offset, double up) { return m_view.At(meters, offset, up); };
  // The opening is cut out of the lower edge of both.
  const EyePlace hill[] = {at(-160, -6),
                           at(-130, 6),
                           at(-90, 17),
                           at(-52, 26),
                           at(-18, 31),
                           at(14, 29),
                           at(46, 32),
                           at(84, 24),
                           at(120, 13),
                           at(165, -6),
                           at(kHalfWidth, 0),
                           at(kHalfWidth, kHeight),
                           at(-kHalfWidth, kHeight),
                           at(-kHalfWidth, 0)};
  m_view.Face(hill, Hazed({92, 142, 72}, distance));
  const EyePlace front[] = {at(-11, 0),
                            at(-9.5, 7.6),
                            at(9.5, 7.6),
                            at(11, 0),
                            at(kHalfWidth, 0),
                            at(kHalfWidth, kHeight),
                            at(-kHalfWidth, kHeight),
                            at(-kHalfWidth, 0)};
  m_view.Face(front, Hazed(kConcrete, distance));
  const EyePlace edge[] = {at(-10, 7.6), at(-10, 8.2), at(10, 8.2), at(10, 7.6)};
  m_view.Face(edge, Hazed(MixRgb(kConcrete, kBlack, 0.3), distance));
}

}  // namespace vrx::test_support
