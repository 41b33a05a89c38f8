#include "host/CheckCommand.h"

#include <array>
#include <cstdio>

#include <nlohmann/json.hpp>

#include "foundation/platform/Paths.h"
#include "host/Console.h"
#include "host/EngineModule.h"
#include "src/check/ProjectReport.h"
#include "src/job/RenderJob.h"

namespace vrx::host {
namespace {

using Json = nlohmann::ordered_json;

/// Lets the engine open the whole job, so that what only it can know is found as well.
void TryJob(const XpString& project, EngineModule& engine, check::ProjectReport& report) {
  job::RenderJob job;
  job.Load(project);
  if (job.GetTimeline() == nullptr || job.GetSystemOutput()->video == nullptr) return;
  engine.TakeLines();
  const std::int32_t result = engine.Try(*job.GetTimeline(), *job.GetSystemOutput());
  bool told = false;
  for (const EngineLine& line : engine.TakeLines()) {
    if (line.severity == VRXLogInfo) continue;
    const bool isError = line.severity == VRXLogError;
    told = told || isError;
    report.problems.push_back({isError ? check::Severity::Error : check::Severity::Warning, project,
                               XpString(), 0, XpString(), XpNarrowString(line.text).ToWide()});
  }
  if (result == VRXEngineOk || told) return;
  report.problems.push_back({check::Severity::Error, project, XpString(), 0, XpString(),
                             u"the conversion engine refuses the project"});
}

check::ProjectReport Inspect(const CheckOptions& options) {
  const XpString project = platform::AbsolutePath(platform::PathFromNative(options.project));
  EngineModule engine;
  std::string cause;
  if (!engine.Load(cause)) {
    check::ProjectReport report = check::CheckProject(project, {});
    report.problems.push_back(
        {check::Severity::Error, project, XpString(), 0, XpString(), XpNarrowString(cause).ToWide()});
    return report;
  }
  engine.Listen({});  // what it says of single sources is told by the report
  check::ProjectReport report =
      check::CheckProject(project, [&](const XpString& path) { return engine.Probe(path); });
  if (!report.HasErrors()) TryJob(project, engine, report);
  return report;
}

void PrintOutput(const check::ProjectReport& report) {
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
              report.totalSeconds, Utf8(report.outputPath).c_str());
}

void PrintTimeline(const check::ProjectReport& report) {
  std::printf("\n%-10s %5s %10s %9s %10s %10s  %s\n", "Track", "Clip", "Frame", "Frames", "Movie s",
              "Source s", "Source");
  for (const check::ClipRow& clip : report.clips) {
    std::printf("%-10s %5u %10lld %9lld %10.3f %10.3f  %s%s\n", Utf8(clip.track).c_str(), clip.clip,
                static_cast<long long>(clip.firstFrame), static_cast<long long>(clip.frames), clip.movieStart,
                clip.sourceStart, Utf8(clip.source).c_str(), clip.wholeSource ? " (whole)" : "");
  }
}

/// As it looks on the screen: the document's turns are those of a picture that stands on its head.
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
                Utf8(row.picture).c_str());
  }
}

/// A caption's text on one line, shortened.
std::string ShortText(const XpString& text) {
  constexpr std::int32_t kLength = 40;
  std::string line = Utf8(text.Left(kLength)) + (text.Length() > kLength ? "..." : "");
  for (char& c : line) {
    if (static_cast<unsigned char>(c) < ' ') c = ' ';
  }
  return line;
}

void PrintOverlays(const check::ProjectReport& report) {
  std::printf("\nOverlays of %s\n", Utf8(report.painterPath).c_str());
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

void PrintText(const check::ProjectReport& report) {
  if (report.videoSettings) PrintOutput(report);
  if (!report.clips.empty()) PrintTimeline(report);
  if (!report.stillImages.empty()) PrintStillImages(report);
  if (!report.painterPath.IsEmpty()) PrintOverlays(report);
  if (report.problems.empty()) {
    std::puts("\nNo problems found.");
    return;
  }
  std::puts(report.clips.empty() ? "Problems" : "\nProblems");
  for (const check::Problem& problem : report.problems) std::printf("  %s\n", ProblemLine(problem).c_str());
}

Json OutputJson(const check::ProjectReport& report) {
  Json output{
      {"path", Utf8(report.outputPath)}, {"frames", report.totalFrames}, {"seconds", report.totalSeconds}};
  if (report.videoSettings) {
    output["video"] = {{"width", report.videoSettings->width},
                       {"height", report.videoSettings->height},
                       {"timeValue", report.videoSettings->frameDuration.value},
                       {"timeScale", report.videoSettings->frameDuration.scale},
                       {"averageBitrate", report.videoSettings->averageBitrate},
                       {"codecType", report.videoSettings->codecType},
                       {"specificationType", report.videoSettings->specificationType},
                       {"interlace", report.videoSettings->interlace}};
  }
  if (report.audioSettings) {
    output["audio"] = {{"codecType", report.audioSettings->codecType},
                       {"channels", report.audioSettings->channels},
                       {"bitsPerSample", report.audioSettings->bitsPerSample},
                       {"samplingRate", report.audioSettings->samplingRate}};
  }
  return output;
}

Json OverlaysJson(const check::ProjectReport& report) {
  Json overlays{
      {"document", Utf8(report.painterPath)}, {"ranges", Json::array()}, {"captions", Json::array()}};
  for (const check::OverlayRow& row : report.overlays) {
    overlays["ranges"].push_back({{"firstFrame", row.firstFrame},
                                  {"lastFrame", row.lastFrame},
                                  {"start", row.startSeconds},
                                  {"end", row.endSeconds}});
  }
  for (const check::CaptionRow& row : report.captions) {
    Json caption{{"number", row.number},         {"text", Utf8(row.text)},
                 {"start", row.startSeconds},    {"end", row.endSeconds},
                 {"layoutType", row.layoutType}, {"shows", row.hiddenBecause.IsEmpty()}};
    if (!row.hiddenBecause.IsEmpty()) caption["cause"] = Utf8(row.hiddenBecause);
    overlays["captions"].push_back(caption);
  }
  return overlays;
}

Json StillImagesJson(const check::ProjectReport& report) {
  Json images = Json::array();
  for (const check::StillImageRow& row : report.stillImages) {
    images.push_back({{"clip", row.clip},
                      {"line", row.line},
                      {"imageId", row.imageId},
                      {"picture", Utf8(row.picture)},
                      {"width", row.width},
                      {"height", row.height},
                      {"inFrame", row.inFrame},
                      {"outFrame", row.outFrame},
                      {"rotation", row.rotation},
                      {"mirror", row.mirror}});
  }
  return images;
}

Json ReportJson(const std::string& project, const check::ProjectReport& report) {
  Json document{{"project", project}, {"renderable", !report.HasErrors()}, {"output", OutputJson(report)}};
  document["timeline"] = Json::array();
  for (const check::ClipRow& clip : report.clips) {
    document["timeline"].push_back({{"track", Utf8(clip.track)},
                                    {"clip", clip.clip},
                                    {"source", Utf8(clip.source)},
                                    {"wholeSource", clip.wholeSource},
                                    {"firstFrame", clip.firstFrame},
                                    {"frames", clip.frames},
                                    {"movieStart", clip.movieStart},
                                    {"seconds", clip.seconds},
                                    {"sourceStart", clip.sourceStart}});
  }
  if (!report.stillImages.empty()) document["stillImages"] = StillImagesJson(report);
  if (!report.painterPath.IsEmpty()) document["overlays"] = OverlaysJson(report);
  document["problems"] = Json::array();
  for (const check::Problem& problem : report.problems) {
    Json entry{{"severity", SeverityName(problem.severity)}, {"file", Utf8(problem.file)}};
    if (problem.line != 0) entry["line"] = problem.line;
    if (!problem.track.IsEmpty()) entry["track"] = Utf8(problem.track);
    if (problem.clip != 0) entry["clip"] = problem.clip;
    if (!problem.key.IsEmpty()) entry["key"] = Utf8(problem.key);
    entry["message"] = Utf8(problem.message);
    document["problems"].push_back(entry);
  }
  return document;
}

}  // namespace

int RunCheck(const CheckOptions& options) {
  const check::ProjectReport report = Inspect(options);
  if (options.json) {
    // File names may hold bytes that are no text; JSON may not.
    std::puts(
        ReportJson(options.project, report).dump(2, ' ', false, Json::error_handler_t::replace).c_str());
  } else {
    PrintText(report);
  }
  return report.HasErrors() ? kFailed : kDone;
}

}  // namespace vrx::host
