#include "samples/logmaker/DriveRoute.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <numbers>

namespace vrx::test_support {
namespace {

constexpr std::int64_t kStepMilliseconds = 50;
constexpr double kStepSeconds = 0.05;
constexpr double kRadian = std::numbers::pi / 180;
constexpr double kMetersPerDegree = 111'195;
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

DriveRoute::DriveRoute(const DriveOptions& options) : m_options(options) {
  DriveState state{options.latitude, options.longitude};
  double meters = 0;
  for (std::int64_t at = 0; at <= Milliseconds(); at += kStepMilliseconds) {
    const double seconds = static_cast<double>(at) / 1000;
    const double change = WantedSpeed(seconds) - state.metersPerSecond;
    state.metersPerSecond +=
        std::clamp(change, -kMostAcceleration * kStepSeconds, kMostAcceleration * kStepSeconds);
    const double way = state.metersPerSecond * kStepSeconds;
    meters += way;
    state.courseDegrees = std::fmod(CourseAfter(meters) + 360, 360);
    const double course = state.courseDegrees * kRadian;
    state.latitude += way * std::cos(course) / kMetersPerDegree;
    state.longitude += way * std::sin(course) / (kMetersPerDegree * std::cos(state.latitude * kRadian));
    if (state.longitude > 180) state.longitude -= 360;
    const double inTunnel = seconds - options.tunnelSecond;
    state.hasFix = seconds >= options.firstFixSecond && !(inTunnel >= 0 && inTunnel < options.tunnelSeconds);
    m_states.push_back(state);
  }
}

DriveState DriveRoute::At(std::int64_t elapsedMilliseconds) const {
  const std::int64_t step = std::max<std::int64_t>(elapsedMilliseconds, 0) / kStepMilliseconds;
  return m_states[std::min(static_cast<std::size_t>(step), m_states.size() - 1)];
}

ClockReading DriveRoute::ClockAt(std::int64_t elapsedMilliseconds, std::int64_t movedBySeconds) const {
  using namespace std::chrono;
  const std::int64_t leap = m_options.leapSecondBeforeUtcMilliseconds;
  std::int64_t utc = m_options.startUtcMilliseconds + elapsedMilliseconds;
  const bool isAfterLeap = leap != 0 && utc >= leap;
  if (isAfterLeap) utc -= 1000;
  const bool isLeapSecond = isAfterLeap && utc < leap;
  const sys_time<milliseconds> moment{milliseconds(utc + movedBySeconds * 1000)};
  const sys_days midnight = floor<days>(moment);
  const year_month_day date(midnight);
  const hh_mm_ss clock(moment - midnight);
  return {static_cast<int>(date.year()),
          static_cast<int>(static_cast<unsigned>(date.month())),
          static_cast<int>(static_cast<unsigned>(date.day())),
          static_cast<int>(clock.hours().count()),
          static_cast<int>(clock.minutes().count()),
          isLeapSecond ? 60 : static_cast<int>(clock.seconds().count()),
          static_cast<int>(clock.subseconds().count())};
}

}  // namespace vrx::test_support
