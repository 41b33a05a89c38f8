#include "gps/track/ResampleTrack.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "gps/log/GpsTime.h"

namespace vrx::gps {
namespace {

// Arc-seconds. From this latitude on, a longitude says nothing.
constexpr double kPoleLatitude = 323999.95;
constexpr double kHalfTurn = 648000.0;
constexpr double kFullTurn = 1296000.0;

/// Builds the track, which does not grow beyond its limit.
class Track {
 public:
  explicit Track(KVUGPSInfoList& points) : m_points(points) {}

  void Append(const KVUGPSInfo& point) {
    if (m_points.size() < kMostTrackPoints) m_points.push_back(point);
  }

  /// Points of the `count` seconds from `start` on, all before the first fix.
  void AppendBeforeFix(std::int64_t start, std::int64_t count) {
    KVUGPSInfo point;
    point.kind = GPSPointBeforeFix;
    const std::int64_t fitting = Fitting(count);
    for (std::int64_t i = 0; i < fitting; ++i) AppendAt(start + i, point);
  }

  /// The seconds between two logged points.
  void AppendGap(const KVUGPSInfo& previous, const KVUGPSInfo& next) {
    const std::int64_t start = WholeSeconds(previous.time);
    const std::int64_t missing = Fitting(WholeSeconds(next.time) - start - 1);
    for (std::int64_t i = 1; i <= missing; ++i) {
      KVUGPSInfo point;
      point.time = FromWholeSeconds(start + i).GetValue();
      point.kind = i <= kHeldSeconds ? GPSPointHeld : GPSPointInterpolated;
      if (i <= kHeldSeconds) point.speed = previous.speed;
      InterpolatePoint(previous, next, point);
      m_points.push_back(point);
    }
  }

  /// The `count` seconds after the last logged point.
  void AppendAfter(const KVUGPSInfo& last, std::int64_t count) {
    const std::int64_t start = WholeSeconds(last.time);
    KVUGPSInfo held;
    held.kind = GPSPointHeld;
    held.speed = last.speed;
    held.latitude = last.latitude;
    held.longitude = last.longitude;
    KVUGPSInfo after;
    after.kind = GPSPointAfterFix;
    const std::int64_t fitting = Fitting(count);
    for (std::int64_t i = 1; i <= fitting; ++i) AppendAt(start + i, i <= kHeldSeconds ? held : after);
  }

 private:
  /// So many of `count` points as there is room for when the first of them is added.
  std::int64_t Fitting(std::int64_t count) const {
    return std::min(count, static_cast<std::int64_t>(kMostTrackPoints - m_points.size()));
  }
  void AppendAt(std::int64_t second, KVUGPSInfo point) {
    point.time = FromWholeSeconds(second).GetValue();
    m_points.push_back(point);
  }

  KVUGPSInfoList& m_points;
};

/// Seconds from `start` to `end`; 0 when one of them is not valid.
std::int64_t SecondsBetween(const XpDateTime& start, const XpDateTime& end) {
  return start.IsValid() && end.IsValid() ? WholeSeconds(end) - WholeSeconds(start) : 0;
}

}  // namespace

void ResampleTrack(KVUGPSInfoList& list, const XpDateTime& firstLocal, const XpDateTime& lastLocal,
                   std::int32_t timeZoneMinutes) {
  const XpDateTime firstUtc = UtcFromLocal(firstLocal, timeZoneMinutes);
  const XpDateTime lastUtc = UtcFromLocal(lastLocal, timeZoneMinutes);
  const KVUGPSInfoList logged = std::exchange(list, {});
  Track track(list);
  if (logged.empty()) {
    const std::int64_t seconds = SecondsBetween(firstUtc, lastUtc);
    if (seconds > 1) track.AppendBeforeFix(WholeSeconds(firstUtc), seconds + 1);
    return;
  }
  track.AppendBeforeFix(WholeSeconds(firstUtc), SecondsBetween(firstUtc, XpDateTime(logged.front().time)));
  for (std::size_t i = 0; i + 1 < logged.size(); ++i) {
    track.Append(logged[i]);
    track.AppendGap(logged[i], logged[i + 1]);
  }
  track.Append(logged.back());
  track.AppendAfter(logged.back(), SecondsBetween(XpDateTime(logged.back().time), lastUtc));
}

void InterpolatePoint(const KVUGPSInfo& previous, const KVUGPSInfo& next, KVUGPSInfo& point) {
  const std::int64_t time = WholeSeconds(point.time);
  InterpolatePosition(previous, next, static_cast<double>(time - WholeSeconds(previous.time)),
                      static_cast<double>(WholeSeconds(next.time) - time), point);
}

void InterpolatePosition(const KVUGPSInfo& previous, const KVUGPSInfo& next, double before, double after,
                         KVUGPSInfo& point) {
  const double steps = before + after;
  if (steps == 0.0) {
    point.latitude = previous.latitude;
    point.longitude = previous.longitude;
    return;
  }
  double from = previous.longitude;
  double to = next.longitude;
  const bool isAcross = (from > 0.0) != (to > 0.0) && std::abs(from) + std::abs(to) > kHalfTurn;
  if (isAcross) (from > 0.0 ? to : from) += kFullTurn;
  point.longitude = (to * before + from * after) / steps;
  if (point.longitude > kHalfTurn) point.longitude -= kFullTurn;
  point.latitude = (previous.latitude * after + next.latitude * before) / steps;
  if (point.latitude >= kPoleLatitude) point.longitude = 0.0;
}

}  // namespace vrx::gps
