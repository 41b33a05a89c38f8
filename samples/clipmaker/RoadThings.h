// What the road scene draws: things are gathered as they come along the way, and drawn from the farthest on.
#pragma once

#include <algorithm>
#include <functional>
#include <vector>

namespace vrx::test_support {

class RoadThings {
 public:
  /// `ahead` in meters from the eye. What `draw` refers to must live until DrawAll.
  void Add(double ahead, std::function<void()> draw) { m_things.push_back({ahead, std::move(draw)}); }

  /// Of those that are equally far, the one that was added first is drawn first.
  void DrawAll() const {
    std::vector<const Thing*> order;
    for (const Thing& thing : m_things) order.push_back(&thing);
    std::ranges::stable_sort(order, std::greater<>(), [](const Thing* thing) { return thing->ahead; });
    for (const Thing* thing : order) thing->draw();
  }

 private:
  struct Thing {
    double ahead;
    std::function<void()> draw;
  };

  std::vector<Thing> m_things;
};

}  // namespace vrx::test_support
