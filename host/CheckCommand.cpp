#include "host/Commands.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "host/Console.h"
#include "host/EngineModule.h"
#include "host/Inspection.h"
#include "host/ProblemText.h"
#include "host/ReportJson.h"
#include "host/SpanReport.h"
#include "src/check/ProjectReport.h"

namespace vrx::host {
namespace {

struct CheckOptions {
  std::vector<std::string> projects;
  bool strict = false;  // warnings are a refusal
  bool json = false;
  bool allowMissing = false;  // still pictures that are missing are warnings
};

/// `spans` stays empty for a project that the engine does not open.
check::ProjectReport Inspect(const ProjectSource& project, EngineSpans& spans) {
  EngineModule engine;
  std::string cause;
  if (engine.Load(cause)) {
    engine.KeepSpans();
    check::ProjectReport report = InspectWhole(project, engine);
    spans = engine.TakeSpans();
    return report;
  }
  check::ProjectReport report = check::CheckProject(project.GetInput(), {});
  project.NameFiles(report);
  report.problems.push_back({.severity = check::Severity::Error,
                             .file = project.GetName(),
                             .message = XpNarrowString(cause).ToWide()});
  report.SortProblems();
  return report;
}

void PrintOutput(const check::ProjectReport& report, const EngineSpans& spans) {
  if (report.videoSettings) {
    const VRXVideoOutputSetting& video = *report.videoSettings;
    const auto value = static_cast<double>(video.frameDuration.value);
    const double rate = value > 0.0 ? static_cast<double>(video.frameDuration.scale) / value : 0.0;
    std::printf("Picture  %d x %d, %.3f fps, %s", video.width, video.height, rate,
                video.codecType == 1 ? "MPEG-2" : "H.264");
    if (video.averageBitrate > 0) std::printf(", %.1f Mbit/s", video.averageBitrate / 1e6);
    std::printf("%s\n", video.interlace ? ", interlaced" : "");
  }
  if (report.audioSettings) {
    std::printf("Sound    %u Hz, %u channels\n", report.audioSettings->samplingRate,
                report.audioSettings->channels);
  } else {
    std::puts("Sound    none");
  }
  std::printf("Movie    %lld frames, %.3f s, to %s\n", static_cast<long long>(report.totalFrames),
              report.totalSeconds, Plain(report.outputPath).c_str());
  if (!spans.IsEmpty()) std::printf("Plan     %s\n", PlanText(spans).c_str());
}

void PrintTimeline(const check::ProjectReport& report) {
  std::printf("\n%-10s %5s %10s %9s %10s %10s  %s\n", "Track", "Clip", "Frame", "Frames", "Movie s",
              "Source s", "Source");
  for (const check::ClipRow& clip : report.clips) {
    std::printf("%-10s %5u %10lld %9lld %10.3f %10.3f  %s%s\n", Plain(clip.track).c_str(), clip.clip,
                static_cast<long long>(clip.firstFrame), static_cast<long long>(clip.frames), clip.movieStart,
                clip.sourceStart, Plain(clip.source).c_str(), clip.wholeSource ? " (whole)" : "");
  }
}

/// As it looks on the screen: the document's turns are those of the picture upside down.
std::string TurnText(const check::StillImageRow& row) {
  static constexpr std::array<const char*, 4> kTurns{"", "left", "upside down", "right"};
  const bool isKnown = row.rotation >= 0 && row.rotation < static_cast<std::int32_t>(kTurns.size());
  std::string text = isKnown ? kTurns[static_cast<std::size_t>(row.rotation)] : "";
  if (row.mirror) text += text.empty() ? "mirrored" : ", mirrored";
  return text.empty() ? "-" : text;
}

void PrintStillImages(const check::ProjectReport& report) {
  std::printf("\n%-5s %10s %10s %11s  %-15s %s\n", "Clip", "In", "Out", "Size", "Turned", "Still image");
  for (const check::StillImageRow& row : report.stillImages) {
    std::string size = row.width == 0 ? "?" : std::to_string(row.width) + "x" + std::to_string(row.height);
    std::printf("%-5u %10lld %10lld %11s  %-15s %s\n", row.clip, static_cast<long long>(row.inFrame),
                static_cast<long long>(row.outFrame), size.c_str(), TurnText(row).c_str(),
                Plain(row.picture).c_str());
  }
}

/// A caption's text on one line, shortened.
std::string ShortText(const XpString& text) {
  constexpr std::int32_t kLength = 40;
  std::string line = Utf8(text.Left(kLength)) + (text.Length() > kLength ? "..." : "");
  std::ranges::replace(line, '\n', ' ');
  return Masked(line);
}

void PrintOverlays(const check::ProjectReport& report) {
  std::printf("\nOverlays of %s\n", Plain(report.painterPath).c_str());
  for (const check::OverlayRow& row : report.overlays) {
    std::printf("  frames %lld to %lld, %.3f s to %.3f s\n", static_cast<long long>(row.firstFrame),
                static_cast<long long>(row.lastFrame), row.startSeconds, row.endSeconds);
  }
  if (report.overlays.empty()) std::puts("  no frame has any");
  for (const check::CaptionRow& row : report.captions) {
    std::printf("  caption %u, %.3f s to %.3f s, place %d: %s%s\n", row.number, row.startSeconds,
                row.endSeconds, row.layoutType, ShortText(row.text).c_str(),
                row.hiddenBecause.IsEmpty() ? "" : " (never shows)");
  }
}

void PrintGpsClips(const check::ProjectReport& report) {
  std::printf("\n%-8s %9s %15s %10s  %-15s %s\n", "VideoID", "Clip", "Positions", "Seconds", "Current",
              "Log");
  for (const check::GpsClipRow& row : report.gpsClips) {
    const std::string covered =
        row.fixes == 0 ? "none" : ClockText(row.firstFixSeconds) + " - " + ClockText(row.lastFixSeconds);
    std::string current;
    for (const auto& [start, end] : row.shown) {
      current += (current.empty() ? "" : ", ") + ClockText(start) + " - " + ClockText(end);
    }
    std::printf("%-8d %9s %15s %10llu  %-15s %s\n", row.videoId, ClockText(row.clipSeconds).c_str(),
                covered.c_str(), static_cast<unsigned long long>(row.fixes),
                current.empty() ? "never" : current.c_str(), Plain(row.log).c_str());
  }
}

void PrintHeader(const XpString& project, bool isFirst) {
  std::printf("%sProject  %s\n", isFirst ? "" : "\n", Plain(project).c_str());
}

void PrintText(const check::ProjectReport& report, const EngineSpans& spans) {
  if (report.videoSettings) PrintOutput(report, spans);
  if (!report.clips.empty()) PrintTimeline(report);
  if (!spans.IsEmpty()) std::printf("\nPictures\n%s", SpanLines(spans, report).c_str());
  if (!report.stillImages.empty()) PrintStillImages(report);
  if (!report.painterPath.IsEmpty()) PrintOverlays(report);
  if (!report.gpsClips.empty()) PrintGpsClips(report);
  if (report.problems.empty()) {
    std::puts("\nNo problems found.");
    return;
  }
  std::puts(report.clips.empty() ? "Problems" : "\nProblems");
  for (const check::Problem& problem : report.problems) std::printf("  %s\n", ProblemLine(problem).c_str());
}

int RunCheck(const CheckOptions& options) {
  const bool areSeveral = options.projects.size() > 1;
  Json documents = Json::array();
  int status = kDone;
  for (const std::string& argument : options.projects) {
    const ProjectSource project(argument);
    EngineSpans spans;
    check::ProjectReport report = Inspect(project, spans);
    if (options.allowMissing) report.AllowMissingPictures();
    if (report.HasErrors() || (options.strict && report.HasWarnings())) status = kFailed;
    if (options.json) {
      documents.push_back(ReportJson(argument, report, spans));
      continue;
    }
    if (areSeveral) PrintHeader(project.GetName(), &argument == &options.projects.front());
    PrintText(report, spans);
  }
  if (options.json) PrintJson(areSeveral ? documents : documents.front(), 2);
  return status;
}

}  // namespace

CommandRun AddCheck(CLI::App& command) {
  const auto options = std::make_shared<CheckOptions>();
  command.add_option("PROJECT", options->projects, "The project document, or several; - for standard input")
      ->required();
  command.add_flag("--json", options->json, "Print one JSON document; for several projects an array");
  command.add_flag("--allow-missing", options->allowMissing,
                   "Make warnings of still pictures that are missing");
  command.add_flag("--strict", options->strict, "Fail for warnings as well");
  command.footer(
      "Exit status: 0 every project can be rendered, 1 one cannot, or has a warning with --strict, 2 wrong "
      "use.");
  return [options] { return RunCheck(*options); };
}

}  // namespace vrx::host
