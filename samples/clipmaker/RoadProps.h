// What stands beside the way in the road scene: trees, posts, houses, lamps, lights, boats.
#pragma once

#include "samples/clipmaker/RoadView.h"
#include "samples/route/PlannedRoute.h"

namespace vrx::test_support {

class RoadProps {
 public:
  /// All arguments outlive the props; `seconds` is the moment of the route.
  RoadProps(const PlannedRoute& route, double seconds, RoadView& view)
      : m_route(route), m_seconds(seconds), m_view(view) {}

  /// Those of a stretch of the way, the farthest first.
  void DrawStretch(double fromMeters, double toMeters);

 private:
  void DrawPlot(std::int64_t plot);
  void DrawHills(std::int64_t plot, const PlanPoint& point);
  void DrawTown(std::int64_t plot);
  void DrawPark(std::int64_t plot);
  void DrawShore(std::int64_t plot);
  void DrawTrees(std::int64_t plot, double nearest, double farthest, double share, double leftShare);

  void Tree(double meters, double offset, double height, std::uint32_t kind);
  void Fir(double meters, double offset, double height);
  void Upright(double meters, double offset, double halfWidth, double bottom, double top, const Rgb& colour);
  void Disc(double meters, double offset, double height, double radius, const Rgb& colour);
  void Post(double meters, double offset);
  void Chevron(double meters, double offset, bool pointsRight);
  void House(std::int64_t plot, double side);
  void Lamp(double meters, double offset, double height);
  void Bench(double meters, double offset);
  void Boat(double meters, double offset, const Rgb& sail);
  void Railing(double meters);
  void Lights(const RouteStop& stop);

  Rgb Far(const Rgb& colour, double meters) const;

  const PlannedRoute& m_route;
  double m_seconds;
  RoadView& m_view;
};

}  // namespace vrx::test_support
