#include "gps/painter/GpsMeter.h"

#include "gps/painter/GpsReadouts.h"
#include "gps/templates/TemplateScenarioValues.h"
#include "gps/track/GpsUnits.h"

namespace vrx::gps {
namespace {

using drawing::Rect;
using drawing::Saturated;

/// A symbol's place in a frame of 1920 by 1080, from the map's right edge in the stacked layout and from its
/// left edge otherwise.
struct SymbolPlace {
  std::int64_t left;
  std::int64_t top;
};
constexpr SymbolPlace kStackedSymbol{-120, 12};
constexpr SymbolPlace kSymbol{397, 352};
constexpr std::int64_t kSymbolWidth = 83;
constexpr std::int64_t kSymbolHeight = 48;
constexpr std::int64_t kStackedRight = -37;
constexpr std::int64_t kStackedBottom = 60;

Rect SymbolRect(const KorvoTemplateStructure& structure) {
  const Rect map = structure.GetMapRect();
  const auto x = [&](std::int64_t value) { return std::int64_t{structure.ScaleX(value)}; };
  const auto y = [&](std::int64_t value) { return std::int64_t{structure.ScaleY(value)}; };
  if (structure.IsTopBottom()) {
    return {Saturated(map.right + x(kStackedSymbol.left)), Saturated(map.top + y(kStackedSymbol.top)),
            Saturated(map.right + x(kStackedRight)), Saturated(map.top + y(kStackedBottom))};
  }
  const std::int64_t left = map.left + x(kSymbol.left), top = map.top + y(kSymbol.top);
  return {Saturated(left), Saturated(top), Saturated(left + x(kSymbolWidth)),
          Saturated(top + y(kSymbolHeight))};
}

struct WalkFloor {
  double below;  // knots
  double scale;  // knots
};

double ScaleFor(double maxSpeed, std::int32_t unit, std::int32_t scenario) {
  if (scenario != kScenarioWalkSmall) return maxSpeed;
  constexpr WalkFloor kFloors[] = {{8.0, 8.0}, {5.0, 5.0}, {5.0, 4.0}};  // by the unit
  if (unit < kGpsUnitKilometers || unit > kGpsUnitNauticalMiles) return maxSpeed;
  const WalkFloor& floor = kFloors[unit];
  return maxSpeed < floor.below ? floor.scale : maxSpeed;
}

}  // namespace

PainterPicture NeedleAt(const KVUGPSInfo& point, double maxSpeed, std::int32_t unit,
                        const KorvoTemplateScenario& scenario) {
  if (!scenario.HasMeter()) return {};
  return scenario.GetMeterFrame(HasFix(point) ? point.speed : 0.0,
                                ScaleFor(maxSpeed, unit, scenario.GetType()));
}

void DrawGpsBaseLayer(const KorvoTemplate& look, bool hasFix, overlay::PainterSurface& surface) {
  const KorvoTemplateScenario& scenario = *look.scenario;
  const KorvoTemplateStructure& structure = *look.structure;
  surface.Overlay(hasFix ? scenario.GetGpsIcon() : scenario.GetGpsNoPositionIcon(), SymbolRect(structure));
  surface.Overlay(structure.IsTopBottom() ? scenario.GetMeterBaseVertical() : scenario.GetMeterBase(),
                  structure.GetBaseRect());
}

}  // namespace vrx::gps
