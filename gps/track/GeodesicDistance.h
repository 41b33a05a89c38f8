// Distances on the earth between the points of a track.
#pragma once

#include "gps/log/KVUGPSInfo.h"

namespace vrx::gps {

/// Meters between two places in arc-seconds, by Hubeny's formula on the Bessel ellipsoid: exact to a few
/// parts in ten thousand between neighbouring points, and meant for no more than that. The longitudes differ
/// by at most 180 degrees, so that a step across the antimeridian is a step.
double GeodesicDistance(double latitude1, double longitude1, double latitude2, double longitude2);

inline double GeodesicDistance(const KVUGPSInfo& a, const KVUGPSInfo& b) {
  return GeodesicDistance(a.latitude, a.longitude, b.latitude, b.longitude);
}

}  // namespace vrx::gps
