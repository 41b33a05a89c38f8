#include "gps/track/TrackMetrics.h"

#include <algorithm>
#include <cmath>
#include <span>

#include "foundation/number/Saturate.h"
#include "gps/log/GpsTime.h"
#include "gps/track/GeodesicDistance.h"
#include "gps/track/GpsUnits.h"

namespace vrx::gps {
namespace {

constexpr double kSecondsPerHour = 3600.0;

using Points = std::span<const KVUGPSInfo>;

/// Compared by whole seconds.
struct Range {
  Range(const XpDateTime& t0, const XpDateTime& t1)
      : isValid(t0.IsValid() && t1.IsValid()), first(WholeSeconds(t0)), last(WholeSeconds(t1)) {}
  bool IsAfterStart(const KVUGPSInfo& point) const { return isValid && WholeSeconds(point.time) >= first; }
  bool IsBeforeEnd(const KVUGPSInfo& point) const { return isValid && WholeSeconds(point.time) <= last; }

  bool isValid;
  std::int64_t first;
  std::int64_t last;
};

Points From(const KVUGPSInfoList& list, double first) {
  const auto index = std::max<std::int64_t>(Saturate<std::int64_t>(first), 0);
  return Points(list).subspan(std::min(static_cast<std::size_t>(index), list.size()));
}

bool IsValidFix(const KVUGPSInfo& point) { return point.status == 1; }

void Accumulate(std::span<KVUGPSInfo> points, std::int32_t unit) {
  auto point = points.begin();
  for (; point != points.end() && !IsValidFix(*point); ++point) point->distance = 0.0;
  if (point == points.end()) return;
  point->distance = 0.0;
  double meters = 0.0;
  const KVUGPSInfo* previous = &*point;
  for (++point; point != points.end(); ++point) {
    if (IsValidFix(*point) || point->kind == GPSPointInterpolated) {
      meters += std::max(0.0, GeodesicDistance(*previous, *point));
      previous = &*point;
    }
    point->distance = DistanceInUnit(meters, unit);
  }
}

double PerHour(double distance, std::int64_t seconds) {
  return distance / (static_cast<double>(seconds) / kSecondsPerHour);
}

}  // namespace

double MaxSpeedInRange(const KVUGPSInfoList& list, const XpDateTime& t0, const XpDateTime& t1) {
  const Range range(t0, t1);
  double speed = 0.0;
  for (const KVUGPSInfo& point : list) {
    if (range.IsAfterStart(point) && range.IsBeforeEnd(point)) speed = std::max(speed, point.speed);
  }
  return speed;
}

double MaxSpeed(const KVUGPSInfoList& list) {
  double speed = 0.0;
  for (const KVUGPSInfo& point : list) speed = std::max(speed, point.speed);
  return speed;
}

double DistanceInRange(const KVUGPSInfoList& list, std::int32_t unit, const XpDateTime& t0,
                       const XpDateTime& t1) {
  const Range range(t0, t1);
  const auto isFix = [](const KVUGPSInfo& point) { return point.kind != GPSPointBeforeFix; };
  double meters = 0.0;
  const auto start = std::find_if(list.begin(), list.end(), isFix);
  for (auto p = start; p != list.end() && p + 1 != list.end(); ++p) {
    const auto q = p + 1;
    if (q->kind == GPSPointAfterFix) break;
    if (range.IsAfterStart(*p) && range.IsBeforeEnd(*q)) meters += GeodesicDistance(*p, *q);
  }
  return DistanceInUnit(meters, unit);
}

double AverageSpeedInRange(const KVUGPSInfoList& list, std::int32_t unit, const XpDateTime& t0,
                           const XpDateTime& t1) {
  const double distance = DistanceInRange(list, unit, t0, t1);
  const Range range(t0, t1);
  const std::int64_t seconds = range.isValid ? range.last - range.first : 0;
  if (distance <= 0.0 || seconds <= 0) return 0.0;
  return seconds == 1 ? distance : PerHour(distance, seconds);
}

void AccumulateDistance(KVUGPSInfoList& list, std::int32_t unit) { Accumulate(list, unit); }

void AccumulateDistanceFrom(KVUGPSInfoList& list, std::int32_t unit, const XpDateTime& t0) {
  if (list.size() < 2 || !t0.IsValid()) return;
  const std::int64_t first = WholeSeconds(t0);
  const auto start = std::find_if(list.begin(), list.end(), [first](const KVUGPSInfo& point) {
    return WholeSeconds(point.time) >= first;
  });
  Accumulate({start, list.end()}, unit);
}

double TotalDistance(const KVUGPSInfoList& list, std::int32_t unit, double first) {
  const Points points = From(list, first);
  const auto start = std::find_if(points.begin(), points.end(), IsValidFix);
  double meters = 0.0;
  for (auto p = start; p != points.end() && p + 1 != points.end(); ++p) {
    const auto q = p + 1;
    if (q->kind == GPSPointAfterFix) break;
    meters += GeodesicDistance(*p, *q);
  }
  return DistanceInUnit(meters, unit);
}

double AverageSpeed(const KVUGPSInfoList& list, std::int32_t unit, double first) {
  const double distance = TotalDistance(list, unit, first);
  const Points points = From(list, first);
  const auto seconds = Saturate<std::int64_t>(static_cast<double>(list.size()) - std::max(first, 0.0));
  if (distance <= 0.0 || seconds <= 0 || points.empty()) return 0.0;
  return seconds == 1 ? points[0].speed : PerHour(distance, seconds);
}

void TrackBounds(const KVUGPSInfoList& list, double first, KVSGPSBounds& bounds) {
  double bottom = 0.0;
  double right = 0.0;
  bool isEmpty = true;
  for (const KVUGPSInfo& point : From(list, first)) {
    if (!IsValidFix(point) && point.kind != GPSPointInterpolated && point.kind != GPSPointHeld) continue;
    if (isEmpty) {
      bounds.top = bottom = point.latitude;
      bounds.left = right = point.longitude;
      isEmpty = false;
      continue;
    }
    bounds.top = std::max(bounds.top, point.latitude);
    bottom = std::min(bottom, point.latitude);
    bounds.left = std::min(bounds.left, point.longitude);
    right = std::max(right, point.longitude);
  }
  if (isEmpty) return;
  bounds.width = right - bounds.left;
  bounds.height = bounds.top - bottom;
}

}  // namespace vrx::gps
