// The route of one clip as the track view keeps it: on a square canvas of 1000 units, thinned to what a view
// can show, and laid out in its pixels. KVSGPSTrack makes one for each clip before the first frame.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "drawing/Geometry.h"
#include "gps/log/KVUGPSInfo.h"
#include "gps/track/TrackMetrics.h"

namespace vrx::gps {

inline constexpr std::int32_t kTrackCanvasSize = 1000;

struct TrackPoint {
  std::int32_t x = 0;  // canvas units
  std::int32_t y = 0;
  std::uint32_t index = 0;  // seconds since the first fix
  friend bool operator==(const TrackPoint&, const TrackPoint&) = default;
};

/// Pixels from the upper left corner of the view.
struct TrackPlace {
  double x = 0.0;
  double y = 0.0;
};

/// A TrackPoint in pixels from the upper left corner of the view, and the arc that rounds the corner there.
struct TrackDisplayPoint {
  std::int32_t x = 0;
  std::int32_t y = 0;
  std::uint32_t index = 0;
  bool hasArc = false;  // without one, the three places mean nothing
  TrackPlace arcMid;
  TrackPlace arcStart;        // where the arc leaves the line from the point before
  TrackPlace arcEnd;          // where it joins the line to the next point
  std::size_t linePoint = 0;  // its place in the line, or that of the start of its arc

  TrackPlace GetPlace() const { return {static_cast<double>(x), static_cast<double>(y)}; }
};

/// The whole way with its rounded corners, in pixels of the frame. A corner is three points. Never changed,
/// so that equal lines are known by their address.
using TrackLine = std::vector<drawing::Point>;

struct TrackSegment {
  std::vector<TrackPoint> points;
  std::vector<TrackDisplayPoint> display;  // the same points; empty until the size of the view is known
  std::shared_ptr<const TrackLine> line;   // through the display points; null as long as there are none
  std::uint32_t beforeFixCount = 0;        // seconds of the clip before its first fix
  double startTime = 0.0;                  // seconds on the movie's time axis
  double endTime = 0.0;
};

/// Maps the positions of `list` that lie in `bounds` and keeps those that are far enough from the one kept
/// before. The longer side of the bounds becomes 800 units, centred; there is no correction for the latitude.
/// On an axis on which the bounds have no extent, or a position is no number, it lies in the canvas's middle.
/// With `keepLast` the last position is kept in any case. The times are copied.
TrackSegment MakeTrackSegment(const KVUGPSInfoList& list, const KVSGPSBounds& bounds, double startSeconds,
                              double endSeconds, bool keepLast);

}  // namespace vrx::gps
