// The units in which distances and speeds are shown. Points keep arc-seconds and knots.
#pragma once

#include <cstdint>

namespace vrx::gps {

/// As project documents number them.
enum : std::int32_t { kGpsUnitKilometers = 0, kGpsUnitMiles = 1, kGpsUnitNauticalMiles = 2 };

/// Unknown units count as kilometers.
constexpr double DistanceInUnit(double meters, std::int32_t unit) {
  if (unit == kGpsUnitMiles) return meters * 0.62137 / 1000.0;
  if (unit == kGpsUnitNauticalMiles) return meters * 0.53996 / 1000.0;
  return meters / 1000.0;
}

/// Kilometers, miles or nautical miles an hour.
constexpr double SpeedInUnit(double knots, std::int32_t unit) {
  if (unit == kGpsUnitMiles) return knots * 1.1508;
  if (unit == kGpsUnitNauticalMiles) return knots;
  return knots * 1.852;
}

}  // namespace vrx::gps
