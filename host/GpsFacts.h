// The figures of a GPS log as a whole, which `vrx gps show` prints.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "gps/log/KVUGPSInfo.h"
#include "host/GpsSource.h"

namespace vrx::host {

/// From the last point before a stretch without positions to the first one after it; seconds since 1970.
struct GpsGap {
  std::int64_t from = 0;
  std::int64_t to = 0;
};

/// Degrees. A track across the antimeridian has its east end west of its west end.
struct GpsBounds {
  double north = 0.0;
  double south = 0.0;
  double east = 0.0;
  double west = 0.0;
};

struct GpsFacts {
  KVUGPSInfoList track;    // one point a second, gaps filled, in UTC; empty without a position
  std::int64_t start = 0;  // of the first and last position, seconds since 1970
  std::int64_t end = 0;
  double distanceMeters = 0.0;
  std::optional<double> maxSpeedKnots;  // nothing when no point has a speed

  double meanSpeedKnots = 0.0;  // over the whole time, stops and gaps included
  GpsBounds bounds;
  std::vector<GpsGap> gaps;
};

GpsFacts MakeFacts(const GpsSource& source);

}  // namespace vrx::host
