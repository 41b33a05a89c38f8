#include "engine/StillFrame.h"

#include <memory>
#include <vector>

#include "engine/BasebandVideoSource.h"
#include "engine/BgrConversion.h"
#include "engine/EngineLog.h"
#include "engine/FileVideoSource.h"
#include "engine/FrameFitter.h"
#include "engine/OutputPlan.h"
#include "engine/TimelinePlan.h"
#include "engine/TimelineSources.h"

namespace vrx::engine {
namespace {

constexpr std::uint32_t kPixelBytes = 4;

Result FrameOfClip(const VideoClip& clip, std::int64_t index, const VideoPlan& video, FramePtr& frame) {
  if (clip.rawInput != nullptr) {
    BasebandVideoSource source(video.width, video.height);
    return source.FrameOf(*clip.rawInput, clip.firstRawFrame + static_cast<std::uint64_t>(index), frame);
  }
  const StopSignal never;
  std::unique_ptr<FileVideoSource> source;
  VRX_TRY(Report(clip.path, FileVideoSource::Open(clip.path, never, source)));
  source->BeginClip();
  const AVFrame* shown = nullptr;
  VRX_TRY(source->FrameAt(SourceTimeOfFrame(clip, index, video.frameDuration), shown));
  return FrameFitter(video.width, video.height).Fit(*shown, source->GetOrientation(), frame);
}

Result FrameOfMovie(const TimelinePlan& plan, std::int64_t number, const VideoPlan& video, FramePtr& frame) {
  for (std::size_t i = 0; i < plan.video.size(); ++i) {
    const ClipLogScope scope(VRXVideoTrack, i);
    const VideoClip& clip = plan.video[i];
    if (number < clip.frameCount) return FrameOfClip(clip, number, video, frame);
    number -= clip.frameCount;
  }
  return kInvalidArgument;
}

}  // namespace

Result RenderStillFrame(const VRXTimeline& timeline, const VRXSystemOutputSetting& output,
                        std::uint64_t number, std::span<std::uint32_t> pixels) {
  OutputPlan outputPlan;
  VRX_TRY(MakeOutputPlan(output, {}, outputPlan));
  const VideoPlan& video = outputPlan.video;
  TimelinePlan plan;
  VRX_TRY(MakeTimelinePlan(timeline, video.frameDuration, plan));
  std::vector<OverlaySpan> spans;
  VRX_TRY(MakeOverlaySpans(output, video.frameDuration, spans));
  std::int64_t total = 0;
  VRX_TRY(MeasureSources(video.frameDuration, plan, total));
  const auto count = static_cast<std::size_t>(video.width) * static_cast<std::size_t>(video.height);
  if (number >= static_cast<std::uint64_t>(total) || pixels.size() < count) return kInvalidArgument;

  FramePtr frame;
  const auto index = static_cast<std::int64_t>(number);
  VRX_TRY(FrameOfMovie(plan, index, video, frame));
  const BgrRows bottomUp{pixels.data() + static_cast<std::ptrdiff_t>(video.height - 1) * video.width,
                         -video.width};
  PlanarToBgr(PlanarPicture::Of(*frame), MatrixOfHeight(video.height), bottomUp);
  for (const OverlaySpan& span : spans) {
    if (index < span.first || index > span.last) continue;
    output.rawOutput->ProcessFrame(number, pixels.data(), static_cast<std::uint32_t>(count * kPixelBytes),
                                   span.stage, span.format);
  }
  return kOk;
}

}  // namespace vrx::engine
