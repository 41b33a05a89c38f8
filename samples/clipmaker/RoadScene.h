// The view of somebody who drives, runs or walks along a planned route, as the moving picture of clips that
// go with a log of that route.
#pragma once

#include "samples/clipmaker/RgbImage.h"
#include "samples/clipmaker/RoadView.h"
#include "samples/route/PlannedRoute.h"

namespace vrx::test_support {

class RoadScene {
 public:
  /// Shows the route up to `seconds`, and stands still after that.
  RoadScene(RouteKind kind, int seconds);

  /// Fills `image`, whatever its size, with the view at that second of the route.
  void Draw(double seconds, RgbImage& image) const;

 private:
  EyeOptions EyeAt(double meters) const;
  void DrawRidges(RoadView& view) const;
  void DrawWay(double seconds, RoadView& view) const;
  void DrawBonnet(RoadView& view) const;

  RouteKind m_kind;
  PlannedRoute m_route;
};

}  // namespace vrx::test_support
