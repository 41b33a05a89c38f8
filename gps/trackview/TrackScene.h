// What the track view shows at a moment, as numbers. Equal scenes with one look in one rectangle are equal
// pictures, so the painter compares two to know whether anything changed.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "drawing/Color.h"
#include "gps/trackview/TrackDots.h"
#include "gps/trackview/TrackWalk.h"
#include "overlay/resources/PainterResources.h"

namespace vrx::gps {

/// All points are pixels of the frame. Lines are shared with the track and known by their address.
struct TrackScene {
  /// One clip's line, and the dots that lead to it from the clip before.
  struct Stretch {
    TrackWalk walk;
    std::vector<TrackDot> dots;
    friend bool operator==(const Stretch&, const Stretch&) = default;
  };
  struct Ends {
    drawing::Point start;
    drawing::Point goal;
    friend bool operator==(const Ends&, const Ends&) = default;
  };

  std::vector<Stretch> stretches;  // in the order of the movie
  std::optional<Ends> ends;
  std::optional<drawing::Point> position;
  friend bool operator==(const TrackScene&, const TrackScene&) = default;
};

/// Widths in pixels of the frame; pictures in their size for frames of 1920 by 1080, and any may be empty.
struct TrackLook {
  std::int32_t aheadWidth = 1;
  std::int32_t walkedWidth = 1;
  std::int32_t shadowWidth = 1;
  drawing::ColorRef aheadColor = 0;
  drawing::ColorRef walkedColor = 0;
  drawing::ColorRef shadowColor = 0;  // translucent if it is the grey 0x333333
  PainterPicture startMarker;
  PainterPicture goalMarker;
  PainterPicture startText;
  PainterPicture goalText;
  PainterPicture positionMarker;
  std::int32_t frameWidth = 0;
  std::int32_t frameHeight = 0;
};

}  // namespace vrx::gps
