#include "host/GpsFacts.h"

#include <algorithm>
#include <cmath>

#include "gps/track/GpsUnits.h"
#include "gps/track/ResampleTrack.h"
#include "gps/track/TrackMetrics.h"

namespace vrx::host {
namespace {

constexpr double kSecondsPerHour = 3600.0;
constexpr double kMetersPerNauticalMile = 1852.0;

double WithinHalfTurn(double degrees) {
  constexpr double kTurn = 360.0;
  return std::remainder(degrees, kTurn);
}

GpsBounds FindBounds(const KVUGPSInfoList& points) {
  GpsBounds bounds{-90.0, 90.0, 0.0, 0.0};
  const double origin = points.front().longitude / kArcSecondsPerDegree;
  for (const KVUGPSInfo& point : points) {
    const double latitude = point.latitude / kArcSecondsPerDegree;
    const double fromOrigin = WithinHalfTurn(point.longitude / kArcSecondsPerDegree - origin);
    bounds.north = std::max(bounds.north, latitude);
    bounds.south = std::min(bounds.south, latitude);
    bounds.east = std::max(bounds.east, fromOrigin);
    bounds.west = std::min(bounds.west, fromOrigin);
  }
  bounds.east = WithinHalfTurn(bounds.east + origin);
  bounds.west = WithinHalfTurn(bounds.west + origin);
  return bounds;
}

std::vector<GpsGap> FindGaps(const KVUGPSInfoList& points) {
  std::vector<GpsGap> gaps;
  for (std::size_t i = 1; i < points.size(); ++i) {
    const GpsGap gap{UnixSeconds(points[i - 1]), UnixSeconds(points[i])};
    if (gap.to - gap.from > 1) gaps.push_back(gap);
  }
  return gaps;
}

}  // namespace

GpsFacts MakeFacts(const GpsSource& source) {
  GpsFacts facts;
  KVUGPSInfoList valid;
  std::ranges::copy_if(source.points, std::back_inserter(valid),
                       [](const KVUGPSInfo& point) { return point.status == 1; });
  if (valid.empty()) return facts;
  facts.start = UnixSeconds(valid.front());
  facts.end = UnixSeconds(valid.back());
  facts.bounds = FindBounds(valid);
  facts.gaps = FindGaps(valid);
  const XpDateTime first(valid.front().time);
  const XpDateTime last(valid.back().time);
  facts.track = std::move(valid);
  gps::ResampleTrack(facts.track, first, last, 0);
  constexpr double kMetersPerKilometer = 1000.0;
  facts.distanceMeters = gps::TotalDistance(facts.track, gps::kGpsUnitKilometers, 0.0) * kMetersPerKilometer;
  const bool hasSpeed =
      std::ranges::any_of(facts.track, [](const auto& point) { return point.speed >= 0.0; });
  if (hasSpeed) facts.maxSpeedKnots = gps::MaxSpeed(facts.track);
  if (facts.end == facts.start) return facts;
  constexpr double kSecondsPerHour = 3600.0;
  constexpr double kMetersPerNauticalMile = 1852.0;
  const double hours = static_cast<double>(facts.end - facts.start) / kSecondsPerHour;
  facts.meanSpeedKnots = facts.distanceMeters / kMetersPerNauticalMile / hours;
  return facts;
}

}  // namespace vrx::host
