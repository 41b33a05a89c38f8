// The commands of `vrx`: what each is asked for, and the function that runs it and returns the exit status.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "foundation/log/LogChannel.h"
#include "host/RenderProgress.h"

namespace vrx::host {

/// `vrx render`: renders a project through the library as any other host would.
struct RenderOptions {
  std::string project;
  ProgressStyle progress = ProgressStyle::Auto;
  bool quiet = false;
  bool allowMissing = false;  // still pictures that are missing do not fail the render
};
int RunRender(const RenderOptions& options);

/// `vrx check`: the timeline of a project, its output and everything that is wrong with it, without
/// rendering.
struct CheckOptions {
  std::string project;
  bool json = false;
  bool allowMissing = false;  // still pictures that are missing are warnings
};
int RunCheck(const CheckOptions& options);

/// `vrx frame`: what one frame of the movie will look like, without rendering the others.
struct FrameOptions {
  std::string project;
  std::string picture;       // PNG file to write
  std::int64_t frame = -1;   // of the movie; below 0: `seconds` counts
  double seconds = 0.0;      // on the movie's clock
  bool overlayOnly = false;  // the overlays alone, on a transparent ground
};
int RunFrame(const FrameOptions& options);

/// `vrx config`: shows and changes the settings that the library and its hosts read.
enum class ConfigAction { Get, Set, List, Unset };
struct ConfigOptions {
  ConfigAction action = ConfigAction::List;
  std::string key;   // below the product's key, or from "Software" on; either separator
  std::string name;  // of a value; empty for the whole key
  std::string value;
  bool isText = false;  // store digits as a text, not as a number
  bool machine = false;
};
int RunConfig(const ConfigOptions& options);

/// `vrx logs`: shows the log of the current run, and new entries as they arrive.
struct LogsOptions {
  std::uint32_t channel = SfLogOutput;
  std::int64_t lines = 1000;  // the last ones
  bool follow = false;        // until interrupted
  bool path = false;          // print the path of the log instead
};
int RunLogs(const LogsOptions& options);

/// `vrx moff`: shows and checks the container of binary data beside a content, and takes data out of it.
enum class MoffAction { List, Extract, Validate };
struct MoffOptions {
  MoffAction action = MoffAction::List;
  std::string file;  // a content or its container
  bool json = false;
  std::uint32_t group = 0;  // id
  std::uint32_t entry = 1;  // of the group, from 1
  std::string output;       // of Extract
};
int RunMoff(const MoffOptions& options);

/// `vrx modd show`: the metadata beside a content.
struct ModdOptions {
  std::string file;  // a content or its sidecar
  bool json = false;
};
int RunModd(const ModdOptions& options);

/// `vrx gps import`: writes the log of a receiver into a movie's sidecar.
struct GpsImportOptions {
  std::string movie;
  std::string log;                 // NMEA 0183 or GPX
  std::int64_t offsetSeconds = 0;  // added to the movie's place in the log
  std::optional<int> zoneMinutes;  // of the movie's clock, east of UTC, in place of what the movie states
  std::string start;               // ISO 8601: where in the log the movie begins; empty: by the movie's date
  bool correctWeekRollover = false;
};
int RunGpsImport(const GpsImportOptions& options);

/// `vrx gps show`: what a log holds.
enum class GpsForm { Text, Json, Csv, Gpx };
struct GpsShowOptions {
  std::string file;  // a movie, a sidecar or a receiver's log
  GpsForm form = GpsForm::Text;
  bool points = false;  // each second in JSON
  std::string plot;     // PNG file to write; empty for none
  bool correctWeekRollover = false;
};
int RunGpsShow(const GpsShowOptions& options);

/// `vrx resources`: which pictures of the overlays there are, and why the others cannot be used.
struct ResourcesOptions {
  bool json = false;
};
int RunResources(const ResourcesOptions& options);

/// `vrx tennis import`: turns a table of shots into the tennis part of a painter document.
struct TennisImportOptions {
  std::string table;         // comma-separated values, see ShotTable.h
  std::string output;        // the painter document; other overlays of one that is there stay
  std::int32_t layout = 1;   // 1 full, 2 short
  std::int32_t unit = 0;     // of the speeds that are shown: 0 km/h, 1 mph, 2 knots
  std::string start;         // ISO 8601, local time: when the match began; empty: no date is shown
  bool skipBadRows = false;  // warn of them only
};
int RunTennisImport(const TennisImportOptions& options);

}  // namespace vrx::host
