#include "samples/route/PlannedRoute.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vrx::test_support {
namespace {

constexpr double kRadian = std::numbers::pi / 180;
constexpr double kReached = 0.02;  // meters before a stop that count as there

struct Temper {
  double acceleration;  // m/s^2
  double braking;
  double sideways;     // most that is borne in bends
  double sightMeters;  // how far ahead bends are looked at
};

Temper TemperOf(RouteKind kind) {
  return kind == RouteKind::kDrive ? Temper{2.0, 2.4, 3.2, 70} : Temper{0.8, 1.0, 1.4, 6};
}

/// The fastest at which all bends ahead and the stop can still be taken.
double FastestAt(const RoutePlan& plan, double meters, double stopMeters, const Temper& temper) {
  constexpr int kLooks = 35;
  double squared = 2 * temper.braking * std::max(stopMeters - meters, 0.0);
  for (int i = 0; i <= kLooks; ++i) {
    const double ahead = temper.sightMeters * i / kLooks;
    const PlanPoint point = plan.At(meters + ahead);
    const double bend = std::abs(point.degreesPerMeter) * kRadian;
    double there = point.metersPerSecond * point.metersPerSecond;
    if (bend > 0) there = std::min(there, temper.sideways / bend);
    squared = std::min(squared, there + 2 * temper.braking * ahead);
  }
  return std::sqrt(squared);
}

}  // namespace

PlannedRoute::PlannedRoute(const PlannedRouteOptions& options) : Route(options.times), m_plan(options.kind) {
  const Temper temper = TemperOf(options.kind);
  RouteState state{options.latitude, options.longitude};
  double waitsUntil = 0;
  for (std::int64_t at = 0; at <= Milliseconds(); at += kStepMilliseconds) {
    const double seconds = static_cast<double>(at) / 1000;
    const PlannedStop stop = m_plan.Stop(m_stops.size());
    if (seconds < waitsUntil) {
      state.metersPerSecond = 0;
    } else if (stop.meters - state.meters <= kReached) {
      waitsUntil = seconds + stop.waitSeconds;
      m_stops.push_back({stop.meters, seconds, waitsUntil});
      state.metersPerSecond = 0;
    } else {
      const double faster = state.metersPerSecond + temper.acceleration * kStepSeconds;
      state.metersPerSecond = std::min(faster, FastestAt(m_plan, state.meters, stop.meters, temper));
    }
    state.meters += state.metersPerSecond * kStepSeconds;
    const PlanPoint point = m_plan.At(state.meters);
    state.hasFix = seconds >= options.firstFixSecond && point.scenery != Scenery::kTunnel;
    Step(point.courseDegrees, state);
  }
}

}  // namespace vrx::test_support
