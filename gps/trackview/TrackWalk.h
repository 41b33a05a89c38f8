// Splits the line of one clip at a moment into what has been travelled and what lies ahead. KVSGPSTrack asks
// for it once a frame.
#pragma once

#include <optional>
#include <vector>

#include "drawing/Geometry.h"
#include "gps/trackview/TrackSegment.h"

namespace vrx::gps {

/// Points of lines in pixels of the frame. A rounded corner is three points.
struct TrackWalk {
  std::vector<drawing::Point> walked;
  std::vector<drawing::Point> ahead;
  bool isJoined = false;  // a line leads from the end of `walked` to the start of `ahead`

  void Clear();
  friend bool operator==(const TrackWalk&, const TrackWalk&) = default;
};

/// Replaces `walk`. `seconds` is on the clip's time axis; the display points are moved by `origin`. Returns
/// the present position; null before the first fix, later than three seconds after the last kept point, and
/// without points.
std::optional<drawing::Point> WalkSegment(const TrackSegment& segment, drawing::Point origin, double seconds,
                                          TrackWalk& walk);

}  // namespace vrx::gps
