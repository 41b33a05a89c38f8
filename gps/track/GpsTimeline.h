// The tracks of a movie: one for each log, the part of it that each clip shows, and all clips joined. The
// overlay is drawn from it; it is made before the first frame.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

#include "gps/log/KVUGPSInfo.h"
#include "gps/track/GpsUnits.h"
#include "gps/track/KVSGPSClipSummary.h"
#include "gps/track/TrackMetrics.h"
#include "overlay/document/LogDataEntry.h"

namespace vrx::gps {

/// The seconds of a clip that its overlay counts: all of it, or the part that is shown.
double ClipSeconds(const LogDataEntry& clip, bool wholeClip);

/// A log's track over the whole recording, in UTC.
struct LogTrack {
  KVUGPSInfoList points;
  KVSGPSClipSummary summary;
};

/// What one clip of the movie shows of its log's track.
struct ClipTrack {
  std::int32_t videoId = 0;
  KVUGPSInfoList points;  // in UTC
  KVSGPSClipSummary summary;
  KVSGPSBounds bounds;
  double movieStartSeconds = 0.0;
  double movieEndSeconds = 0.0;
};

struct GpsTimeline {
  std::int32_t unit = kGpsUnitKilometers;
  bool drawTrimmedOutArea = true;  // whole clips count, not only the parts that are shown

  std::map<XpString, LogTrack> logs;  // by path; kept from one preparation to the next
  std::vector<ClipTrack> clips;       // in the order of the movie
  KVUGPSInfoList points;              // all clips joined, in local time
  KVSGPSClipSummary totals;
  KVSGPSBounds bounds;
  std::size_t lastFixIndex = 0;  // of the joined points; 0: no fix yet

  /// The last one with that number; null when there is none.
  const ClipTrack* FindClip(std::int32_t videoId) const;
};

/// Reads the log of a clip and makes its track; one that cannot be read gives a track without a position. The
/// zone comes from the movie's sidecar, else from the movie, else it is UTC.
void LoadGPSLog(const LogDataEntry& clip, GpsTimeline& timeline);

/// Appends the part of its log's track that the clip shows; does nothing for a log that was not loaded.
/// `accumulatedSeconds` is where the clip begins in the movie, and ends up where it ends.
void AddClipToTimeline(const LogDataEntry& clip, double& accumulatedSeconds, GpsTimeline& timeline);

/// Replaces the clips, the joined points and the totals. Logs that were read before are kept.
void PrepareTimeline(const std::vector<LogDataEntry>& clips, GpsTimeline& timeline);

/// The zone that LoadGPSLog uses for a movie, in minutes ahead of UTC.
std::int32_t FindTimeZoneMinutes(const XpString& gpsLogFilePath);

}  // namespace vrx::gps
