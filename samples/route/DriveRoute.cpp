#include "samples/route/DriveRoute.h"

#include <algorithm>
#include <cmath>

namespace vrx::test_support {
namespace {

constexpr double kMostAcceleration = 1.8;  // m/s^2
constexpr double kLightSeconds = 110;      // from one red light to the next
constexpr double kWaitSeconds = 18;

/// The speed that the driver wants, in m/s.
double WantedSpeed(double seconds) {
  if (std::fmod(seconds, kLightSeconds) < kWaitSeconds) return 0;
  return 15 + 7 * std::sin(seconds / 23);
}

double CourseAfter(double meters) { return 70 + 65 * std::sin(meters / 420) + 20 * std::sin(meters / 90); }

}  // namespace

DriveRoute::DriveRoute(const DriveOptions& options)
    : Route({options.startUtcMilliseconds, options.seconds, options.leapSecondBeforeUtcMilliseconds}),
      m_options(options) {
  RouteState state{options.latitude, options.longitude};
  for (std::int64_t at = 0; at <= Milliseconds(); at += kStepMilliseconds) {
    const double seconds = static_cast<double>(at) / 1000;
    const double change = WantedSpeed(seconds) - state.metersPerSecond;
    state.metersPerSecond +=
        std::clamp(change, -kMostAcceleration * kStepSeconds, kMostAcceleration * kStepSeconds);
    state.meters += state.metersPerSecond * kStepSeconds;
    const double inTunnel = seconds - options.tunnelSecond;
    state.hasFix = seconds >= options.firstFixSecond && !(inTunnel >= 0 && inTunnel < options.tunnelSeconds);
    Step(CourseAfter(state.meters), state);
  }
}

}  // namespace vrx::test_support
