#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include <CLI/CLI.hpp>

#include "content/formats/XpFormatChecker.h"
#include "content/moff/MoffSource.h"
#include "foundation/file/XpFileOperations.h"
#include "foundation/platform/FileSystem.h"
#include "foundation/platform/Paths.h"
#include "gps/receiver/UtcTime.h"
#include "host/Console.h"
#include "host/FileCauses.h"
#include "host/GpsCommands.h"
#include "host/GpsMovie.h"
#include "host/GpsReport.h"
#include "host/GpsSidecar.h"
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
  PlacedLog placed;
  if (!PlaceLog(seconds, request, Utf8(log), Utf8(movie), time, placed, cause)) return Fail(cause);
  if (placed.isDated) {
    Say("note: the movie states no date; give its clip the OriginalDateTime " +
        LocalDateText(time.localStart) + " in the painter document");
  }
  if (!WriteGpsSidecar(movie, placed.text, cause)) return Fail(cause);
  PrintRead(source, placed.alignment);
  if (placed.alignment.isZoneAssumed)
    Say("note: the movie states no time zone, so its clock was taken as UTC; --zone MINUTES says otherwise");
  if (const std::string line = MismatchText(placed.alignment, options.offsetSeconds, "import"); !line.empty())
    Say("warning: " + line);
  return kDone;
}

}  // namespace

CommandRun AddGpsImport(CLI::App& gps) {
  const auto options = std::make_shared<GpsImportOptions>();
  CLI::App* command = gps.add_subcommand("import", "Write the log of a receiver into a movie's sidecar");
  command->add_option("MOVIE", options->movie, "The movie")->required();
  command->add_option("LOG", options->log, "An NMEA 0183 log or a GPX document")->required();
  AddAlignmentOptions(
      *command, {options->offsetSeconds, options->zoneMinutes, options->start, options->correctWeekRollover});
  return [options] { return RunGpsImport(*options); };
}

}  // namespace vrx::host
