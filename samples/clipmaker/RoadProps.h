// What stands beside the way in the road scene: trees, posts, houses, lamps, lights, boats.
#pragma once

#include "samples/clipmaker/RoadThings.h"
#include "samples/clipmaker/RoadView.h"
#include "samples/route/PlannedRoute.h"

namespace vrx::test_support {

class RoadProps {
 public:
  /// All arguments outlive the props; `seconds` is the moment of the route.
  RoadProps(const PlannedRoute& route, double seconds, RoadView& view)
      : m_route(route), m_seconds(seconds), m_view(view) {}

  /// Those of a stretch of the way.
  void AddStretch(double fromMeters, double toMeters, RoadThings& things);

 private:
  void AddPlot(std::int64_t plot);
  void AddHills(std::int64_t plot, const PlanPoint& point);
  void AddTown(std::int64_t plot);
  void AddPark(std::int64_t plot);
  void AddShore(std::int64_t plot);
  /// `share` of the places for trees are taken, to the left `leftShare` of those.
  void AddTrees(std::int64_t plot, double nearest, double farthest, double share, double leftShare);
  /// `draw` makes the thing at that place of the way.
  template <class Draw>
  void Add(double meters, double offset, Draw draw) {
    m_things->Add(m_view.At(meters, offset).ahead, draw);
  }

  void Tree(double meters, double offset, double height, std::uint32_t kind);
  void Fir(double meters, double offset, double height);
  void Upright(double meters, double offset, double halfWidth, double bottom, double top, const Rgb& colour);
  void Disc(double meters, double offset, double height, double radius, const Rgb& colour);
  void Post(double meters, double offset);
  void Chevron(double meters, double offset, bool pointsRight);
  void House(std::int64_t plot, double side);
  void Windows(double from, double to, double front, double side, int storeys);
  void Lamp(double meters, double offset, double height);
  void Bench(double meters, double offset);
  void Boat(double meters, double offset, const Rgb& sail);
  void Railing(double meters);
  void Lights(const RouteStop& stop);

  Rgb Far(const Rgb& colour, double meters) const;

  const PlannedRoute& m_route;
  double m_seconds;
  RoadView& m_view;
  RoadThings* m_things = nullptr;  // while a stretch is added
};

}  // namespace vrx::test_support
