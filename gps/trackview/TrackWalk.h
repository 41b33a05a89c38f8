// Splits the line of one clip at a moment into what has been travelled and what lies ahead. KVSGPSTrack asks
// for it once a frame.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>

#include "drawing/Geometry.h"
#include "gps/trackview/TrackSegment.h"

namespace vrx::gps {

/// Where a clip's line is split. All points are pixels of the frame.
struct TrackWalk {
  std::shared_ptr<const TrackLine> line;  // null: there is no line
  std::size_t passed = 0;                 // so many of its points have been travelled
  std::optional<drawing::Point> present;  // the end of the travelled way, where that is no point of the line
  bool isJoined = false;                  // what was travelled is connected to what lies ahead

  std::span<const drawing::Point> GetPassed() const;
  std::span<const drawing::Point> GetAhead() const;
  /// The end of the travelled way, or the start of a line of which nothing was travelled; null without a
  /// line.
  std::optional<drawing::Point> GetPosition() const;
  friend bool operator==(const TrackWalk&, const TrackWalk&) = default;
};

/// `seconds` is on the clip's time axis and `origin` the corner of the view. Nothing but searching depends on
/// the length of the line.
TrackWalk WalkSegment(const TrackSegment& segment, drawing::Point origin, double seconds);

/// Whether a position is shown: from the first fix until three seconds after the last point.
bool IsPositionKnown(const TrackSegment& segment, double seconds);

}  // namespace vrx::gps
