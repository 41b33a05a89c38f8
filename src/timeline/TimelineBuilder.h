// Builds the engine's timeline from the clips of a project and keeps the sums that the overlay ranges need.
#pragma once

#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "src/project/TKLXOutputXml.h"
#include "src/timeline/FrameClock.h"
#include "vrx/VRXTimeline.h"

namespace vrx::timeline {

/// Sums over the file clips of the video track, in frame times.
struct ClipSums {
  std::int64_t overlayDuration = 0;                               // of the clips with overlay
  std::vector<std::int64_t> nonOverlayDurations;                  // of each clip without, in order
  std::vector<std::pair<std::int64_t, std::int64_t>> clipRanges;  // one a clip
};

/// What became of a clip, for the log.
using ClipReport = std::function<void(const TKLXOutputXmlInfo& clip, const VRXSourceStreamInfoBase& source)>;

/// Gives the source of frames for a clip of still images; its document has been read. May return null.
using BasebandMaker = std::function<IVRXRawInputCallback*(const TKLXOutputXmlInfo& clip)>;

struct TimelineContext {
  XpString projectPath;  // relative source paths count from its folder
  FrameClock clock;
  BasebandMaker makeBaseband;
  ClipReport reportVideo;
  ClipReport reportAudio;
};

/// Appends the clips to the timeline's video array and adds them to `sums`. Returns true when one of them
/// asks for the GPU capability block.
bool AddVideoTrack(const TKLXOutputXml::Track& track, const TimelineContext& context, VRXTimeline& timeline,
                   ClipSums& sums);

void AddAudioTrack(const TKLXOutputXml::Track& track, const TimelineContext& context, VRXTimeline& timeline);

}  // namespace vrx::timeline
