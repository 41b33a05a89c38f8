#include "host/Commands.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "foundation/platform/Paths.h"
#include "host/ArgumentChecks.h"
#include "host/Console.h"
#include "host/EngineModule.h"
#include "host/Inspection.h"
#include "host/MovieTime.h"
#include "host/PngFile.h"
#include "host/ProblemText.h"
#include "src/job/RenderJob.h"
#include "vrx/VRXLimits.h"

namespace vrx::host {
namespace {

struct FrameOptions {
  std::string project;
  std::string picture;       // PNG file to write
  std::int64_t frame = -1;   // of the movie; below 0: `time` counts
  std::string time = "0";    // on the movie's clock
  bool overlayOnly = false;  // the overlays alone, on a transparent ground
};

// Range ends are signed numbers in unsigned fields: a range may end before the movie begins.
std::int64_t SignedValue(std::uint64_t value) { return static_cast<std::int64_t>(value); }

const VRXIntermediateRawOutputSetting* RangeOf(const VRXSystemOutputSetting& output, std::int64_t frame) {
  const std::int64_t time = frame * SignedValue(output.video->frameDuration.value);
  for (std::uint32_t i = 0; i < output.rawRangeCount; ++i) {
    const VRXIntermediateRawOutputSetting& range = *output.rawRanges[i];
    if (time >= SignedValue(range.startTime.value) && time <= SignedValue(range.endTime.value)) return &range;
  }
  return nullptr;
}

/// Bottom-up rows become top-down ones.
void TurnOver(std::vector<std::uint32_t>& pixels, std::size_t width) {
  for (std::size_t top = 0, bottom = pixels.size() - width; top < bottom; top += width, bottom -= width) {
    std::swap_ranges(pixels.begin() + static_cast<std::ptrdiff_t>(top),
                     pixels.begin() + static_cast<std::ptrdiff_t>(top + width),
                     pixels.begin() + static_cast<std::ptrdiff_t>(bottom));
  }
}

/// The clocks of overlays run along with the frames that are drawn on, so the frames before this one have to
/// pass them.
void RunClocksTo(job::RenderJob& job, std::int64_t frame) {
  const VRXSystemOutputSetting& output = *job.GetSystemOutput();
  const VRXIntermediateRawOutputSetting* range = RangeOf(output, frame);
  VRXIntermediateRawOutputCallback* callback = job.GetRawOutputCallback();
  if (range == nullptr || callback == nullptr) return;
  const std::int64_t length = SignedValue(output.video->frameDuration.value);
  const std::int64_t start = std::max<std::int64_t>(SignedValue(range->startTime.value), 0);
  const std::int64_t first = start / length + (start % length != 0 ? 1 : 0);
  callback->SkipFrames(static_cast<std::uint64_t>(first), static_cast<std::uint64_t>(frame));
}

/// The overlays alone, top-down with straight alpha; all clear outside the ranges.
void DrawOverlay(job::RenderJob& job, std::int64_t frame, std::vector<std::uint32_t>& pixels) {
  const VRXSystemOutputSetting& output = *job.GetSystemOutput();
  const VRXIntermediateRawOutputSetting* range = RangeOf(output, frame);
  VRXIntermediateRawOutputCallback* callback = job.GetRawOutputCallback();
  if (range == nullptr || callback == nullptr) return;
  std::vector<std::uint32_t> ground(pixels.size());
  const auto bytes = static_cast<std::uint32_t>(ground.size() * sizeof(std::uint32_t));
  callback->ProcessFrame(static_cast<std::uint64_t>(frame), ground.data(), bytes, range->stage,
                         range->format);
  const XpPixmap32* overlay = callback->GetOverlay();
  if (overlay == nullptr || overlay->data == nullptr) return;
  const auto* first = reinterpret_cast<const std::uint32_t*>(overlay->data);
  std::copy_n(first, pixels.size(), pixels.begin());
}

/// Why the project cannot give a frame at all; empty when nothing speaks against it.
std::string CauseWithout(const XpString& project, const check::ProjectReport& report) {
  const VRXVideoOutputSetting* video = report.videoSettings.get();
  const bool isUsable = video != nullptr && limits::IsUsableSide(video->width) &&
                        limits::IsUsableSide(video->height) &&
                        limits::IsUsableFrameLength(video->frameDuration.value, video->frameDuration.scale);
  if (isUsable && report.totalFrames > 0) return {};
  const check::Problem* error = report.FindError(false);
  return error == nullptr ? Utf8(project) + ": the movie has no frame" : ProblemText(*error);
}

/// Why `frame` is not in the movie; empty when it is.
std::string CauseWithout(const XpString& project, std::int64_t frame, std::int64_t frames) {
  if (frame < frames) return {};
  return Utf8(project) + ": the movie has " + std::to_string(frames) + " frames, from 0 to " +
         std::to_string(frames - 1) + ": there is no frame " + std::to_string(frame);
}

/// Why the engine gave no picture.
std::string EngineCause(const ProjectSource& project, const check::ProjectReport& report,
                        EngineModule& engine) {
  std::string cause = "the conversion engine gives no cause";
  for (const EngineLine& line : engine.TakeLines()) {
    if (line.severity == VRXLogError) cause = ProblemText(ProblemOf(project, report, line));
  }
  return cause;
}

int RunFrame(const FrameOptions& options) {
  const ProjectSource source(options.project);
  const XpString& project = source.GetName();
  EngineModule engine;
  std::string cause;
  if (!engine.Load(cause)) return Fail(cause);
  engine.Listen({});
  const check::ProjectReport report = InspectQuickly(source, engine);
  if (cause = CauseWithout(project, report); !cause.empty()) return Fail(cause);
  const VRXVideoOutputSetting& video = *report.videoSettings;
  const std::int64_t frame =
      options.frame >= 0 ? options.frame : FrameAt(*ParseMovieTime(options.time), video.frameDuration);
  if (cause = CauseWithout(project, frame, report.totalFrames); !cause.empty()) return Fail(cause);
  const XpString picture = platform::AbsolutePath(platform::PathFromNative(options.picture));
  if (const auto* input = FindOutputAmongInputs(picture, report.inputs)) {
    return Fail(options.picture + " is " + Utf8(input->Role()) + " and would be overwritten");
  }
  engine.TakeLines();
  job::RenderJob job;
  job.Load(source.GetPath());
  if (!job.IsUsable()) return Fail(Utf8(project) + ": changed while it was read");
  const auto width = static_cast<std::uint32_t>(video.width);
  const auto height = static_cast<std::uint32_t>(video.height);
  std::vector<std::uint32_t> pixels(std::size_t{width} * height);
  RunClocksTo(job, frame);
  if (options.overlayOnly) {
    DrawOverlay(job, frame, pixels);
  } else {
    if (!engine.RenderFrame(*job.GetTimeline(), *job.GetSystemOutput(), frame, pixels)) {
      return Fail(EngineCause(source, report, engine));
    }
    TurnOver(pixels, width);
  }
  if (!WritePng(picture, {width, height, pixels}, options.overlayOnly, cause)) {
    return Fail(options.picture + " cannot be written: " + cause);
  }
  return kDone;
}

}  // namespace

CommandRun AddFrame(CLI::App& command) {
  const auto options = std::make_shared<FrameOptions>();
  command.add_option("PROJECT", options->project, "The project document")->required();
  CLI::Option* frame =
      command.add_option("--frame", options->frame, "Number of the frame, from 0")->check(CheckCount);
  command
      .add_option("--time", options->time,
                  "A time on the movie's clock, instead of --frame: 12.5, 1:02.5, 00:01:02 or 310f")
      ->check(CheckMovieTime)
      ->excludes(frame);
  command.add_option("-o,--output", options->picture, "The PNG file to write")->required();
  command.add_flag("--overlay-only", options->overlayOnly, "The overlays alone, on a transparent ground");
  command.footer("Exit status: 0 done, 1 there is no such frame, 2 wrong use.");
  return [options] { return RunFrame(*options); };
}

}  // namespace vrx::host
