// Reads any bytes as a timeline of an editor; what was read must keep what the header promises.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "content/otio/Timeline.h"

namespace {

using namespace vrx::otio;

void Check(const Timeline& timeline) {
  if (!std::isfinite(timeline.globalStartSeconds) || timeline.leftOut.size() > kMostLeftOut) std::abort();
  for (const Track& track : timeline.tracks) {
    for (const Item& item : track.items) {
      const bool isClip = item.kind == Item::Kind::Clip;
      if (!std::isfinite(item.seconds) || !std::isfinite(item.startSeconds) || !std::isfinite(item.rate))
        std::abort();
      if (item.seconds < 0 || item.rate < 0 || (!isClip && item.seconds == 0)) std::abort();
      if (isClip == item.path.empty() || item.path.find('\0') != std::string::npos) std::abort();
    }
  }
  for (const std::string& line : timeline.leftOut) {
    if (line.find('\n') != std::string::npos) std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Timeline timeline;
  std::string cause;
  const XpResult result = ReadTimeline({reinterpret_cast<const char*>(data), size}, timeline, cause);
  if ((result == XpOk) != cause.empty()) std::abort();
  if (result != XpOk && !timeline.tracks.empty()) std::abort();
  Check(timeline);
  return 0;
}
