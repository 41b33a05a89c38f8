#include "overlay/tennis/TennisZones.h"

#include <cmath>

namespace vrx::overlay {
namespace {

constexpr std::int32_t kColumns = 5, kRows = 6;
constexpr std::int32_t kHalfZone = 45;

/// Calls `visit` with the middle of the lower edge of each zone, in the order of their numbers.
template <class Visit>
void VisitGrid(const ZoneGrid& grid, Visit visit) {
  for (std::int32_t column = 0; column < kColumns; ++column) {
    for (std::int32_t row = 0; row < kRows; ++row) {
      const bool isOuter = column == 0 || column == kColumns - 1;
      if (isOuter && (row == 0 || row == kRows - 1)) continue;
      visit(grid.left + grid.step * column, grid.bottom - grid.step * row);
    }
  }
}

drawing::Rect Around(double x, double y) {
  const auto whole = [](double value) { return static_cast<std::int32_t>(value); };
  return {whole(x - kHalfZone), whole(y - kHalfZone), whole(x + kHalfZone), whole(y + kHalfZone)};
}

}  // namespace

ImpactZones MakeZones(const ZoneGrid& grid) {
  ImpactZones zones;
  auto* zone = zones.begin();
  VisitGrid(grid, [&](std::int32_t x, std::int32_t y) { *zone++ = Around(x, y - kHalfZone); });
  return zones;
}

ImpactZones MakeTurnedZones(const ZoneGrid& grid, const ZoneTurn& turn, double half) {
  ImpactZones zones;
  auto* zone = zones.begin();
  VisitGrid(grid, [&](std::int32_t x, std::int32_t y) {
    // The pivot lies on the left edge of the box, halfway down; the move brings the racket back.
    const double down = y - kHalfZone - half;
    const double radius = std::sqrt(x * x + down * down);
    const double angle = std::atan(down / x) + turn.angle;
    const double turnedX = turn.moveX * half + radius * std::cos(angle);
    const double turnedY = turn.moveY * half + radius * std::sin(angle);
    *zone++ = turn.swapAxes ? Around(turnedY, turnedX) : Around(turnedX, turnedY);
  });
  return zones;
}

}  // namespace vrx::overlay
