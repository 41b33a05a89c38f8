// Finds where a movie lies in the log of a receiver, from the movie's date and what the user knows better.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "foundation/time/XpDateTime.h"
#include "vrx/XpResult.h"

namespace vrx::receiver {

struct MovieTime {
  XpDateTime localStart;  // on the wall clock of the recording
  /// Minutes east of UTC as the movie's sidecar or the movie itself states them. The reader of logs looks
  /// there, too, and takes 0 when nothing is stated.
  std::optional<int> zoneMinutes;
  std::optional<double> durationSeconds;  // unknown, too, when it is not above 0
};

struct AlignRequest {
  std::int64_t offsetSeconds = 0;               // added to the movie's place in the log
  std::optional<int> zoneMinutes;               // of the movie's wall clock, in place of what it states
  std::optional<std::int64_t> startUtcSeconds;  // since 1970: where in the log the movie begins
};

/// From the first to the last fix, on the receiver's clock.
struct LogSpan {
  std::int64_t firstUtcMilliseconds = 0;
  std::int64_t lastUtcMilliseconds = 0;
};

/// What most likely keeps movie and log apart.
enum class Mismatch {
  None,
  OneHour,       // summer time
  Zone,          // other whole, half and quarter hours up to 14
  WeekRollover,  // the receiver's date is 1024 or 2048 weeks off
  WholeDays,
  OtherRecording,
};

struct Alignment {
  std::int64_t shiftSeconds = 0;     // what WriteLog takes
  std::int64_t startUtcSeconds = 0;  // where in the log the movie begins, since 1970
  bool isZoneAssumed = false;        // neither movie nor user gave a zone, so the wall clock was taken as UTC
  bool hasOverlap = false;
  double coveredFromSeconds = 0.0;  // since the movie's start; both are 0 without overlap
  double coveredToSeconds = 0.0;
  std::optional<double> movieSeconds;  // how long the movie is, when that is known
  Mismatch mismatch = Mismatch::None;  // only without overlap
  /// The smallest time of the kind of `mismatch` that would bring the movie into the log when it is added to
  /// the offset; for other recordings, the time between their end and the other's start.
  std::int64_t correctionSeconds = 0;
};

/// XpErrInvalidArgument when the movie has no date, when a zone is beyond a day, when the log's end is before
/// its start, or when movie and log are more than 32 bits of seconds apart.
XpResult AlignLog(const MovieTime& movie, const AlignRequest& request, const LogSpan& log,
                  Alignment& alignment);

/// "the log covers 00:00 to 12:41 of 14:05", on the movie's clock; without overlap, that there is none.
std::string DescribeOverlap(const Alignment& alignment);
/// The likeliest cause as a sentence; empty with an overlap.
std::string DescribeMismatch(const Alignment& alignment);

}  // namespace vrx::receiver
