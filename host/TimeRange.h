// A part of a movie or of a clip, as FROM-TO on the command line.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "host/MovieTime.h"
#include "vrx/VRXTimeline.h"

namespace vrx::host {

/// From the frame that is shown at `from` to the one before that at `to`, so that parts join. Without a time
/// from the start, and to the end.
struct TimeRange {
  std::optional<MovieTime> from;
  std::optional<MovieTime> to;

  bool IsWhole() const { return !from && !to; }
};

/// "12.5-1:02", "310f-", "-0:30". Nothing for what is none.
std::optional<TimeRange> ParseTimeRange(const std::string& text);

/// Empty when the text is such a range, and does not end before it begins.
std::string CheckTimeRange(const std::string& text);

/// Frames `first` to `end` - 1.
struct FrameRange {
  std::int64_t first = 0;
  std::int64_t end = 0;
};

/// The frames of `range` in a movie of `frames` frames of this length. Empty `cause`, or why there are none,
/// as the end of a sentence that begins with the movie's name.
FrameRange FramesOf(const TimeRange& range, const VRXTimeInfo& frameDuration, std::int64_t frames,
                    std::string& cause);

}  // namespace vrx::host
