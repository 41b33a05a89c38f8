// A tunnel in the road scene: its walls and lamps, and the hill that it goes through.
#pragma once

#include "samples/clipmaker/RoadThings.h"
#include "samples/clipmaker/RoadView.h"

namespace vrx::test_support {

class RoadTunnel {
 public:
  /// `view` outlives the tunnel.
  RoadTunnel(const PlanStretch& stretch, RoadView& view) : m_stretch(stretch), m_view(view) {}

  /// What of the tunnel lies in that stretch of the way.
  void AddStretch(double fromMeters, double toMeters, RoadThings& things);

 private:
  void DrawWalls(double fromMeters, double toMeters);
  void DrawLamp(double meters);
  void DrawPortal();

  PlanStretch m_stretch;
  RoadView& m_view;
};

}  // namespace vrx::test_support
