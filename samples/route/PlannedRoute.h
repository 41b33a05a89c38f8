// A drive, a run or a walk over a plan: brakes for bends and stops, and has no fix in tunnels. Its log and
// its footage show the same moment at the same second.
#pragma once

#include "samples/route/Route.h"
#include "samples/route/RoutePlan.h"

namespace vrx::test_support {

struct PlannedRouteOptions {
  RouteKind kind = RouteKind::kDrive;
  RouteTimes times;
  double latitude = 47.3769;  // where it begins, degrees
  double longitude = 8.5417;
  int firstFixSecond = 5;
};

/// A wait at a stop of the plan.
struct RouteStop {
  double meters;
  double arrivalSeconds;
  double departureSeconds;
};

/// The same options give the same route on every run; a longer one begins with the shorter one.
class PlannedRoute : public Route {
 public:
  explicit PlannedRoute(const PlannedRouteOptions& options);

  const RoutePlan& Plan() const { return m_plan; }
  /// Those that are reached within the route's time.
  const std::vector<RouteStop>& Stops() const { return m_stops; }

 private:
  RoutePlan m_plan;
  std::vector<RouteStop> m_stops;
};

}  // namespace vrx::test_support
