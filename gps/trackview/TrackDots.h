// The dots between the lines of two clips, which stand for the way that was not recorded. They fill up in
// proportion to time.
#pragma once

#include <vector>

#include "drawing/Geometry.h"
#include "gps/trackview/TrackSegment.h"

namespace vrx::gps {

/// The bounds of two circles, in pixels of the frame.
struct TrackDot {
  drawing::Rect shadow;
  drawing::Rect dot;
  bool isReached = false;
  friend bool operator==(const TrackDot&, const TrackDot&) = default;
};

/// When the gap is passed. All of it in seconds on the movie's time axis.
struct TrackGap {
  double now = 0.0;
  double start = 0.0;
  double end = 0.0;
};

/// Replaces `dots` by those on the straight line between the two points of a view that fills `rect`. There
/// are none between points that are nearer than a dot and its space, and never more than a few thousand.
void MakeGapDots(const TrackDisplayPoint& from, const TrackDisplayPoint& to, const drawing::Rect& rect,
                 const TrackGap& gap, std::vector<TrackDot>& dots);

}  // namespace vrx::gps
