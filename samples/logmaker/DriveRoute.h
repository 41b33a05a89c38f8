// A drive through town that generated logs describe: bends, stops at lights, a tunnel, and a receiver that
// needs some seconds before its first fix.
#pragma once

#include <cstdint>
#include <vector>

namespace vrx::test_support {

struct DriveOptions {
  std::int64_t startUtcMilliseconds = 1'714'564'800'000;  // 1 May 2024, 12:00:00
  int seconds = 600;
  double latitude = 47.3769;  // where it begins, degrees
  double longitude = 8.5417;
  int firstFixSecond = 5;
  int tunnelSecond = 240;  // where the tunnel begins
  int tunnelSeconds = 25;  // 0: none
  /// The midnight before which a leap second was put in; 0: none.
  std::int64_t leapSecondBeforeUtcMilliseconds = 0;
};

struct DriveState {
  double latitude = 0.0;  // degrees, north and east positive
  double longitude = 0.0;
  double metersPerSecond = 0.0;
  double courseDegrees = 0.0;  // clockwise from north
  bool hasFix = false;
};

/// A clock's reading; `second` is 60 in a leap second.
struct ClockReading {
  int year, month, day, hour, minute, second, millisecond;
};

/// The same options give the same drive on every run.
class DriveRoute {
 public:
  explicit DriveRoute(const DriveOptions& options);

  const DriveOptions& Options() const { return m_options; }
  std::int64_t Milliseconds() const { return std::int64_t{m_options.seconds} * 1000; }
  /// Times are since the start, and are cut to the drive.
  DriveState At(std::int64_t elapsedMilliseconds) const;
  /// UTC, moved by a zone or by the weeks that a receiver is wrong.
  ClockReading ClockAt(std::int64_t elapsedMilliseconds, std::int64_t movedBySeconds) const;

 private:
  DriveOptions m_options;
  std::vector<DriveState> m_states;  // one for each step
};

}  // namespace vrx::test_support
