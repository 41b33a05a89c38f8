// Turns the points that a log gives into a track of one point a second, so that the second of a clip is an
// index, and fills the gaps.
#pragma once

#include <cstdint>

#include "foundation/time/XpDateTime.h"
#include "gps/log/KVUGPSInfo.h"

namespace vrx::gps {

/// A position is held for so many seconds of a gap, and after the last logged point.
inline constexpr std::int64_t kHeldSeconds = 3;

/// A track ends at this many points (eleven days): documents can state any duration.
inline constexpr std::size_t kMostTrackPoints = 1'000'000;

/// Replaces the points of `list`, in UTC, by one a second from `firstLocal` to `lastLocal`, which are in a
/// local time `timeZoneMinutes` ahead of UTC. Logged points stay as they are, also two of the same second and
/// those that run backwards. Times that are not valid give no seconds to fill.
void ResampleTrack(KVUGPSInfoList& list, const XpDateTime& firstLocal, const XpDateTime& lastLocal,
                   std::int32_t timeZoneMinutes);

/// Gives `point` the position between two others that its time has; that of `previous` when all three have
/// the same time.
void InterpolatePoint(const KVUGPSInfo& previous, const KVUGPSInfo& next, KVUGPSInfo& point);

/// The same where `point` lies `before` steps after `previous` and `after` steps before `next`. Places more
/// than half a turn apart are joined across the antimeridian, and the pole has longitude 0.
void InterpolatePosition(const KVUGPSInfo& previous, const KVUGPSInfo& next, double before, double after,
                         KVUGPSInfo& point);

}  // namespace vrx::gps
