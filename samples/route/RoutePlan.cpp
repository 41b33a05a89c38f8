#include "samples/route/RoutePlan.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace vrx::test_support {
namespace {

constexpr double kFirstCourse = 40;

using enum Scenery;

// Bends in the hills, a tunnel after half a minute, a village, and more of it with lights.
constexpr std::array kDriveSections = {
    RouteSection{kHills, 60, 0, 18},    RouteSection{kHills, 90, 58, 18}, RouteSection{kHills, 30, 0, 18},
    RouteSection{kHills, 110, -95, 17}, RouteSection{kHills, 45, 0, 18},  RouteSection{kHills, 95, 75, 18},
    RouteSection{kHills, 110, -25, 20}, RouteSection{kHills, 70, 0, 20},  RouteSection{kTunnel, 100, 0, 20},
    RouteSection{kTunnel, 110, 28, 20}, RouteSection{kHills, 90, 0, 19},  RouteSection{kHills, 100, -62, 18},
    RouteSection{kHills, 80, 40, 16},   RouteSection{kTown, 110, 0, 13},  RouteSection{kTown, 90, 35, 12},
    RouteSection{kTown, 220, -20, 13},  RouteSection{kTown, 60, 80, 11},  RouteSection{kTown, 260, -15, 13},
    RouteSection{kTown, 50, -85, 11},   RouteSection{kTown, 190, 10, 13}, RouteSection{kTown, 105, 0, 13, 7},
    RouteSection{kTown, 70, 0, 13},     RouteSection{kTown, 45, 75, 11},  RouteSection{kTown, 160, 0, 13},
    RouteSection{kTown, 140, -60, 13},
};

// Once around a lawn is a round; it ends where it began, in the same direction.
constexpr std::array kRunSections = {
    RouteSection{kPark, 26, 0, 3.4},   RouteSection{kPark, 24, 95, 3.2},    RouteSection{kPark, 16, -30, 3.8},
    RouteSection{kPark, 30, 110, 3.1}, RouteSection{kPark, 11.108, 0, 3.5}, RouteSection{kPark, 16, -25, 4.2},
    RouteSection{kPark, 22, 115, 3.2}, RouteSection{kPark, 34.014, 0, 4.6}, RouteSection{kPark, 24, 95, 3.3},
};

constexpr std::array kWalkSections = {
    RouteSection{kShore, 12, 0, 1.4},    RouteSection{kShore, 10, 55, 1.3},
    RouteSection{kShore, 9, -70, 1.3},   RouteSection{kShore, 7, 0, 1.5, 5},
    RouteSection{kShore, 11, 80, 1.35},  RouteSection{kShore, 9, 0, 1.6},
    RouteSection{kShore, 12, -60, 1.25}, RouteSection{kShore, 10, 75, 1.4, 7},
    RouteSection{kShore, 10, 50, 1.4},   RouteSection{kShore, 12, -80, 1.5},
    RouteSection{kShore, 14, 40, 1.5},
};

/// Nobody keeps a speed exactly: a factor that wanders about 1, at a pace that the mean speed sets.
double Wander(double meters, double metersPerSecond) {
  const double seconds = meters / metersPerSecond;
  return 1 + 0.03 * std::sin(seconds / 2.1) + 0.045 * std::sin(seconds / 5.3 + 1);
}

std::span<const RouteSection> SectionsOf(RouteKind kind) {
  switch (kind) {
    case RouteKind::kDrive:
      return kDriveSections;
    case RouteKind::kRun:
      return kRunSections;
    case RouteKind::kWalk:
      break;
  }
  return kWalkSections;
}

}  // namespace

const std::map<std::string, RouteKind>& RouteNames() {
  static const std::map<std::string, RouteKind> names = {
      {"drive", RouteKind::kDrive}, {"run", RouteKind::kRun}, {"walk", RouteKind::kWalk}};
  return names;
}

RoutePlan::RoutePlan(RouteKind kind) : m_sections(SectionsOf(kind)) {
  double meters = 0;
  for (const RouteSection& section : m_sections) {
    m_starts.push_back(m_round);
    m_meters.push_back(meters);
    meters += section.meters;
    m_round.courseDegrees += section.turnDegrees;
    if (section.waitSeconds > 0) m_stops.push_back({meters, section.waitSeconds});
  }
  m_meters.push_back(meters);
}

PlanPoint RoutePlan::At(double meters) const {
  const double length = m_meters.back();
  const double rounds = std::max(std::floor(meters / length), 0.0);
  const double inRound = std::max(meters - rounds * length, 0.0);
  const auto after = std::upper_bound(m_meters.begin(), m_meters.end() - 1, inRound);
  const auto index = static_cast<std::size_t>(after - m_meters.begin() - 1);
  const RouteSection& section = m_sections[index];
  // Bends grow from nothing and go back to it, so that the way has no kinks.
  const double t = std::min((inRound - m_meters[index]) / section.meters, 1.0);
  const double share = t * t * (3 - 2 * t);
  PlanPoint point = m_starts[index];
  point.courseDegrees += kFirstCourse + section.turnDegrees * share + rounds * m_round.courseDegrees;
  point.degreesPerMeter = section.turnDegrees * 6 * t * (1 - t) / section.meters;
  point.metersPerSecond = section.metersPerSecond * Wander(meters, m_sections.front().metersPerSecond);
  point.scenery = section.scenery;
  return point;
}

PlanStretch RoutePlan::TunnelFrom(double meters) const {
  const double length = m_meters.back();
  double round = std::max(std::floor(meters / length), 0.0) * length;
  for (int rounds = 0; rounds < 2; ++rounds, round += length) {
    for (std::size_t first = 0; first < m_sections.size(); ++first) {
      std::size_t end = first;
      while (end < m_sections.size() && m_sections[end].scenery == Scenery::kTunnel) ++end;
      if (end > first && round + m_meters[end] > meters)
        return {round + m_meters[first], round + m_meters[end]};
      first = end;
    }
  }
  constexpr double kNever = std::numeric_limits<double>::infinity();
  return {kNever, kNever};
}

PlannedStop RoutePlan::Stop(std::size_t index) const {
  if (m_stops.empty()) return {std::numeric_limits<double>::infinity(), 0};
  const PlannedStop& stop = m_stops[index % m_stops.size()];
  const auto rounds = static_cast<double>(index / m_stops.size());
  return {stop.meters + rounds * m_meters.back(), stop.waitSeconds};
}

}  // namespace vrx::test_support
