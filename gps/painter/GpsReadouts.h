// What the texts of the GPS overlay say at one moment. The painter makes it once a second and compares it.
#pragma once

#include <cstdint>

#include "gps/log/KVUGPSInfo.h"
#include "gps/track/KVSGPSClipSummary.h"
#include "vrx/XpString.h"

namespace vrx::gps {

struct GpsReadouts {
  XpString speed;  // without its unit
  XpString date;
  XpString clock;
  XpString elapsed;
  XpString total;
  XpString average;   // with its unit
  XpString distance;  // with its unit
  friend bool operator==(const GpsReadouts&, const GpsReadouts&) = default;
};

struct GpsUnitTexts {
  std::int32_t unit = 0;  // of GpsUnits.h
  XpString speed;
  XpString distance;
};

/// The moment, and what is shown of the whole.
struct GpsMoment {
  KVUGPSInfo point;  // in UTC
  bool hasFix = false;
  double averageSpeed = 0.0;         // units an hour
  std::int32_t timeZoneMinutes = 0;  // of the clip; only the low 16 bits count
  std::int64_t elapsedMs = 0;
  double totalSeconds = 0.0;
};

/// There is a position at this point, or one of the last seconds is still held.
bool HasFix(const KVUGPSInfo& point);

/// Times that are negative or no number count as 0.
GpsReadouts MakeGpsReadouts(const GpsMoment& moment, const GpsUnitTexts& units);

}  // namespace vrx::gps
