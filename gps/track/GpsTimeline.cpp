#include "gps/track/GpsTimeline.h"

#include <algorithm>
#include <utility>

#include "content/modd/SfModdXML.h"
#include "content/probe/Mp4Probe.h"
#include "foundation/number/Saturate.h"
#include "gps/log/GpsTime.h"
#include "gps/log/ReadGPSLog.h"
#include "gps/track/ResampleTrack.h"

namespace vrx::gps {
namespace {

/// A number of seconds in a document, without its fraction.
std::int64_t WholePart(double seconds) { return Saturate<std::int64_t>(seconds); }

/// The points from `firstUtc` to one second after `lastUtc`. None of them is held or interpolated before the
/// first logged one, since what they were made of is not shown.
KVUGPSInfoList CopyShown(const KVUGPSInfoList& list, const XpDateTime& firstUtc, const XpDateTime& lastUtc) {
  KVUGPSInfoList shown;
  if (!firstUtc.IsValid() || !lastUtc.IsValid()) return shown;
  const std::int64_t first = WholeSeconds(firstUtc);
  const std::int64_t last = SaturatedAdd(WholeSeconds(lastUtc), 1);
  bool hasFix = false;
  for (const KVUGPSInfo& point : list) {
    const std::int64_t time = WholeSeconds(point.time);
    if (time < first || time > last) continue;
    hasFix = hasFix || point.kind == GPSPointLogged;
    shown.push_back(point);
    if (!hasFix) shown.back().kind = GPSPointBeforeFix;
  }
  return shown;
}

/// The points between the last fix and `next`, which is about to be appended, become the way between them.
void JoinClips(GpsTimeline& timeline, const KVUGPSInfo& next) {
  const std::size_t steps = timeline.points.size() - timeline.lastFixIndex;
  const KVUGPSInfo previous = timeline.points[timeline.lastFixIndex];
  for (std::size_t i = 1; i < steps; ++i) {
    KVUGPSInfo& point = timeline.points[timeline.lastFixIndex + i];
    point.kind = GPSPointInterpolated;
    InterpolatePosition(previous, next, static_cast<double>(i), static_cast<double>(steps - i), point);
  }
}

void AppendToTimeline(const ClipTrack& clip, GpsTimeline& timeline) {
  // Sidecars can state any number; offsets of 16 bits reach far beyond all zones.
  const auto minutes = static_cast<std::int16_t>(clip.summary.timeZoneMinutes);
  bool hasFix = false;
  for (KVUGPSInfo point : clip.points) {
    if (point.kind == GPSPointLogged) {
      if (!hasFix && timeline.lastFixIndex != 0) JoinClips(timeline, point);
      hasFix = true;
      timeline.lastFixIndex = timeline.points.size();
    }
    point.time = Moved(XpDateTime(point.time), kSecondsPerMinute * minutes).GetValue();
    timeline.points.push_back(point);
  }
  if (hasFix || timeline.lastFixIndex == 0) return;
  for (std::size_t i = timeline.lastFixIndex + 1; i < timeline.points.size(); ++i)
    timeline.points[i].kind = GPSPointAfterFix;
}

}  // namespace

double ClipSeconds(const LogDataEntry& clip, bool wholeClip) {
  return wholeClip ? clip.duration : clip.endTime - clip.startTime;
}

const ClipTrack* GpsTimeline::FindClip(std::int32_t videoId) const {
  const auto found = std::find_if(clips.rbegin(), clips.rend(),
                                  [videoId](const ClipTrack& clip) { return clip.videoId == videoId; });
  return found == clips.rend() ? nullptr : &*found;
}

std::int32_t FindTimeZoneMinutes(const XpString& gpsLogFilePath) {
  std::int32_t minutes = 0;
  SfModdXML sidecar(gpsLogFilePath);
  if (sidecar.Open(SfModdRead) == XpOk && sidecar.GetFileTimeZoneOffset(minutes) == XpOk) return minutes;
  XpDateTime date;
  if (GetOriginalDateTimeFromMP4(gpsLogFilePath, date, minutes) && minutes != kMp4NoTimeZone) return minutes;
  return 0;
}

void LoadGPSLog(const LogDataEntry& clip, GpsTimeline& timeline) {
  LogTrack track;
  KVSGPSClipSummary& summary = track.summary;
  summary.timeZoneMinutes = FindTimeZoneMinutes(clip.gpsLogFilePath);
  const XpDateTime firstLocal = clip.originalDateTime;
  const XpDateTime lastLocal = Moved(firstLocal, WholePart(clip.duration));
  KVUGPSLogReader reader;
  // A log that cannot be read leaves no points, which is a track without a position.
  ReadGPSLog(clip.gpsLogFilePath, reader, firstLocal, lastLocal, track.points, summary.timeZoneMinutes,
             summary.timeShiftSeconds, summary.logHasHeaderMark);
  ResampleTrack(track.points, Moved(firstLocal, summary.timeShiftSeconds),
                Moved(lastLocal, summary.timeShiftSeconds), summary.timeZoneMinutes);
  timeline.logs[clip.gpsLogFilePath] = std::move(track);
}

void AddClipToTimeline(const LogDataEntry& clip, double& accumulatedSeconds, GpsTimeline& timeline) {
  const auto found = timeline.logs.find(clip.gpsLogFilePath);
  if (found == timeline.logs.end()) return;
  LogTrack& log = found->second;
  ClipTrack track;
  track.videoId = clip.videoId;
  track.summary = log.summary;
  XpDateTime firstLocal = clip.originalDateTime;
  if (!timeline.drawTrimmedOutArea) firstLocal = Moved(firstLocal, WholePart(clip.startTime));
  const XpDateTime firstUtc =
      Moved(UtcFromLocal(firstLocal, log.summary.timeZoneMinutes), log.summary.timeShiftSeconds);
  const double length = ClipSeconds(clip, timeline.drawTrimmedOutArea);
  const XpDateTime lastUtc = Moved(firstUtc, WholePart(length));
  AccumulateDistanceFrom(log.points, timeline.unit, firstUtc);
  track.summary.distance = DistanceInRange(log.points, timeline.unit, firstUtc, lastUtc);
  track.summary.averageSpeed = AverageSpeedInRange(log.points, timeline.unit, firstUtc, lastUtc);
  track.summary.maxSpeed = MaxSpeedInRange(log.points, firstUtc, lastUtc);
  track.points = CopyShown(log.points, firstUtc, lastUtc);
  TrackBounds(track.points, 0.0, track.bounds);
  track.movieStartSeconds = accumulatedSeconds;
  accumulatedSeconds += length;
  track.movieEndSeconds = accumulatedSeconds;
  AppendToTimeline(track, timeline);
  timeline.clips.push_back(std::move(track));
}

void PrepareTimeline(const std::vector<LogDataEntry>& clips, GpsTimeline& timeline) {
  timeline.clips.clear();
  timeline.points.clear();
  timeline.lastFixIndex = 0;
  double accumulatedSeconds = 0.0;
  for (const LogDataEntry& clip : clips) {
    if (!timeline.logs.contains(clip.gpsLogFilePath)) LoadGPSLog(clip, timeline);
    AddClipToTimeline(clip, accumulatedSeconds, timeline);
  }
  AccumulateDistance(timeline.points, timeline.unit);
  timeline.totals = {};
  timeline.totals.distance = TotalDistance(timeline.points, timeline.unit, 0.0);
  timeline.totals.averageSpeed = AverageSpeed(timeline.points, timeline.unit, 0.0);
  timeline.totals.maxSpeed = MaxSpeed(timeline.points);
  timeline.bounds = {};
  TrackBounds(timeline.points, 0.0, timeline.bounds);
}

}  // namespace vrx::gps
