#include "src/timeline/TimelineBuilder.h"

#include <limits>

#include "src/project/ProjectPath.h"

namespace vrx::timeline {
namespace {

constexpr std::uint64_t kBasebandScale = 1000;  // a clip of still images keeps its milliseconds

/// Sums of hostile times stay at the limit.
std::int64_t Add(std::int64_t a, std::int64_t b) {
  std::int64_t sum = 0;
  if (!__builtin_add_overflow(a, b, &sum)) return sum;
  return a > 0 ? std::numeric_limits<std::int64_t>::max() : std::numeric_limits<std::int64_t>::min();
}

std::int64_t Subtract(std::int64_t a, std::int64_t b) {
  return Add(a,
             b == std::numeric_limits<std::int64_t>::min() ? std::numeric_limits<std::int64_t>::max() : -b);
}

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
    // The out time is added as it stands, not the clip's length.
    const std::int64_t last = sums.clipRanges.back().second;
    sums.clipRanges.emplace_back(last, Add(last, out));
  }
  if (enableOverlay) {
    sums.overlayDuration = Add(sums.overlayDuration, Subtract(out, in));
  } else {
    sums.nonOverlayDurations.push_back(Subtract(out, in));
  }
}

void AddBasebandClip(const TKLXOutputXmlInfo& clip, const TimelineContext& context, VRXTimeline& timeline) {
  VRXBasebandSourceStreamInfo source;
  source.rawInput = context.makeBaseband ? context.makeBaseband(clip) : nullptr;
  source.startTime = {static_cast<std::uint64_t>(ToInt64(clip.startTime)), kBasebandScale};
  source.endTime = {static_cast<std::uint64_t>(ToInt64(clip.endTime)), kBasebandScale};
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
