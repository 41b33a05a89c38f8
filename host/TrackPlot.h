// The picture of a GPS track that `vrx gps show --plot` writes: the way on the ground above the speed over
// time, so that one sees at once whether a log is the right one.
#pragma once

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "gps/log/KVUGPSInfo.h"
#include "vrx/XpString.h"

namespace vrx::host {

inline constexpr std::int32_t kPlotWidth = 1600;
inline constexpr std::int32_t kPlotHeight = 1000;

struct TrackPlotLabels {
  XpString title;
  XpString facts;  // one line below the title
  /// Where the movie begins and ends, in seconds after the track's first point.
  std::optional<std::pair<double, double>> movie;
};

/// `track` has one point a second, in UTC. Opaque, top-down, blue in the lowest byte. Throws std::bad_alloc
/// when there is no memory.
std::vector<std::uint32_t> PlotTrack(const KVUGPSInfoList& track, const TrackPlotLabels& labels);

}  // namespace vrx::host
