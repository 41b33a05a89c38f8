// Distances, speeds and bounds of tracks with one point a second. Ranges from t0 to t1 are on
// the clock of the list's times and include both ends; units are those of GpsUnits.h.
#pragma once

#include <cstdint>

#include "foundation/time/XpDateTime.h"
#include "gps/log/KVUGPSInfo.h"

/// Arc-seconds. The initial values, which no place has, stay when a track has no usable point.
struct KVSGPSBounds {
  double top = 5401.0;    // greatest latitude
  double left = 10801.0;  // smallest longitude
  double width = 0.0;     // span of the longitudes
  double height = 0.0;    // span of the latitudes
};

namespace vrx::gps {

/// Knots; at least 0.
double MaxSpeedInRange(const KVUGPSInfoList& list, const XpDateTime& t0, const XpDateTime& t1);
double MaxSpeed(const KVUGPSInfoList& list);

/// The way between neighbouring points that both lie in the range, from the first fix of the list on. In the
/// unit.
double DistanceInRange(const KVUGPSInfoList& list, std::int32_t unit, const XpDateTime& t0,
                       const XpDateTime& t1);

/// Units an hour; 0 for a range without length, and for one second the distance itself.
double AverageSpeedInRange(const KVUGPSInfoList& list, std::int32_t unit, const XpDateTime& t0,
                           const XpDateTime& t1);

/// Fills the `distance` of each point: 0 up to the first valid one, then the way so far over valid and
/// interpolated points.
void AccumulateDistance(KVUGPSInfoList& list, std::int32_t unit);
/// The same from the first point at or after `t0` on; those before it keep their distances.
void AccumulateDistanceFrom(KVUGPSInfoList& list, std::int32_t unit, const XpDateTime& t0);

/// The way from the first valid point at or after the index `first` to the end of the fixes. An index that is
/// negative or no number counts as 0.
double TotalDistance(const KVUGPSInfoList& list, std::int32_t unit, double first);

/// Units an hour over the points from the index `first` on; for a single one its own speed in knots.
double AverageSpeed(const KVUGPSInfoList& list, std::int32_t unit, double first);

/// Over valid, interpolated and held points from the index `first` on.
void TrackBounds(const KVUGPSInfoList& list, double first, KVSGPSBounds& bounds);

}  // namespace vrx::gps
