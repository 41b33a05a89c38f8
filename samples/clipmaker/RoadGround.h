// The ground of the road scene, row by row: the way with its lines, and what lies flat beside it.
#pragma once

#include "samples/clipmaker/RoadView.h"

namespace vrx::test_support {

class RoadGround {
 public:
  RoadGround(const RoutePlan& plan, RoadView& view) : m_plan(plan), m_view(view) {}

  /// From the horizon to the picture's foot, where the way is out of sight.
  void DrawFar();
  /// A stretch of the way; those farther away must be there already.
  void DrawStretch(double fromMeters, double toMeters);

 private:
  struct Strip;

  void DrawRow(const Strip& strip);
  void DrawLines(const Strip& strip, const PlanPoint& point);

  const RoutePlan& m_plan;
  RoadView& m_view;
};

}  // namespace vrx::test_support
