#include "src/timeline/TimelineBuilder.h"

#include "foundation/number/Saturate.h"
#include "src/project/ProjectPath.h"

namespace vrx::timeline {
namespace {

constexpr std::uint64_t kBasebandScale = 1000;  // a clip of still images keeps its milliseconds

VRXFileSourceStreamInfo MakeFileSource(const TKLXOutputXmlInfo& clip, const TimelineContext& context,
                                       std::int64_t in, std::int64_t out) {
  VRXFileSourceStreamInfo source(project::ResolvePath(context.projectPath, clip.sourceFile).AsView());
  source.sourceType = clip.sourceType;
  source.startTime = context.clock.At(in);
  source.endTime = context.clock.At(out);
  return source;
}

void AddToSums(ClipSums& sums, bool enableOverlay, std::int64_t in, std::int64_t out) {
  if (sums.clipRanges.empty()) {
    sums.clipRanges.emplace_back(in, out);
  } else {
    // The out time itself is added, not the clip's length.
    const std::int64_t last = sums.clipRanges.back().second;
    sums.clipRanges.emplace_back(last, SaturatedAdd(last, out));
  }
  if (enableOverlay) {
    sums.overlayDuration = SaturatedAdd(sums.overlayDuration, SaturatedSubtract(out, in));
  } else {
    sums.nonOverlayDurations.push_back(SaturatedSubtract(out, in));
  }
}

void AddBasebandClip(const TKLXOutputXmlInfo& clip, const TimelineContext& context, VRXTimeline& timeline) {
  VRXBasebandSourceStreamInfo source;
  source.rawInput = context.makeBaseband ? context.makeBaseband(clip) : nullptr;
  source.startTime = {static_cast<std::uint64_t>(Saturate<std::int64_t>(clip.startTime)), kBasebandScale};
  source.endTime = {static_cast<std::uint64_t>(Saturate<std::int64_t>(clip.endTime)), kBasebandScale};
  timeline.video.Add(source);
  if (context.reportVideo) context.reportVideo(clip, source);
}

}  // namespace

bool AddVideoTrack(const TKLXOutputXml::Track& track, const TimelineContext& context, VRXTimeline& timeline,
                   ClipSums& sums) {
  bool gpuBlockWanted = false;
  for (const auto& clip : track) {
    if (clip->sourceType == VRXSourceBaseband) {
      AddBasebandClip(*clip, context, timeline);
      continue;
    }
    gpuBlockWanted = gpuBlockWanted || clip->sourceType == VRXSourceFileWithGpuBlock;
    const std::int64_t in = context.clock.FloorToFrame(clip->startTime);
    const std::int64_t out = context.clock.FloorToFrame(clip->endTime);
    const VRXFileSourceStreamInfo source = MakeFileSource(*clip, context, in, out);
    AddToSums(sums, clip->enableOverlay, in, out);
    timeline.video.Add(source);
    if (context.reportVideo) context.reportVideo(*clip, source);
  }
  return gpuBlockWanted;
}

void AddAudioTrack(const TKLXOutputXml::Track& track, const TimelineContext& context, VRXTimeline& timeline) {
  for (const auto& clip : track) {
    const std::int64_t in = context.clock.FloorToFrame(clip->startTime);
    const std::int64_t out = context.clock.FloorToFrame(clip->endTime);
    const VRXFileSourceStreamInfo source = MakeFileSource(*clip, context, in, out);
    timeline.audio.Add(source);
    if (context.reportAudio) context.reportAudio(*clip, source);
  }
}

}  // namespace vrx::timeline
