#include "gps/track/GeodesicDistance.h"

#include <cmath>
#include <numbers>

namespace vrx::gps {
namespace {

constexpr double kRadiansPerArcSecond = std::numbers::pi / 180.0 / 3600.0;
constexpr double kSemiMajorAxis = 6377397.0;       // a, meters
constexpr double kMeridianAxis = 6334834.0;        // a (1 - e^2), meters
constexpr double kEccentricitySquared = 0.006674;  // e^2

}  // namespace

double GeodesicDistance(double latitude1, double longitude1, double latitude2, double longitude2) {
  if (latitude1 == latitude2 && longitude1 == longitude2) return 0.0;
  const double phi1 = latitude1 * kRadiansPerArcSecond;
  const double phi2 = latitude2 * kRadiansPerArcSecond;
  const double mean = (phi1 + phi2) / 2.0;
  const double w = 1.0 - kEccentricitySquared * std::sin(mean) * std::sin(mean);
  const double meridianRadius = kMeridianAxis / std::sqrt(w * w * w);
  const double normalRadius = kSemiMajorAxis / std::sqrt(w);
  const double deltaLambda =
      std::remainder((longitude1 - longitude2) * kRadiansPerArcSecond, 2.0 * std::numbers::pi);
  return std::hypot(meridianRadius * (phi1 - phi2), normalRadius * std::cos(mean) * deltaLambda);
}

}  // namespace vrx::gps
