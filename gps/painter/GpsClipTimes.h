// Where the clips of a movie lie on its time axis. The painter finds its place and its clip with it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "overlay/document/LogDataEntry.h"

namespace vrx::gps {

struct GpsPlace {
  std::size_t clipIndex = 0;  // the number of clips when there is no such clip
  double movieMs = 0.0;       // with one millisecond for each clip before
};

/// `clipMs` is the time in the first clip of this number.
GpsPlace FindPlace(const std::vector<LogDataEntry>& clips, bool wholeClips, std::int32_t videoId,
                   std::int64_t clipMs);

/// The clip that is current at a second of the movie, where each clip ends at a whole second; the number of
/// clips after the last one.
std::size_t FindClipAt(const std::vector<LogDataEntry>& clips, bool wholeClips, std::int64_t movieSecond);

}  // namespace vrx::gps
