#include "src/timeline/FrameClock.h"

#include <cmath>
#include <limits>

#include "foundation/number/Saturate.h"

namespace vrx::timeline {
namespace {

constexpr double kMillisecondsPerSecond = 1000.0;

bool IsPositive(std::uint64_t number) {
  return number != 0 && number <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
}

}  // namespace

std::int64_t ToInt64(double value) { return Saturate<std::int64_t>(value); }

FrameClock::FrameClock(const VRXTimeInfo& frameDuration)
    : m_frame(frameDuration), m_usable(IsPositive(frameDuration.value) && IsPositive(frameDuration.scale)) {}

std::int64_t FrameClock::FloorToFrame(double milliseconds) const {
  if (!m_usable) return 0;
  const auto value = static_cast<double>(m_frame.value);
  const auto scale = static_cast<double>(m_frame.scale);
  return ToInt64(std::floor(scale * milliseconds / (value * kMillisecondsPerSecond)) * value);
}

VRXTimeInfo FrameClock::At(std::int64_t frameTime) const {
  return {static_cast<std::uint64_t>(frameTime), m_frame.scale};
}

double FrameClock::ToSeconds(std::int64_t frameTime) const {
  return m_usable ? static_cast<double>(frameTime) / static_cast<double>(m_frame.scale) : 0.0;
}

}  // namespace vrx::timeline
