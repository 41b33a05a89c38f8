#include "engine/TimelinePlan.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <numeric>

#include "engine/EngineLog.h"
#include "engine/SourcePath.h"
#include "vrx/XpTextCodec.h"

namespace vrx::engine {
namespace {

constexpr std::uint32_t kMaxClips = 1'000'000;

/// Each time in units of its own, since a host may give the two in different scales. Neither is negative.
struct ClipTimes {
  std::int64_t start;
  std::int64_t startScale;
  std::int64_t end;
  std::int64_t endScale;

  /// Units to a second in which both are whole numbers.
  Int128 CommonScale() const { return Int128{startScale} * endScale; }
  /// From start to end, in the common unit.
  Int128 Length() const { return Int128{end} * startScale - Int128{start} * endScale; }
};

bool UsableScale(std::uint64_t scale) {
  return scale >= 1 && scale <= static_cast<std::uint64_t>(kMaxTimeScale);
}

std::int64_t Clamp64(Int128 value) {
  return static_cast<std::int64_t>(std::clamp<Int128>(value, INT64_MIN, INT64_MAX));
}

/// A time before the source's beginning counts as 0. An end without a scale has the start's.
Result ReadTimes(const VRXSourceStreamInfoBase& source, ClipTimes& times) {
  const std::uint64_t scale = source.startTime.scale;
  const std::uint64_t endScale = source.endTime.scale == 0 ? scale : source.endTime.scale;
  if (!UsableScale(scale) || !UsableScale(endScale)) {
    const std::uint64_t wrong = UsableScale(scale) ? endScale : scale;
    Log(VRXLogError, "the clip has the time scale " + std::to_string(wrong));
    return kUnusableSettings;
  }
  times.start = std::max<std::int64_t>(static_cast<std::int64_t>(source.startTime.value), 0);
  times.startScale = static_cast<std::int64_t>(scale);
  times.end = std::max<std::int64_t>(static_cast<std::int64_t>(source.endTime.value), 0);
  times.endScale = static_cast<std::int64_t>(endScale);
  return kOk;
}

std::int64_t WholeFrames(Int128 ticks, Int128 scale, FrameDuration duration) {
  return Clamp64(FloorDivide(ticks * duration.scale, scale * duration.value));
}

Result ReadFileClip(const VRXSourceStreamInfoBase& source, std::string& path) {
  const auto* file = dynamic_cast<const VRXFileSourceStreamInfo*>(&source);
  if (file == nullptr || file->path == nullptr) {
    Log(VRXLogError, "the clip's record names no file");
    return kInvalidArgument;
  }
  path = NativePath(file->path->Get());
  if (!path.empty()) return kOk;
  const std::string given = textcodec::ToUtf8(file->path->Get());
  Log(VRXLogError,
      given.empty() ? "the clip's path is empty" : given + " is on a drive that does not exist here");
  return kSourceMissing;
}

Result MakeBasebandClip(const VRXSourceStreamInfoBase& source, FrameDuration duration, VideoClip& clip) {
  const auto* baseband = dynamic_cast<const VRXBasebandSourceStreamInfo*>(&source);
  if (baseband == nullptr || baseband->rawInput == nullptr) {
    Log(VRXLogError, "the clip has no picture source");
    return kInvalidArgument;
  }
  ClipTimes times{};
  VRX_TRY(ReadTimes(source, times));
  const std::int64_t first = WholeFrames(times.start, times.startScale, duration);
  const std::int64_t end = WholeFrames(times.end, times.endScale, duration);
  clip.rawInput = baseband->rawInput;
  clip.firstRawFrame = static_cast<std::uint64_t>(first);
  clip.frameCount = std::max<std::int64_t>(end - first, 0);
  return kOk;
}

Result MakeFileClip(const VRXSourceStreamInfoBase& source, FrameDuration duration, VideoClip& clip) {
  VRX_TRY(ReadFileClip(source, clip.path));
  ClipTimes times{};
  VRX_TRY(ReadTimes(source, times));
  clip.scale = times.startScale;
  clip.wholeSource = times.Length() <= 0;
  if (clip.wholeSource) return kOk;
  clip.start = times.start;
  clip.frameCount = WholeFrames(times.Length(), times.CommonScale(), duration);
  return kOk;
}

Result CheckArray(const VRXSourceStreamInfoArray& array, const char* track) {
  const bool broken = array.count != 0 && array.items == nullptr;
  if (broken ||
      std::any_of(array.items, array.items + array.count, [](auto* item) { return item == nullptr; })) {
    return kInvalidArgument;
  }
  if (array.count <= kMaxClips) return kOk;
  Log(VRXLogError, std::string("too many clips on the ") + track + " track: " + std::to_string(array.count));
  return kUnusableSettings;
}

Result MakeVideoClips(const VRXSourceStreamInfoArray& array, FrameDuration duration,
                      std::vector<VideoClip>& clips) {
  VRX_TRY(CheckArray(array, "video"));
  std::int64_t total = 0;
  for (std::uint32_t i = 0; i < array.count; ++i) {
    const ClipLogScope scope(VRXVideoTrack, i);
    const VRXSourceStreamInfoBase& source = *array.items[i];
    VideoClip clip;
    VRX_TRY(source.sourceType == VRXSourceBaseband ? MakeBasebandClip(source, duration, clip)
                                                   : MakeFileClip(source, duration, clip));
    if (clip.frameCount > kMaxMovieFrames - total) {
      Log(VRXLogError, "the clip makes the movie longer than 2147483647 frames");
      return kUnusableSettings;
    }
    total += clip.frameCount;
    clips.push_back(std::move(clip));
  }
  return kOk;
}

/// A sound clip has one scale for both times: one in which both are whole numbers, or where their values
/// would be too large for it, the start's with the end rounded to the nearest.
void SetTimes(const ClipTimes& times, AudioClip& clip) {
  const std::int64_t common = std::gcd(times.startScale, times.endScale);
  const Int128 start = Int128{times.start} * (times.endScale / common);
  const Int128 end = Int128{times.end} * (times.startScale / common);
  if (std::max(start, end) <= INT64_MAX) {
    clip.start = static_cast<std::int64_t>(start);
    clip.end = static_cast<std::int64_t>(end);
    clip.scale = static_cast<std::uint64_t>(times.startScale * (times.endScale / common));
    return;
  }
  clip.start = times.start;
  clip.end = Clamp64(RoundDivide(Int128{times.end} * times.startScale, times.endScale));
  clip.scale = static_cast<std::uint64_t>(times.startScale);
}

Result MakeAudioClips(const VRXSourceStreamInfoArray& array, std::vector<AudioClip>& clips) {
  VRX_TRY(CheckArray(array, "audio"));
  for (std::uint32_t i = 0; i < array.count; ++i) {
    const ClipLogScope scope(VRXAudioTrack, i);
    const VRXSourceStreamInfoBase& source = *array.items[i];
    AudioClip clip{};
    VRX_TRY(ReadFileClip(source, clip.path));
    ClipTimes times{};
    VRX_TRY(ReadTimes(source, times));
    SetTimes(times, clip);
    clips.push_back(std::move(clip));
  }
  return kOk;
}

/// Puts the parts of `span` that no earlier span covers into `spans`, which is ordered by first frame.
void FillGaps(std::map<std::int64_t, OverlaySpan>& spans, OverlaySpan span) {
  auto next = spans.upper_bound(span.first);
  if (next != spans.begin()) span.first = std::max(span.first, std::prev(next)->second.last + 1);
  while (span.first <= span.last) {
    OverlaySpan part = span;
    if (next != spans.end()) part.last = std::min(part.last, next->first - 1);
    if (part.first <= part.last) spans.emplace_hint(next, part.first, part);
    if (next == spans.end()) return;
    span.first = std::max(span.first, next->second.last + 1);
    ++next;
  }
}

}  // namespace

Result MakeTimelinePlan(const VRXTimeline& timeline, FrameDuration duration, TimelinePlan& plan) {
  plan = {};
  VRX_TRY(MakeVideoClips(timeline.video, duration, plan.video));
  return MakeAudioClips(timeline.audio, plan.audio);
}

Result MakeOverlaySpans(const VRXSystemOutputSetting& setting, FrameDuration duration,
                        std::vector<OverlaySpan>& spans) {
  spans.clear();
  if (setting.rawOutput == nullptr || setting.rawRangeCount == 0) return kOk;
  if (setting.rawRanges == nullptr) return kInvalidArgument;
  std::map<std::int64_t, OverlaySpan> ordered;
  for (std::uint32_t i = 0; i < setting.rawRangeCount; ++i) {
    const VRXIntermediateRawOutputSetting* range = setting.rawRanges[i];
    if (range == nullptr) return kInvalidArgument;
    if (!UsableScale(range->startTime.scale) || !UsableScale(range->endTime.scale)) {
      Log(VRXLogError, "overlay range " + std::to_string(i + 1) + " has an unusable time scale");
      return kUnusableSettings;
    }
    const auto units = [&](const VRXTimeInfo& time) {
      return Int128{static_cast<std::int64_t>(time.value)} * duration.scale;
    };
    const auto frame = [&](const VRXTimeInfo& time) {
      return Int128{duration.value} * static_cast<std::int64_t>(time.scale);
    };
    const std::int64_t first = Clamp64(CeilDivide(units(range->startTime), frame(range->startTime)));
    const std::int64_t last = Clamp64(FloorDivide(units(range->endTime), frame(range->endTime)));
    FillGaps(ordered, {std::max<std::int64_t>(first, 0), std::min(last, kMaxMovieFrames), range->stage,
                       range->format});
  }
  for (const auto& [first, span] : ordered) spans.push_back(span);
  return kOk;
}

void CutToFrames(std::int64_t first, std::int64_t count, std::vector<VideoClip>& clips) {
  for (VideoClip& clip : clips) {
    const std::int64_t before = std::min(first, clip.frameCount);
    first -= before;
    clip.firstFrame += before;
    clip.firstRawFrame += static_cast<std::uint64_t>(before);
    clip.frameCount = std::min(clip.frameCount - before, count);
    count -= clip.frameCount;
  }
}

ExactTime SourceTimeOfFrame(const VideoClip& clip, std::int64_t index, FrameDuration duration) {
  const Int128 frame = Int128{clip.firstFrame} + index;
  return {Int128{clip.start} * duration.scale + frame * duration.value * clip.scale,
          Int128{clip.scale} * duration.scale};
}

std::int64_t FramesOfSource(std::int64_t ticks, int numerator, int denominator, FrameDuration duration) {
  const Int128 frames =
      RoundDivide(Int128{ticks} * numerator * duration.scale, Int128{denominator} * duration.value);
  return std::max<std::int64_t>(Clamp64(frames), 1);
}

}  // namespace vrx::engine
