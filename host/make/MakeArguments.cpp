#include "host/make/MakeArguments.h"

#include <array>

#include "foundation/file/XpFileOperations.h"
#include "foundation/platform/Paths.h"
#include "foundation/text/XpPath.h"
#include "gps/receiver/UtcTime.h"
#include "host/ArgumentChecks.h"
#include "host/Console.h"
#include "host/GpsCommands.h"
#include "host/Moment.h"

namespace vrx::host {
namespace {

constexpr std::array kGpsOptions{"--template", "--units", "--offset",
                                 "--zone",     "--start", "--fix-week-rollover"};
constexpr double kLeastPhotoSeconds = 0.1;
constexpr double kMostPhotoSeconds = 3600.0;

XpString PathOf(const std::string& argument) {
  return argument.empty() ? XpString() : platform::AbsolutePath(platform::PathFromNative(argument));
}

/// A name that has an @ itself is taken as it is where there is such a file.
std::size_t RangeMark(const std::string& argument) {
  const std::size_t at = argument.rfind('@');
  return at == argument.npos || at == 0 || XpPathExists(PathOf(argument), nullptr) ? argument.npos : at;
}

std::string CheckClip(const std::string& argument) {
  const std::size_t at = RangeMark(argument);
  if (at == argument.npos) return CheckName(argument);
  const std::string cause = CheckTimeRange(argument.substr(at + 1));
  return cause.empty() ? cause : argument + " is no file, and after its @ " + cause;
}

ClipRequest ClipOf(const std::string& argument) {
  const std::size_t at = RangeMark(argument);
  ClipRequest clip{.path = PathOf(argument.substr(0, at))};
  clip.name = FileName(clip.path);
  if (at != argument.npos) clip.range = *ParseTimeRange(argument.substr(at + 1));
  return clip;
}

}  // namespace

MovieRequest MakeArguments::GetRequest() const {
  MovieRequest request;
  for (const std::string& clip : clips) request.clips.push_back(ClipOf(clip));
  request.captions = PathOf(captions);
  request.music = PathOf(music);
  request.photoSeconds = photoSeconds;
  GpsRequest& log = request.gps;
  log.log = PathOf(gps);
  log.look = look;
  log.unit = unit;
  log.correctWeekRollover = correctWeekRollover;
  log.align.offsetSeconds = offsetSeconds;
  log.align.zoneMinutes = zoneMinutes;
  if (const auto moment = receiver::ParseIsoTime(start); !start.empty() && moment)
    log.align.startUtcSeconds = *moment / receiver::kMillisecondsPerSecond;
  return request;
}

void AddMakeOptions(CLI::App& command, MakeArguments& arguments) {
  command
      .add_option("CLIP", arguments.clips,
                  "Movies and pictures in their order; CLIP@FROM-TO takes a part, as ride.mp4@0:10-1:02.5")
      ->check(CheckClip);
  command.add_option("--captions", arguments.captions, "Captions: a SubRip (.srt) or WebVTT (.vtt) file")
      ->check(CheckName)
      ->option_text("FILE");
  command
      .add_option("--music", arguments.music,
                  "Sound in place of that of the clips; it begins again until the end")
      ->check(CheckName)
      ->option_text("FILE");
  command
      .add_option("--photo-seconds", arguments.photoSeconds, "How long each picture is shown (5 without it)")
      ->transform(CLI::Validator(
          [](std::string& text) { return ReadSeconds(text, kLeastPhotoSeconds, kMostPhotoSeconds); }, ""))
      ->option_text("TIME");
  command.add_option("--gps", arguments.gps, "Instruments of a GPS log of the same time: NMEA 0183 or GPX")
      ->check(CheckName)
      ->option_text("FILE");
  command.add_option("--template", arguments.look, "Their look: drive, sports, walk or graph")
      ->transform(NamedValues(std::map<std::string, GpsTemplate>{{"drive", GpsTemplate::Drive},
                                                                 {"sports", GpsTemplate::Sports},
                                                                 {"walk", GpsTemplate::Walk},
                                                                 {"graph", GpsTemplate::Graph}}))
      ->type_name("NAME")
      ->option_text("NAME");
  command.add_option("--units", arguments.unit, "Their units: km, miles or knots")
      ->transform(NamedValues(std::map<std::string, GpsUnit>{
          {"km", GpsUnit::Kilometres}, {"miles", GpsUnit::Miles}, {"knots", GpsUnit::Knots}}))
      ->type_name("UNITS")
      ->option_text("UNITS");
  AddAlignmentOptions(command, {arguments.offsetSeconds, arguments.zoneMinutes, arguments.start,
                                arguments.correctWeekRollover});
}

void CheckMake(const CLI::App& command) {
  for (const char* option : kGpsOptions) {
    if (command.count(option) != 0 && command.count("--gps") == 0)
      throw CLI::ValidationError(option, "needs --gps FILE");
  }
}

std::string CheckMovieEnding(const std::string& text) {
  constexpr std::array kEndings{".mp4", ".m4v", ".mov", ".ts", ".m2ts", ".mts"};
  const XpString ending = XpPathExtension(platform::PathFromNative(text));
  for (const char* known : kEndings) {
    if (XpCompareNoCase(ending, XpNarrowString(known).ToWide()) == 0) return {};
  }
  return (text.empty() ? "an empty name" : text) +
         " is no movie: its name ends in .mp4, .mov, .m4v, .ts, .m2ts or .mts";
}

std::string CheckProjectEnding(const std::string& text) {
  if (XpCompareNoCase(XpPathExtension(platform::PathFromNative(text)), u".vrx") == 0) return {};
  return (text.empty() ? "an empty name" : text) + " is no project: its name ends in .vrx";
}

}  // namespace vrx::host
