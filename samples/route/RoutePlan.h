// The ground on which somebody drives, runs or walks, by the meters from the start: bends, what lies
// beside the way, and where he stops. Those who make logs and those who draw the view look at the same plan.
#pragma once

#include <map>
#include <span>
#include <string>
#include <vector>

namespace vrx::test_support {

enum class RouteKind { kDrive, kRun, kWalk };

/// The kinds by their names on the command line.
const std::map<std::string, RouteKind>& RouteNames();

enum class Scenery { kHills, kTown, kTunnel, kPark, kShore };

struct RouteSection {
  Scenery scenery;
  double meters;
  double turnDegrees;      // to the right, over the whole section
  double metersPerSecond;  // wanted where the bends allow it
  double waitSeconds = 0;  // at its end
};

struct PlanPoint {
  double courseDegrees = 0.0;    // clockwise from north, not cut to a circle
  double degreesPerMeter = 0.0;  // positive in bends to the right
  double metersPerSecond = 0.0;  // wanted there
  Scenery scenery = Scenery::kHills;
};

struct PlanStretch {
  double fromMeters;
  double toMeters;
};

struct PlannedStop {
  double meters;
  double waitSeconds;
};

/// After its last section the plan begins again, in the direction that it has then.
class RoutePlan {
 public:
  explicit RoutePlan(RouteKind kind);

  /// Before the start, the way lies straight.
  PlanPoint At(double meters) const;
  /// The first tunnel that ends behind `meters`; infinitely far when the plan has none.
  PlanStretch TunnelFrom(double meters) const;
  /// The `index`-th stop of the endless way; infinitely far when the plan has none.
  PlannedStop Stop(std::size_t index) const;

 private:
  std::span<const RouteSection> m_sections;
  std::vector<PlanPoint> m_starts;   // of each section, in one round
  std::vector<double> m_meters;      // where each section begins; the last entry is the length of a round
  std::vector<PlannedStop> m_stops;  // of one round
  PlanPoint m_round;                 // what a whole round adds
};

}  // namespace vrx::test_support
