#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include <CLI/CLI.hpp>

#include "foundation/platform/FileSystem.h"
#include "foundation/platform/Paths.h"
#include "foundation/text/XpPath.h"
#include "gps/receiver/UtcTime.h"
#include "host/Console.h"
#include "host/GpsCommands.h"
#include "host/GpsFacts.h"
#include "host/GpsMovie.h"
#include "host/GpsReport.h"
#include "host/GpsSource.h"
#include "host/PngFile.h"
#include "host/TrackPlot.h"

namespace vrx::host {
namespace {

enum class GpsForm { Text, Json, Csv, Gpx };

struct GpsShowOptions {
  std::string file;  // a movie, a sidecar or a receiver's log
  GpsForm form = GpsForm::Text;
  bool points = false;  // each second in JSON
  std::string plot;     // PNG file to write; empty for none
  bool correctWeekRollover = false;
};

/// Where the movie lies in the log of its sidecar. Nothing when the movie states no date.
std::optional<receiver::Alignment> FindMovie(const GpsSource& source, const GpsFacts& facts) {
  if (source.movie.IsEmpty() || facts.track.empty()) return {};
  receiver::AlignRequest request;
  request.offsetSeconds = source.shiftSeconds;
  receiver::Alignment alignment;
  const receiver::LogSpan span{facts.start * receiver::kMillisecondsPerSecond,
                               facts.end * receiver::kMillisecondsPerSecond};
  const bool isKnown = receiver::AlignLog(InspectMovie(source.movie), request, span, alignment) == XpOk;
  return isKnown ? std::optional(alignment) : std::nullopt;
}

int WritePlot(const std::string& output, const GpsReport& report) {
  const XpString path = platform::AbsolutePath(platform::PathFromNative(output));
  for (const XpString& input : {report.source.path, report.source.movie}) {
    if (!platform::IsSameFile(path, input)) continue;
    return Fail(output + " is " + Utf8(input) + " and would be overwritten");
  }
  const XpString& named = report.source.movie.IsEmpty() ? report.source.path : report.source.movie;
  XpString stem;
  XpString extension;
  XpPathSplit(named, nullptr, &stem, &extension);
  TrackPlotLabels labels;
  labels.title = stem + extension;
  labels.facts =
      platform::PathFromNative(report.facts.track.empty() ? "no position" : GpsSummary(report.facts));
  if (report.movie && report.movie->movieSeconds) {
    const auto from = static_cast<double>(report.movie->startUtcSeconds - report.facts.start);
    labels.movie = {from, from + *report.movie->movieSeconds};
  }
  const std::vector<std::uint32_t> pixels = PlotTrack(report.facts.track, labels);
  std::string cause;
  if (WritePng(path, {kPlotWidth, kPlotHeight, pixels}, false, cause)) return kDone;
  return Fail(output + " cannot be written: " + cause);
}

int RunGpsShow(const GpsShowOptions& options) {
  const XpString path = platform::AbsolutePath(platform::PathFromNative(options.file));
  GpsSource source;
  std::string cause;
  if (!ReadGpsSource(path, {options.correctWeekRollover}, source, cause)) return Fail(cause);
  const GpsFacts facts = MakeFacts(source);
  const GpsReport report{source, facts, FindMovie(source, facts)};
  for (const std::string& warning : source.warnings) Say("warning: " + Utf8(source.path) + ": " + warning);
  switch (options.form) {
    case GpsForm::Text:
      PrintGpsText(report);
      break;
    case GpsForm::Json:
      PrintGpsJson(report, options.points);
      break;
    case GpsForm::Csv:
      PrintGpsCsv(report);
      break;
    case GpsForm::Gpx:
      PrintGpsGpx(report);
      break;
  }
  const int status = options.plot.empty() ? kDone : WritePlot(options.plot, report);
  if (status == kDone && facts.track.empty()) return Fail(Utf8(source.path) + " holds no position");
  return status;
}

}  // namespace

CommandRun AddGpsShow(CLI::App& gps) {
  const auto options = std::make_shared<GpsShowOptions>();
  CLI::App* command = gps.add_subcommand("show", "Print what a log holds, and draw it");
  command->add_option("FILE", options->file, "A movie, its sidecar, or a receiver's log")->required();
  const auto addForm = [&](const char* name, GpsForm form, const char* help) {
    return command->add_flag_callback(
        name, [options, form] { options->form = form; }, help);
  };
  CLI::Option* json = addForm("--json", GpsForm::Json, "Print one JSON document");
  CLI::Option* csv = addForm("--csv", GpsForm::Csv, "Print a table with a row for each second");
  CLI::Option* gpx = addForm("--gpx", GpsForm::Gpx, "Print a GPX document");
  json->excludes(csv)->excludes(gpx);
  csv->excludes(gpx);
  command->add_flag("--points", options->points, "Each second in the JSON document")->needs(json);
  command->add_option("--plot", options->plot, "PNG file to draw the track and its speed into");
  command->add_flag("--fix-week-rollover", options->correctWeekRollover, kRolloverHelp);
  return [options] { return RunGpsShow(*options); };
}

}  // namespace vrx::host
