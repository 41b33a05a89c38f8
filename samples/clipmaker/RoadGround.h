// The ground of the road scene, which is flat: what lies beside the way row by row, and upon it the way with
// its lines.
#pragma once

#include <cstddef>
#include <vector>

#include "samples/clipmaker/RoadView.h"

namespace vrx::test_support {

class RoadGround {
 public:
  RoadGround(const RoutePlan& plan, RoadView& view) : m_plan(plan), m_view(view) {}

  /// All below the horizon.
  void Draw();

 private:
  struct Stretch {
    double fromMeters;
    double toMeters;
  };
  struct Row;

  std::vector<Stretch> Stretches() const;  // from the farthest on
  void DrawFar();
  void DrawSides(const Stretch& stretch);
  void DrawSideRow(const Row& row);
  void DrawWay(const Stretch& stretch, std::size_t layer);
  void DrawMarks();
  /// A rectangle of the way, from left to right of its middle.
  void DrawPart(const Stretch& stretch, double left, double right, const Rgb& colour);
  Rgb Shade(const Rgb& colour, double meters) const;

  const RoutePlan& m_plan;
  RoadView& m_view;
};

}  // namespace vrx::test_support
