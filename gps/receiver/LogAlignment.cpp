#include "gps/receiver/LogAlignment.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "foundation/number/Saturate.h"
#include "gps/receiver/UtcTime.h"

namespace vrx::receiver {
namespace {

constexpr std::int64_t kHour = 3600;
constexpr std::int64_t kQuarterHour = 900;
constexpr std::int64_t kFarthestZone = 14 * kHour;
constexpr int kMostZoneMinutes = 24 * 60;
/// Receivers start after the camera or stop before it, so the log need not cover the movie to its ends.
constexpr std::int64_t kTolerance = 60;

/// Corrections that would bring the shorter of movie and log into the longer one, in seconds.
struct Corrections {
  std::int64_t least = 0;
  std::int64_t most = 0;

  bool Holds(std::int64_t value) const { return value >= least && value <= most; }
  /// False when the range is so wide that it holds a multiple of `step` by chance.
  bool Tells(std::int64_t step) const { return SaturatedSubtract(most, least) < step; }
};

bool IsZone(const std::optional<int>& minutes) {
  return !minutes || std::abs(std::int64_t{*minutes}) <= kMostZoneMinutes;
}

/// The multiple of `step` in the range that is nearest to 0 without being it; nothing when there is none.
std::optional<std::int64_t> SmallestMultiple(const Corrections& range, std::int64_t step) {
  if (range.Holds(0)) return {};
  const bool isPositive = range.least > 0;
  const std::int64_t nearest = isPositive ? range.least : -range.most;
  const std::int64_t multiple = (nearest + step - 1) / step * step;
  const std::int64_t signedMultiple = isPositive ? multiple : -multiple;
  return range.Holds(signedMultiple) ? std::optional(signedMultiple) : std::nullopt;
}

void FindZone(const Corrections& range, Alignment& alignment) {
  // In a long log some whole hour always fits; a wrong zone is still likelier than another recording then.
  for (const std::int64_t step : {kHour, 2 * kQuarterHour, kQuarterHour}) {
    if (step < kHour && !range.Tells(step)) return;
    const auto zone = SmallestMultiple(range, step);
    if (!zone || std::abs(*zone) > kFarthestZone) continue;
    alignment.mismatch = std::abs(*zone) == kHour ? Mismatch::OneHour : Mismatch::Zone;
    alignment.correctionSeconds = *zone;
    return;
  }
}

void FindDays(const Corrections& range, Alignment& alignment) {
  // A receiver that has rolled over may be in the wrong zone, too.
  const Corrections wide{SaturatedSubtract(range.least, kFarthestZone),
                         SaturatedAdd(range.most, kFarthestZone)};
  const auto rollover = SmallestMultiple(wide, kWeekRolloverSeconds);
  const auto days = SmallestMultiple(range, kSecondsPerDay);
  if (rollover && wide.Tells(kWeekRolloverSeconds) && std::abs(*rollover) <= 2 * kWeekRolloverSeconds) {
    alignment.mismatch = Mismatch::WeekRollover;
    alignment.correctionSeconds = *rollover;
  } else if (days && range.Tells(kSecondsPerDay)) {
    alignment.mismatch = Mismatch::WholeDays;
    alignment.correctionSeconds = *days;
  }
}

void FindMismatch(const LogSpan& log, Alignment& alignment) {
  alignment.mismatch = Mismatch::OtherRecording;
  const std::int64_t toFirst = log.firstUtcMilliseconds / kMillisecondsPerSecond - alignment.startUtcSeconds;
  const std::int64_t toLast = log.lastUtcMilliseconds / kMillisecondsPerSecond - alignment.startUtcSeconds;
  const auto movieSeconds = Saturate<std::int64_t>(alignment.movieSeconds.value_or(0));
  alignment.correctionSeconds = toLast < 0 ? toLast : SaturatedSubtract(toFirst, movieSeconds);
  const std::int64_t ends = SaturatedSubtract(toLast, movieSeconds);
  const Corrections range{SaturatedSubtract(std::min(toFirst, ends), kTolerance),
                          SaturatedAdd(std::max(toFirst, ends), kTolerance)};
  FindZone(range, alignment);
  if (alignment.mismatch == Mismatch::OtherRecording) FindDays(range, alignment);
}

void FindOverlap(const LogSpan& log, Alignment& alignment) {
  const auto onMovieClock = [&](std::int64_t utcMilliseconds) {
    const std::int64_t start = alignment.startUtcSeconds * kMillisecondsPerSecond;
    return static_cast<double>(SaturatedSubtract(utcMilliseconds, start)) /
           static_cast<double>(kMillisecondsPerSecond);
  };
  const double from = std::max(onMovieClock(log.firstUtcMilliseconds), 0.0);
  double to = onMovieClock(log.lastUtcMilliseconds);
  if (alignment.movieSeconds) to = std::min(to, *alignment.movieSeconds);
  alignment.hasOverlap = from <= to;
  if (!alignment.hasOverlap) return;
  alignment.coveredFromSeconds = from;
  alignment.coveredToSeconds = to;
}

/// "03:07", with hours from one hour on.
std::string ClockOf(double seconds) {
  const auto whole = std::max<std::int64_t>(Saturate<std::int64_t>(seconds), 0);
  const std::string text = Digits(whole / 60 % 60, 2) + ":" + Digits(whole % 60, 2);
  return whole < kHour ? text : std::to_string(whole / kHour) + ":" + text;
}

/// "2 hours", "5 hours and 45 minutes".
std::string HoursText(std::int64_t seconds) {
  const std::int64_t hours = seconds / kHour;
  const std::int64_t minutes = seconds % kHour / 60;
  std::string text = hours == 0 ? "" : std::to_string(hours) + (hours == 1 ? " hour" : " hours");
  if (minutes == 0) return text;
  if (hours != 0) text += " and ";
  return text + std::to_string(minutes) + " minutes";
}

/// "40 days", below two of them "31:07:12".
std::string TimeText(std::int64_t seconds) {
  if (seconds < 2 * kSecondsPerDay) return ClockOf(static_cast<double>(seconds));
  return std::to_string(seconds / kSecondsPerDay) + " days";
}

}  // namespace

XpResult AlignLog(const MovieTime& movie, const AlignRequest& request, const LogSpan& log,
                  Alignment& alignment) {
  alignment = {};
  XpDateTime epoch;
  epoch.SetDateTime(kFirstYear, 1, 1, 0, 0, 0);
  std::int64_t localSeconds = 0;
  if (!movie.localStart.DifferenceInSeconds(epoch, localSeconds)) return XpErrInvalidArgument;
  if (!IsZone(movie.zoneMinutes) || !IsZone(request.zoneMinutes)) return XpErrInvalidArgument;
  if (log.firstUtcMilliseconds > log.lastUtcMilliseconds) return XpErrInvalidArgument;

  const std::int64_t readerStart = localSeconds - movie.zoneMinutes.value_or(0) * 60;
  const int zoneMinutes = request.zoneMinutes.value_or(movie.zoneMinutes.value_or(0));
  const std::int64_t start = request.startUtcSeconds.value_or(localSeconds - zoneMinutes * 60);
  alignment.startUtcSeconds = SaturatedAdd(start, request.offsetSeconds);
  alignment.shiftSeconds = SaturatedSubtract(alignment.startUtcSeconds, readerStart);
  alignment.isZoneAssumed = !request.zoneMinutes && !movie.zoneMinutes && !request.startUtcSeconds;
  if (movie.durationSeconds > 0) alignment.movieSeconds = movie.durationSeconds;
  using Shifts = std::numeric_limits<std::int32_t>;
  if (alignment.shiftSeconds < Shifts::min() || alignment.shiftSeconds > Shifts::max()) {
    return XpErrInvalidArgument;
  }
  FindOverlap(log, alignment);
  if (!alignment.hasOverlap) FindMismatch(log, alignment);
  return XpOk;
}

std::string DescribeOverlap(const Alignment& alignment) {
  if (!alignment.hasOverlap) return "the log covers nothing of the movie";
  std::string text = "the log covers " + ClockOf(alignment.coveredFromSeconds) + " to " +
                     ClockOf(alignment.coveredToSeconds);
  return alignment.movieSeconds ? text + " of " + ClockOf(*alignment.movieSeconds) : text + " of the movie";
}

std::string DescribeMismatch(const Alignment& alignment) {
  const std::int64_t apart = std::abs(alignment.correctionSeconds);
  const char* side = alignment.correctionSeconds > 0 ? "later" : "earlier";
  switch (alignment.mismatch) {
    case Mismatch::None:
      return {};
    case Mismatch::OneHour:
      return std::string("the log is one hour ") + side +
             " than the movie: a clock was probably not set to summer time or winter time";
    case Mismatch::Zone:
      return "the log is about " + HoursText(apart) + " " + side +
             " than the movie: the movie's clock was probably set to another time zone";
    case Mismatch::WeekRollover:
      return "the log's date is " + std::to_string(apart / kSecondsPerDay / 7) + " weeks " + side +
             " than the movie's: the receiver's count of weeks has probably overflowed";
    case Mismatch::WholeDays: {
      const std::int64_t days = apart / kSecondsPerDay;
      return "the log is " + std::to_string(days) + (days == 1 ? " day " : " days ") + side +
             " than the movie at the same time of day: a date is wrong, or it is the log of another day";
    }
    case Mismatch::OtherRecording:
      break;
  }
  return "the log " +
         (alignment.correctionSeconds < 0 ? "ends " + TimeText(apart) + " before the movie begins"
                                          : "begins " + TimeText(apart) + " after the movie ends") +
         ": it is probably the one of another recording";
}

}  // namespace vrx::receiver
