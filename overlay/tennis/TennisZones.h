// Where the racket's impact zones lie in the three views of the swing. Each tennis layout computes its own
// once.
#pragma once

#include <array>
#include <cstdint>

#include "drawing/Geometry.h"
#include "overlay/tennis/TennisMetaData.h"

namespace vrx::overlay {

using ImpactZones = std::array<drawing::Rect, kImpactZones>;

/// The zones stand on a grid of five columns and six rows without its corners, in the view of the racket
/// from behind.
struct ZoneGrid {
  std::int32_t left;    // of the first column, in the swing box, 1920 by 1080 pixels
  std::int32_t bottom;  // of the first row; the others lie above it
  std::int32_t step;
};

/// How a view of the racket is turned about the middle of the swing box.
struct ZoneTurn {
  double angle;  // radians, clockwise
  double moveX;  // of the turned zones, in half boxes
  double moveY;
  bool swapAxes;
};

ImpactZones MakeZones(const ZoneGrid& grid);
/// `half` is half the width of the swing box.
ImpactZones MakeTurnedZones(const ZoneGrid& grid, const ZoneTurn& turn, double half);

}  // namespace vrx::overlay
