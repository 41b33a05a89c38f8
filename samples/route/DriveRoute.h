// A drive through town that generated logs describe: bends, stops at lights, a tunnel, and a receiver that
// needs some seconds before its first fix.
#pragma once

#include "samples/route/Route.h"

namespace vrx::test_support {

struct DriveOptions {
  std::int64_t startUtcMilliseconds = RouteTimes{}.startUtcMilliseconds;
  int seconds = 600;
  double latitude = 47.3769;  // where it begins, degrees
  double longitude = 8.5417;
  int firstFixSecond = 5;
  int tunnelSecond = 240;  // where the tunnel begins
  int tunnelSeconds = 25;  // 0: none
  /// The midnight before which a leap second was put in; 0: none.
  std::int64_t leapSecondBeforeUtcMilliseconds = 0;
};

/// The same options give the same drive on every run.
class DriveRoute : public Route {
 public:
  explicit DriveRoute(const DriveOptions& options);

  const DriveOptions& Options() const { return m_options; }

 private:
  DriveOptions m_options;
};

}  // namespace vrx::test_support
