// Reads a GPS log for one stretch of time. What the overlay shows of a recording starts here; `vrx gps show`
// counts what a log holds.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "foundation/time/XpDateTime.h"
#include "gps/log/KVUGPSInfo.h"

/// What a log held, in lines.
struct KVUGPSLogCounts {
  std::uint64_t fixTimes = 0;      // sentences with a clock
  std::uint64_t positions = 0;     // sentences with a position, whatever became of them
  std::uint64_t voids = 0;         // of these, the ones that the receiver did not call valid
  std::uint64_t kept = 0;          // positions in the list
  std::uint64_t keptVoid = 0;      // of these, the ones that the receiver did not call valid
  std::uint64_t noClock = 0;       // valid ones without a fix time before them
  std::uint64_t noDate = 0;        // valid ones without a date
  std::uint64_t wrongTime = 0;     // valid ones with a date or clock that is none
  std::uint64_t outsideRange = 0;  // valid ones before or after the stretch that was asked for
  std::uint64_t tooLong = 0;       // lines beyond kMostLineBytes
  std::uint64_t others = 0;        // lines of other kinds
};

/// The state of one reading of one log.
struct KVUGPSLogReader {
  std::string lastFixTime;  // clock of the last fix-time sentence, hhmmss.sss in UTC
  XpDateTime optionTimeA;   // of the last option line
  XpDateTime optionTimeB;
  std::int32_t timeZoneMinutes = 0;
  KVUGPSLogCounts counts;
};

/// Reads a log in memory: its points from `first` to `last`, both included, in the clip's local time, which
/// is `timeZoneMinutes` ahead of UTC. `list` is cleared first. The last option line's second time minus its
/// first goes to `timeShiftSeconds`, by which the stretch moves; it and `logHasHeaderMark` stay as they are
/// when the log has no such line. Lines end with a line feed; what follows the last one is ignored, and so
/// are lines that cannot be read.
void ParseGPSLog(std::string_view log, KVUGPSLogReader& reader, const XpDateTime& firstLocal,
                 const XpDateTime& lastLocal, KVUGPSInfoList& list, std::int32_t timeZoneMinutes,
                 std::int64_t& timeShiftSeconds, bool& logHasHeaderMark);
