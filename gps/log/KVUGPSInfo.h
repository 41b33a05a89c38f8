// One point of a GPS log or of the track that is made of it. The overlay shows nothing else.
#pragma once

#include <cstdint>
#include <vector>

/// How a point of the track came to be.
enum : std::int32_t {
  GPSPointLogged = 0,        // read from the log
  GPSPointBeforeFix = 1,     // before the first logged point
  GPSPointInterpolated = 2,  // in a gap, after its first seconds
  GPSPointAfterFix = 3,      // after the last logged point and the seconds for which it is held
  GPSPointHeld = 4,          // the first seconds of a gap, or after the last logged point
};

inline constexpr double kGPSNoSpeed = -1.0;
inline constexpr double kArcSecondsPerDegree = 3600.0;

struct KVUGPSInfo {
  double time = 0.0;              // serial date; UTC in a log's points, local time in the timeline of a movie
  double longitude = 0.0;         // arc-seconds, east positive
  double latitude = 0.0;          // arc-seconds, north positive
  double speed = kGPSNoSpeed;     // knots; negative: not known
  double distance = 0.0;          // from the start of the stretch, in the user's unit
  std::int64_t milliseconds = 0;  // time of day in UTC, as the position's own sentence has it
  std::int32_t status = 0;        // 1: the receiver called the position valid
  std::int32_t kind = GPSPointLogged;
};

/// In the order of time. Held by value: each step of the work copies its points, and none is shared.
using KVUGPSInfoList = std::vector<KVUGPSInfo>;
