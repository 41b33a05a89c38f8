// The positions that a log of any kind holds, brought into one form: what `vrx gps` shows and imports.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "gps/log/KVUGPSInfo.h"
#include "gps/receiver/LogFormat.h"
#include "gps/receiver/ReceiverLog.h"
#include "gps/receiver/SecondFixes.h"
#include "vrx/XpString.h"

namespace vrx::host {

struct GpsSource {
  XpString path;   // of the file with the positions: a receiver's log or a sidecar
  XpString movie;  // that the sidecar belongs to; empty for a receiver's log
  receiver::LogFormat format = receiver::LogFormat::Unknown;

  KVUGPSInfoList points;  // one a second where there is a position, in UTC

  std::uint64_t sentences = 0;                    // track points of GPX
  std::uint64_t fixes = 0;                        // with a position, before they are thinned to one a second
  std::uint64_t voids = 0;                        // that the receiver itself does not trust
  std::map<std::string, std::uint64_t> rejected;  // by reason
  std::map<std::string, std::uint64_t> passedOver;  // sentences of other types
  receiver::ThinCounts left;                        // fixes that `points` does not have
  std::vector<std::string> warnings;

  std::int64_t shiftSeconds = 0;  // of a sidecar: the log's clock minus UTC
  bool hasHeaderMark = false;     // of a sidecar
};

struct GpsSourceOptions {
  bool correctWeekRollover = false;
};

/// Reads a receiver's log, a sidecar, or the sidecar of a movie at a native path. False with the cause, which
/// names the file.
bool ReadGpsSource(const XpString& path, const GpsSourceOptions& options, GpsSource& source,
                   std::string& cause);

/// A receiver's log alone, as fixes of one a second with speeds.
bool ReadReceiverLog(const XpString& path, const GpsSourceOptions& options, GpsSource& source,
                     std::vector<receiver::Fix>& seconds, std::string& cause);

/// Seconds since 1970 of a point.
std::int64_t UnixSeconds(const KVUGPSInfo& point);

}  // namespace vrx::host
