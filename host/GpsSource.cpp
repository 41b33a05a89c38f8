#include "host/GpsSource.h"

#include "content/formats/XpFormatChecker.h"
#include "content/moff/MoffSource.h"
#include "foundation/file/XpFileOperations.h"
#include "gps/log/GpsTime.h"
#include "gps/log/ReadGPSLog.h"
#include "gps/receiver/GpxReader.h"
#include "gps/receiver/NmeaReader.h"
#include "gps/receiver/UtcTime.h"
#include "host/Console.h"
#include "host/FileCauses.h"
#include "host/WholeFile.h"

namespace vrx::host {
namespace {

constexpr std::int64_t kUnixEpoch = 25569 * receiver::kSecondsPerDay;  // 1970 as a serial date
constexpr std::int64_t kMostLogMiB = 1024;  // days of a receiver that writes twenty a second

/// All dates that a log can hold, whatever its shift is.
struct AnyTime {
  XpDateTime first;
  XpDateTime last;
  AnyTime() {
    first.SetDateTime(1000, 1, 1, 0, 0, 0);
    last.SetDateTime(9000, 1, 1, 0, 0, 0);
  }
};

KVUGPSInfo PointOf(const receiver::Fix& fix) {
  KVUGPSInfo point;
  const std::int64_t second = receiver::NearestSecond(fix);
  point.time = gps::FromWholeSeconds(second + kUnixEpoch).GetValue();
  point.latitude = fix.latitude * kArcSecondsPerDegree;
  point.longitude = fix.longitude * kArcSecondsPerDegree;
  point.speed = fix.speedKnots;
  point.milliseconds = second % receiver::kSecondsPerDay * receiver::kMillisecondsPerSecond;
  point.status = 1;
  return point;
}

void CountRejections(const receiver::ReceiverLog& log, GpsSource& source) {
  for (std::size_t i = 0; i < receiver::kRejections; ++i) {
    if (log.rejected[i] == 0) continue;
    source.rejected[receiver::RejectionName(static_cast<receiver::Rejection>(i))] = log.rejected[i];
  }
}

void CountRejections(const KVUGPSLogCounts& counts, GpsSource& source) {
  const std::pair<const char*, std::uint64_t> reasons[] = {{"no fix time before it", counts.noClock},
                                                           {"no date", counts.noDate},
                                                           {"unreadable date", counts.wrongTime},
                                                           {"line too long", counts.tooLong}};
  for (const auto& [reason, count] : reasons) {
    if (count != 0) source.rejected[reason] = count;
  }
}

bool ReadSidecar(const XpString& path, GpsSource& source, std::string& cause) {
  source.format = receiver::LogFormat::Moff;
  source.path = moff::MoffPathFor(path);
  std::string log;
  if (!XpPathIsFile(source.path)) {
    cause = Utf8(path) + " has no positions: there is no sidecar " + Utf8(source.path);
    return false;
  }
  const XpResult result = LoadGPSLogText(path, log, &source.movie);
  if (result == XpErrFileNotFound) {
    cause = Utf8(source.path) + " holds no GPS log, or belongs to another movie (" + CodeText(result) + ")";
  } else if (result != XpOk) {
    cause = Utf8(source.path) + " cannot be read: " + ReadCause(result);
  }
  if (result != XpOk) return false;
  KVUGPSLogReader reader;
  const AnyTime any;
  ParseGPSLog(log, reader, any.first, any.last, source.points, 0, source.shiftSeconds, source.hasHeaderMark);
  source.sentences = reader.counts.positions + reader.counts.fixTimes;
  source.fixes = reader.counts.kept - reader.counts.keptVoid;
  source.voids = reader.counts.voids;
  CountRejections(reader.counts, source);
  return true;
}

}  // namespace

std::int64_t UnixSeconds(const KVUGPSInfo& point) { return gps::WholeSeconds(point.time) - kUnixEpoch; }

bool ReadReceiverLog(const XpString& path, const GpsSourceOptions& options, GpsSource& source,
                     std::vector<receiver::Fix>& seconds, std::string& cause) {
  std::string bytes;
  if (!ReadWholeFile(path, kMostLogMiB, "log of a recording", bytes, cause)) return false;
  if (bytes.empty()) {
    cause = Utf8(path) + " is empty";
    return false;
  }
  source.path = path;
  source.format = receiver::DetectFormat(bytes);
  receiver::ReadOptions reading;
  reading.correctWeekRollover = options.correctWeekRollover;
  receiver::ReceiverLog log;
  XpResult result = XpErrInvalidFile;
  if (source.format == receiver::LogFormat::Gpx) result = receiver::ReadGpx(bytes, reading, log);
  if (source.format == receiver::LogFormat::Nmea) result = receiver::ReadNmea(bytes, reading, log);
  if (result != XpOk) {
    cause = Utf8(path) + " is neither an NMEA log nor a GPX document";
    if (!log.warnings.empty()) cause = Utf8(path) + ": " + log.warnings.front();
    return false;
  }
  source.sentences = log.sentences;
  source.fixes = log.validFixes;
  source.voids = log.voidFixes;
  source.passedOver = log.passedOver;
  source.warnings = log.warnings;
  CountRejections(log, source);
  seconds = receiver::ThinToSeconds(log.fixes, &source.left);
  receiver::FillSpeeds(seconds);
  for (const receiver::Fix& fix : seconds) source.points.push_back(PointOf(fix));
  return true;
}

bool ReadGpsSource(const XpString& path, const GpsSourceOptions& options, GpsSource& source,
                   std::string& cause) {
  const formats::FormatCode format = XpFormatChecker::GetFormat(path);
  const bool isSidecar = format == formats::kMoff || formats::FamilyOf(format) == formats::Family::Video;
  if (isSidecar) return ReadSidecar(path, source, cause);
  std::vector<receiver::Fix> seconds;
  if (ReadReceiverLog(path, options, source, seconds, cause)) return true;
  // A movie of a kind that has no format code, with a sidecar of its own.
  const XpString sidecar = moff::MoffPathFor(path);
  if (!sidecar.AsView().starts_with(path.AsView()) || !XpPathIsFile(sidecar)) return false;
  source = {};
  return ReadSidecar(path, source, cause);
}

}  // namespace vrx::host
