// Somebody's way from second to second, as the makers of logs and of footage see it: where he is, how fast
// and whether a receiver has a fix there.
#pragma once

#include <cstdint>
#include <vector>

namespace vrx::test_support {

struct RouteState {
  double latitude = 0.0;  // degrees, north and east positive
  double longitude = 0.0;
  double metersPerSecond = 0.0;
  double courseDegrees = 0.0;  // clockwise from north
  double meters = 0.0;         // from the start, along the way
  bool hasFix = false;
};

/// A clock's reading; `second` is 60 in a leap second.
struct ClockReading {
  int year, month, day, hour, minute, second, millisecond;
};

struct RouteTimes {
  std::int64_t startUtcMilliseconds = 1'714'564'800'000;  // 1 May 2024, 12:00:00
  int seconds = 600;
  /// The midnight before which a leap second was put in; 0: none.
  std::int64_t leapSecondBeforeUtcMilliseconds = 0;
};

/// A derived class drives the whole way in its constructor.
class Route {
 public:
  std::int64_t Milliseconds() const { return std::int64_t{m_times.seconds} * 1000; }
  /// Times are since the start, and are cut to the route.
  RouteState At(std::int64_t elapsedMilliseconds) const;
  /// How far the way is at a moment between two steps of At.
  double MetersAt(double seconds) const;
  /// UTC, moved by a zone or by the weeks that a receiver is wrong.
  ClockReading ClockAt(std::int64_t elapsedMilliseconds, std::int64_t movedBySeconds) const;

 protected:
  static constexpr std::int64_t kStepMilliseconds = 50;
  static constexpr double kStepSeconds = 0.05;

  explicit Route(const RouteTimes& times) : m_times(times) {}
  ~Route() = default;
  /// Goes on for one step at the state's speed, and keeps the state; `meters` already counts the step.
  void Step(double courseDegrees, RouteState& state);

 private:
  RouteTimes m_times;
  std::vector<RouteState> m_states;  // one for each step
};

}  // namespace vrx::test_support
