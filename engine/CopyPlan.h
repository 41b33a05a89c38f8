// Finds the frames of a clip whose coded pictures can be copied. Numbers alone, without media; used by the
// smart plan.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "engine/PacketIndex.h"

namespace vrx::engine {

/// Frames of a clip, from `first` to before `end`.
struct FrameInterval {
  std::int64_t first;
  std::int64_t end;
  bool operator==(const FrameInterval&) const = default;
};

/// What the plan needs to know of a clip, whose frames are counted from 0.
struct ClipToCopy {
  std::int64_t frameCount = 0;
  /// The tick of the source that a frame shows; it does not fall from frame to frame.
  std::function<std::int64_t(std::int64_t)> tickOfFrame;
  std::vector<FrameInterval> changed;  // rising, apart from each other: frames that are not the source's own
  /// Whether decoding can begin at a start whose next pictures are shown before it, once those are left out.
  bool startsAtOpenGroups = false;
  std::int64_t leastFrames = 1;  // shorter runs are not worth their seams, unless they are the whole clip
};

/// Frames `firstFrame` and on, and for each coded picture of them, in decoding order, its frame and tick.
/// No other picture is needed to decode them.
struct CopyRun {
  struct Picture {
    std::int64_t ticks;
    std::int64_t frame;  // of the clip
  };
  std::int64_t firstFrame = 0;
  std::vector<Picture> pictures;
  std::vector<std::int64_t> starts;  // frames at which another run could begin, the first among them
  std::int64_t delay = 0;            // the most places by which a picture is decoded after its frame's place
};

/// The frame that alone shows each picture and shows nothing else; kNoFrame for pictures that are shown by
/// none or by several, or are not whole.
inline constexpr std::int64_t kNoFrame = -1;
std::vector<std::int64_t> FramesOfPictures(const PacketIndex& index, const ClipToCopy& clip);

/// Rising runs that do not overlap, each as long as it can be. `frames` as FramesOfPictures gives them.
std::vector<CopyRun> FindCopyRuns(const PacketIndex& index, std::span<const std::int64_t> frames,
                                  const ClipToCopy& clip);

}  // namespace vrx::engine
