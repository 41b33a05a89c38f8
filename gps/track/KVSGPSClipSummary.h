// What is shown of a clip's track as a whole, and how its log's clock meets the clip's.
#pragma once

#include <cstdint>

struct KVSGPSClipSummary {
  double distance = 0.0;      // within the part of the clip that is shown, in the user's unit
  double averageSpeed = 0.0;  // the same distance an hour
  double maxSpeed = 0.0;      // knots
  bool logHasHeaderMark = false;
  std::int32_t timeZoneMinutes = 0;   // the clip's local time minus UTC
  std::int64_t timeShiftSeconds = 0;  // the log's clock minus true UTC, as the log itself says
};
