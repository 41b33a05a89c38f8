#include "gps/painter/GpsClipTimes.h"

#include <algorithm>

#include "foundation/number/Saturate.h"
#include "gps/track/GpsTimeline.h"

namespace vrx::gps {

GpsPlace FindPlace(const std::vector<LogDataEntry>& clips, bool wholeClips, std::int32_t videoId,
                   std::int64_t clipMs) {
  const auto found = std::ranges::find(clips, videoId, &LogDataEntry::videoId);
  double before = 0.0;
  for (auto clip = clips.begin(); clip != found; ++clip) before += ClipSeconds(*clip, wholeClips);
  const double total = found == clips.end() ? before : before + ClipSeconds(*found, wholeClips);
  const auto index = static_cast<std::size_t>(found - clips.begin());
  const double seconds = before + static_cast<double>(clipMs) / 1000.0;
  return {.clipIndex = index, .movieMs = std::min(seconds * 1000 + static_cast<double>(index), total * 1000)};
}

std::size_t FindClipAt(const std::vector<LogDataEntry>& clips, bool wholeClips, std::int64_t movieSecond) {
  std::int64_t end = 0;
  for (std::size_t i = 0; i < clips.size(); ++i) {
    const double seconds = std::max(0.0, ClipSeconds(clips[i], wholeClips));
    end = Saturate<std::int64_t>(static_cast<double>(end) + seconds);
    if (end > movieSecond) return i;
  }
  return clips.size();
}

}  // namespace vrx::gps
