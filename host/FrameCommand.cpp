#include "host/FrameCommand.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "foundation/platform/Paths.h"
#include "host/Console.h"
#include "host/EngineModule.h"
#include "host/PngFile.h"
#include "src/check/ProjectReport.h"
#include "src/job/RenderJob.h"
#include "src/timeline/FrameClock.h"

namespace vrx::host {
namespace {

/// The frame that stands on the screen at `seconds`.
std::int64_t FrameAt(double seconds, const VRXTimeInfo& frameDuration) {
  const timeline::FrameClock clock(frameDuration);
  // A hair forward: a time that was copied from a frame's own start must give that frame.
  constexpr double kHairMs = 1e-6;
  return clock.IsUsable() ? clock.FloorToFrame(seconds * 1000.0 + kHairMs) / clock.GetFrameValue() : 0;
}

const VRXIntermediateRawOutputSetting* RangeOf(const VRXSystemOutputSetting& output, std::int64_t frame) {
  const std::uint64_t time = static_cast<std::uint64_t>(frame) * output.video->frameDuration.value;
  for (std::uint32_t i = 0; i < output.rawRangeCount; ++i) {
    const VRXIntermediateRawOutputSetting& range = *output.rawRanges[i];
    if (time >= range.startTime.value && time <= range.endTime.value) return &range;
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

int Fail(const std::string& cause) {
  Say("error: " + cause);
  return kFailed;
}

/// Why the engine gave no picture.
std::string Cause(EngineModule& engine, std::int64_t frame) {
  std::string cause = "the project has no frame " + std::to_string(frame);
  for (const EngineLine& line : engine.TakeLines()) {
    if (line.severity == VRXLogError) cause = line.text;
  }
  return cause;
}

}  // namespace

int RunFrame(const FrameOptions& options) {
  const XpString project = platform::AbsolutePath(platform::PathFromNative(options.project));
  EngineModule engine;
  std::string cause;
  if (!engine.Load(cause)) return Fail(cause);
  engine.Listen({});
  job::RenderJob job;
  job.Load(project);
  if (job.GetSystemOutput() == nullptr || job.GetSystemOutput()->video == nullptr) {
    for (const check::Problem& problem : check::CheckProject(project, {}).problems) Say(ProblemLine(problem));
    return kFailed;
  }
  const VRXVideoOutputSetting& video = *job.GetSystemOutput()->video;
  constexpr std::int32_t kLargestSide = 8192;
  if (video.width <= 0 || video.height <= 0 || video.width > kLargestSide || video.height > kLargestSide) {
    return Fail(Utf8(project) + ": Width and Height must lie between 16 and 8192 pixels");
  }
  const std::int64_t frame =
      options.frame >= 0 ? options.frame : FrameAt(options.seconds, video.frameDuration);
  const auto width = static_cast<std::uint32_t>(video.width);
  const auto height = static_cast<std::uint32_t>(video.height);
  std::vector<std::uint32_t> pixels(std::size_t{width} * height);
  if (options.overlayOnly) {
    DrawOverlay(job, frame, pixels);
  } else {
    if (!engine.RenderFrame(*job.GetTimeline(), *job.GetSystemOutput(), frame, pixels)) {
      return Fail(Utf8(project) + ": " + Cause(engine, frame));
    }
    TurnOver(pixels, width);
  }
  if (!WritePng(options.picture, {width, height, pixels}, options.overlayOnly, cause)) {
    return Fail(options.picture + " cannot be written: " + cause);
  }
  return kDone;
}

}  // namespace vrx::host
