#include <cstddef>
#include <cstdio>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include <CLI/CLI.hpp>

#include "content/formats/XpFormatChecker.h"
#include "content/moff/MoffSource.h"
#include "content/moff/SfMoffFile.h"
#include "foundation/file/XpFileOperations.h"
#include "foundation/number/Saturate.h"
#include "foundation/platform/FileSystem.h"
#include "foundation/platform/Paths.h"
#include "gps/receiver/LogWriter.h"
#include "gps/receiver/UtcTime.h"
#include "host/Console.h"
#include "host/FileCauses.h"
#include "host/GpsCommands.h"
#include "host/GpsMovie.h"
#include "host/GpsReport.h"
#include "host/GpsSource.h"
#include "host/Moment.h"

namespace vrx::host {
namespace {

struct GpsImportOptions {
  std::string movie;
  std::string log;                 // NMEA 0183 or GPX
  std::int64_t offsetSeconds = 0;  // added to the movie's place in the log
  std::optional<int> zoneMinutes;  // of the movie's clock, east of UTC, in place of what the movie states
  std::string start;               // ISO 8601: where in the log the movie begins; empty: by the movie's date
  bool correctWeekRollover = false;
};

XpDateTime LocalTime(std::int64_t utcSeconds, int zoneMinutes) {
  XpDateTime date;
  const receiver::CivilTime time =
      receiver::CivilUtc((utcSeconds + std::int64_t{zoneMinutes} * 60) * receiver::kMillisecondsPerSecond);
  date.SetDateTime(time.year, time.month, time.day, time.hour, time.minute, time.second);
  return date;
}

/// A movie without a date of its own takes the one that --start and the zone make; the log then needs no
/// shift, and the painter document has to give the clip that date.
void DateMovie(const receiver::AlignRequest& request, receiver::MovieTime& movie) {
  if (movie.localStart.IsValid() || !request.startUtcSeconds) return;
  movie.localStart =
      LocalTime(*request.startUtcSeconds + request.offsetSeconds, movie.zoneMinutes.value_or(0));
  Say("note: the movie states no date; give its clip the OriginalDateTime " +
      receiver::IsoText((*request.startUtcSeconds + request.offsetSeconds +
                         std::int64_t{movie.zoneMinutes.value_or(0)} * 60) *
                        receiver::kMillisecondsPerSecond) +
      " in the painter document");
}

/// `offsetSeconds` is the one that was given.
void WarnOfMismatch(const receiver::Alignment& alignment, std::int64_t offsetSeconds) {
  if (alignment.hasOverlap) return;
  std::string advice;
  const std::int64_t better = SaturatedAdd(offsetSeconds, alignment.correctionSeconds);
  switch (alignment.mismatch) {
    case receiver::Mismatch::OneHour:
    case receiver::Mismatch::Zone:
    case receiver::Mismatch::WholeDays:
      advice = better == 0 ? "; if so, import it without --offset"
                           : "; if so, import it with --offset " + std::to_string(better);
      break;
    case receiver::Mismatch::WeekRollover:
      advice = "; if so, import it with --fix-week-rollover";
      break;
    case receiver::Mismatch::None:
    case receiver::Mismatch::OtherRecording:
      break;
  }
  Say("warning: " + receiver::DescribeMismatch(alignment) + advice);
}

/// Opens the movie's sidecar with all that it holds, or begins one.
bool OpenSidecar(const XpString& movie, SfMoffFile& sidecar, std::string& cause) {
  const XpString path = moff::MoffPathFor(movie);
  const bool exists = XpPathIsFile(path);
  const XpResult result = exists ? sidecar.OpenFully(movie) : sidecar.Create(movie);
  if (result == XpOk) return true;
  cause = exists && result == XpErrFileNotFound
              ? Utf8(path) + " belongs to another movie (" + CodeText(result) + ") and is left as it is"
          : exists ? Utf8(path) + " cannot be read and is left as it is: " + ReadCause(result)
                   : Utf8(movie) + " cannot be read: " + ReadCause(result);
  return false;
}

bool WriteSidecar(const XpString& movie, const std::string& log, std::string& cause) {
  SfMoffFile sidecar;
  if (!OpenSidecar(movie, sidecar, cause)) return false;
  XpResult result = sidecar.SetGroupData(moff::kGpsGroup, {}, std::as_bytes(std::span(log)));
  const XpString path = sidecar.GetMoffPath();
  if (result == XpOk) result = sidecar.Close(true);
  if (result != XpOk) cause = Utf8(path) + " cannot be written: " + WriteCause(result);
  return result == XpOk;
}

/// Why the two files cannot be a movie and a log; empty when they can.
std::string CauseAgainst(const XpString& movie, const XpString& log) {
  if (XpPathIsDirectory(movie)) return Utf8(movie) + " is a folder, not a movie";
  if (!XpPathIsFile(movie)) return Utf8(movie) + " does not exist";
  platform::FileStatus status;
  if (!platform::StatPath(movie, platform::Links::Follow, status) && status.isSpecial)
    return Utf8(movie) + " is a device, a pipe or a socket, not a movie";
  const formats::FormatCode format = XpFormatChecker::GetFormat(movie);
  if (format == formats::kMoff) return Utf8(movie) + " is a sidecar, not a movie";
  if (formats::FamilyOf(format) == formats::Family::Still) return Utf8(movie) + " is a picture, not a movie";
  if (platform::IsSameFile(movie, log)) return "the movie and the log are the same file";
  if (platform::IsSameFile(moff::MoffPathFor(movie), log)) return Utf8(log) + " is the movie's own sidecar";
  return {};
}

void PrintRead(const GpsSource& source, const receiver::Alignment& alignment) {
  const std::string rejected = RejectedText(source);
  std::printf("%s: %llu fixes, %zu seconds with a position%s\n", Plain(source.path).c_str(),
              static_cast<unsigned long long>(source.fixes), source.points.size(),
              rejected.empty() ? "" : Masked(", " + rejected).c_str());
  std::printf("%s\n", receiver::DescribeOverlap(alignment).c_str());
}

int RunGpsImport(const GpsImportOptions& options) {
  const XpString movie = platform::AbsolutePath(platform::PathFromNative(options.movie));
  const XpString log = platform::AbsolutePath(platform::PathFromNative(options.log));
  std::string cause = CauseAgainst(movie, log);
  if (!cause.empty()) return Fail(cause);
  GpsSource source;
  std::vector<receiver::Fix> seconds;
  if (!ReadReceiverLog(log, {options.correctWeekRollover}, source, seconds, cause)) return Fail(cause);
  for (const std::string& warning : source.warnings) Say("warning: " + Utf8(log) + ": " + warning);
  if (seconds.empty()) {
    const std::string rejected = RejectedText(source);
    return Fail(Utf8(log) + " holds no position" + (rejected.empty() ? "" : ": " + rejected));
  }

  receiver::AlignRequest request;
  request.offsetSeconds = options.offsetSeconds;
  request.zoneMinutes = options.zoneMinutes;
  if (!options.start.empty()) {
    const auto start = receiver::ParseIsoTime(options.start);
    if (start) request.startUtcSeconds = *start / receiver::kMillisecondsPerSecond;
  }
  receiver::MovieTime time = InspectMovie(movie);
  DateMovie(request, time);
  if (!time.localStart.IsValid()) {
    return Fail(Utf8(movie) + " states no date: --start DATETIME says at which moment of the log it begins");
  }
  receiver::Alignment alignment;
  const receiver::LogSpan span{seconds.front().utcMilliseconds, seconds.back().utcMilliseconds};
  if (receiver::AlignLog(time, request, span, alignment) != XpOk)
    return Fail(Utf8(log) + " and the movie are too far apart in time to be brought together");
  std::string text;
  if (receiver::WriteLog(seconds, {.shiftSeconds = alignment.shiftSeconds}, text) != XpOk)
    return Fail(Utf8(log) + ": its dates do not lie between the years 2000 and 2099");
  if (!WriteSidecar(movie, text, cause)) return Fail(cause);
  PrintRead(source, alignment);
  if (alignment.isZoneAssumed)
    Say("note: the movie states no time zone, so its clock was taken as UTC; --zone MINUTES says otherwise");
  WarnOfMismatch(alignment, options.offsetSeconds);
  return kDone;
}

}  // namespace

CommandRun AddGpsImport(CLI::App& gps) {
  const auto options = std::make_shared<GpsImportOptions>();
  constexpr std::int64_t kMostOffset = 2'000'000'000;
  constexpr int kMostZone = 14 * 60;
  CLI::App* command = gps.add_subcommand("import", "Write the log of a receiver into a movie's sidecar");
  command->add_option("MOVIE", options->movie, "The movie")->required();
  command->add_option("LOG", options->log, "An NMEA 0183 log or a GPX document")->required();
  command->add_option("--offset", options->offsetSeconds, "Seconds to add to the movie's place in the log")
      ->check(CLI::Range(-kMostOffset, kMostOffset));
  command
      ->add_option("--zone", options->zoneMinutes,
                   "Time zone of the movie's clock in minutes east of UTC, in place of what the movie states")
      ->check(CLI::Range(-kMostZone, kMostZone));
  command
      ->add_option("--start", options->start,
                   "Moment of the log at which the movie begins, as 2024-05-01T10:11:12Z or with +02:00")
      ->check(CheckMoment);
  command->add_flag("--fix-week-rollover", options->correctWeekRollover, kRolloverHelp);
  return [options] { return RunGpsImport(*options); };
}

}  // namespace vrx::host
