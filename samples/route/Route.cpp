#include "samples/route/Route.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <numbers>

namespace vrx::test_support {
namespace {

constexpr double kRadian = std::numbers::pi / 180;
constexpr double kMetersPerDegree = 111'195;

}  // namespace

void Route::Step(double courseDegrees, RouteState& state) {
  const double way = state.metersPerSecond * kStepSeconds;
  state.courseDegrees = std::fmod(std::fmod(courseDegrees, 360) + 360, 360);
  const double course = state.courseDegrees * kRadian;
  state.latitude += way * std::cos(course) / kMetersPerDegree;
  state.longitude += way * std::sin(course) / (kMetersPerDegree * std::cos(state.latitude * kRadian));
  if (state.longitude > 180) state.longitude -= 360;
  m_states.push_back(state);
}

RouteState Route::At(std::int64_t elapsedMilliseconds) const {
  const std::int64_t step = std::max<std::int64_t>(elapsedMilliseconds, 0) / kStepMilliseconds;
  return m_states[std::min(static_cast<std::size_t>(step), m_states.size() - 1)];
}

double Route::MetersAt(double seconds) const {
  const double steps = std::clamp(seconds / kStepSeconds, 0.0, static_cast<double>(m_states.size() - 1));
  const auto before = static_cast<std::size_t>(steps);
  const std::size_t after = std::min(before + 1, m_states.size() - 1);
  return std::lerp(m_states[before].meters, m_states[after].meters, steps - static_cast<double>(before));
}

ClockReading Route::ClockAt(std::int64_t elapsedMilliseconds, std::int64_t movedBySeconds) const {
  using namespace std::chrono;
  const std::int64_t leap = m_times.leapSecondBeforeUtcMilliseconds;
  std::int64_t utc = m_times.startUtcMilliseconds + elapsedMilliseconds;
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
