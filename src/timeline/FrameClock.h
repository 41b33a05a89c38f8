// Turns the milliseconds of documents into frame times: 64-bit counts of 1 / TimeScale seconds that are
// always a multiple of TimeValue, the length of a frame.
#pragma once

#include <cstdint>

#include "vrx/VRXTimeline.h"

namespace vrx::timeline {

inline constexpr double kMillisecondsPerSecond = 1000.0;

class FrameClock {
 public:
  explicit FrameClock(const VRXTimeInfo& frameDuration);

  /// False for a frame without a length; every frame time is then 0.
  bool IsUsable() const { return m_usable; }
  /// How many frames a time lasts, with the fraction of the last; 0 without a frame length. The products are
  /// formed from left to right in doubles, which decides about times that lie on a frame's edge.
  double FramesIn(double milliseconds) const;
  double FramesInSeconds(double seconds) const;
  /// The time at which frame `frames` begins.
  std::int64_t TimeOf(double frames) const;
  /// The frame that begins at or before `milliseconds`.
  std::int64_t FloorToFrame(double milliseconds) const;
  VRXTimeInfo At(std::int64_t frameTime) const;
  /// The number of the frame that begins at `frameTime`, from 0; 0 without a frame length.
  std::int64_t NumberAt(std::int64_t frameTime) const;
  std::int64_t GetFrameValue() const { return static_cast<std::int64_t>(m_frame.value); }
  double ToSeconds(std::int64_t frameTime) const;

 private:
  VRXTimeInfo m_frame;
  bool m_usable;
};

}  // namespace vrx::timeline
