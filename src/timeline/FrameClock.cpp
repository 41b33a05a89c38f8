#include "src/timeline/FrameClock.h"

#include <cmath>
#include <limits>

#include "foundation/number/Saturate.h"

namespace vrx::timeline {
namespace {

bool IsPositive(std::uint64_t number) {
  return number != 0 && number <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
}

}  // namespace

FrameClock::FrameClock(const VRXTimeInfo& frameDuration)
    : m_frame(frameDuration), m_usable(IsPositive(frameDuration.value) && IsPositive(frameDuration.scale)) {}

double FrameClock::FramesIn(double milliseconds) const {
  if (!m_usable) return 0.0;
  return static_cast<double>(m_frame.scale) * milliseconds /
         (static_cast<double>(m_frame.value) * kMillisecondsPerSecond);
}

double FrameClock::FramesInSeconds(double seconds) const {
  if (!m_usable) return 0.0;
  return static_cast<double>(m_frame.scale) * seconds * kMillisecondsPerSecond /
         (static_cast<double>(m_frame.value) * kMillisecondsPerSecond);
}

std::int64_t FrameClock::TimeOf(double frames) const {
  return Saturate<std::int64_t>(frames * static_cast<double>(m_frame.value));
}

std::int64_t FrameClock::FloorToFrame(double milliseconds) const {
  return TimeOf(std::floor(FramesIn(milliseconds)));
}

VRXTimeInfo FrameClock::At(std::int64_t frameTime) const {
  return {static_cast<std::uint64_t>(frameTime), m_frame.scale};
}

std::int64_t FrameClock::NumberAt(std::int64_t frameTime) const {
  return m_usable ? frameTime / GetFrameValue() : 0;
}

double FrameClock::ToSeconds(std::int64_t frameTime) const {
  return m_usable ? static_cast<double>(frameTime) / static_cast<double>(m_frame.scale) : 0.0;
}

}  // namespace vrx::timeline
