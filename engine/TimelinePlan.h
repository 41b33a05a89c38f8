// The timeline after validation: how many frames each clip gives and from where, the sound clips, and the
// frames that go through the overlay callback. Pure arithmetic on the host's records; used by the sequence.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "engine/AudioTrack.h"
#include "engine/EngineResult.h"
#include "engine/ExactTime.h"
#include "vrx/VRXLimits.h"
#include "vrx/VRXOutputSetting.h"

namespace vrx::engine {

/// The longest movie: its frame numbers stay below this.
inline constexpr std::int64_t kMaxMovieFrames = limits::kMaxMovieFrames;

struct VideoClip {
  std::size_t number = 0;                    // on the timeline, also where only a part of it is left
  std::string path;                          // native bytes; empty for a baseband clip
  IVRXRawInputCallback* rawInput = nullptr;  // not owned; null for a file clip
  std::int64_t start = 0;                    // file clip: source time in 1 / scale seconds, not negative
  std::int64_t scale = 1;
  bool wholeSource = false;     // file clip: frameCount is 0 until the source's length is known
  std::int64_t firstFrame = 0;  // file clip: frames after `start` that are left out before the first shown
  std::uint64_t firstRawFrame = 0;  // baseband clip: the number of its first picture
  std::int64_t frameCount = 0;
};

/// Output frames `first` to `last`, both included, and what the callback gets with them.
struct OverlaySpan {
  std::int64_t first;
  std::int64_t last;
  std::int32_t stage;
  std::int32_t format;
};

struct TimelinePlan {
  std::vector<VideoClip> video;
  std::vector<AudioClip> audio;
};

/// kInvalidArgument for broken records, kUnusableSettings for impossible times, kSourceMissing for a path on
/// an unknown drive; each with a logged line.
Result MakeTimelinePlan(const VRXTimeline& timeline, FrameDuration duration, TimelinePlan& plan);

/// Rising spans that do not overlap. Where registered ranges overlap, the one registered first decides.
Result MakeOverlaySpans(const VRXSystemOutputSetting& setting, FrameDuration duration,
                        std::vector<OverlaySpan>& spans);

/// Leaves of the clips what belongs to `count` frames of the movie from `first` on; clips outside keep their
/// place in the plan, without frames. Once the frames of every clip are known.
void CutToFrames(std::int64_t first, std::int64_t count, std::vector<VideoClip>& clips);

/// The moment of the source that the shown frame `index` of `clip` shows.
ExactTime SourceTimeOfFrame(const VideoClip& clip, std::int64_t index, FrameDuration duration);

/// Frames of a source that lasts `ticks` times `numerator` / `denominator` seconds, rounded to the nearest;
/// at least one.
std::int64_t FramesOfSource(std::int64_t ticks, int numerator, int denominator, FrameDuration duration);

}  // namespace vrx::engine
