#include "overlay/tennis/CounterRoll.h"

#include <algorithm>
#include <cmath>

#include "foundation/number/Saturate.h"

namespace vrx::overlay {
namespace {

constexpr double kPhases = 40.0;  // of the roll over the run-up
constexpr std::int64_t kWholeRoll = 32000;
constexpr double kMilesPerKilometre = 0.62137;
constexpr std::int64_t kMostSingleSteps = 4;
constexpr std::int64_t kLargeSteps = 4;

/// Slows down towards the shot.
std::int64_t ProgressAt(const TennisShot* next, std::int64_t t) {
  if (next == nullptr) return 0;
  const double left = next->GetMilliseconds() - static_cast<double>(t);
  constexpr std::int64_t kRunUp = TennisShots::kRunUpMs;
  if (Saturate<std::int64_t>(left) >= kRunUp) return 0;
  const double phase =
      std::min(kPhases, (static_cast<double>(kRunUp) - next->GetMilliseconds() + static_cast<double>(t)) *
                            400 / 3 / 1000);
  const auto k = Saturate<std::int64_t>(phase);
  return (60 - k) * k * k;
}

std::int32_t Rounded(double value) { return Saturate<std::int32_t>(value + 0.5); }

}  // namespace

CounterRolls::CounterRolls(const TennisShot* current, const TennisShot* next, std::int64_t t,
                           std::int32_t rollHeight)
    : m_current(current), m_next(next), m_progress(ProgressAt(next, t)), m_rollHeight(rollHeight) {}

template <class ValueAt>
CounterRoll CounterRolls::Roll(std::int64_t steps, bool rises, ValueAt valueAt) const {
  const std::int64_t way = m_progress * steps * m_rollHeight / kWholeRoll;
  const std::int64_t step = way / m_rollHeight;
  const auto rest = static_cast<std::int32_t>(way % m_rollHeight);
  // Lines always move down, so that a falling counter has its present value above.
  if (rises) return {valueAt(step + 1), valueAt(step), rest};
  return {valueAt(step), valueAt(step + 1), static_cast<std::int32_t>(m_rollHeight) - rest};
}

CounterRoll CounterRolls::Count() const {
  const std::int32_t next = m_next == nullptr ? 0 : m_next->firstPanelValue;
  const std::int32_t current = m_current == nullptr ? 0 : m_current->firstPanelValue;
  const std::int64_t way = next == current ? 0 : m_progress * m_rollHeight / kWholeRoll % m_rollHeight;
  const auto rest = static_cast<std::int32_t>(way);
  if (next >= current) return {next, current, rest};
  return {current, next, static_cast<std::int32_t>(m_rollHeight) - rest};
}

CounterRoll CounterRolls::Speed(double TennisShot::*field, std::int32_t unit) const {
  const double factor = unit == kTennisUnitMph ? kMilesPerKilometre : 1.0;
  const double next = m_next == nullptr ? 0.0 : m_next->*field * factor;
  const double current = m_current == nullptr ? 0.0 : m_current->*field * factor;
  const std::int32_t roundedNext = m_next == nullptr ? 0 : Rounded(next);
  const std::int32_t roundedCurrent = m_current == nullptr ? 0 : Rounded(current);
  const bool rises = roundedNext >= roundedCurrent;
  const std::int64_t difference = std::abs(std::int64_t{roundedNext} - roundedCurrent);
  if (difference > kMostSingleSteps) {
    const double whole = std::abs(next - current) * (rises ? 1 : -1);
    return Roll(kLargeSteps, rises, [&](std::int64_t step) {
      return Rounded(current + static_cast<double>(step) * whole * 0.25);
    });
  }
  return Roll(difference, rises, [&](std::int64_t step) {
    return Saturate<std::int32_t>(static_cast<double>(roundedCurrent + (rises ? step : -step)));
  });
}

}  // namespace vrx::overlay
