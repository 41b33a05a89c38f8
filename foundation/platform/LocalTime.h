// The rules of local time that the system is set to: zone and summer time, now and at a given date.
#pragma once

#include <cstdint>

namespace vrx::platform {

struct CalendarTime {
  std::int32_t year = 0;
  std::int32_t month = 0;  // 1 to 12
  std::int32_t day = 0;
  std::int32_t hour = 0;
  std::int32_t minute = 0;
  std::int32_t second = 0;
  friend bool operator==(const CalendarTime&, const CalendarTime&) = default;
};

/// Local calendar time of a number of seconds since 1970, UTC. False when the system cannot tell.
bool LocalFromUnix(std::int64_t seconds, CalendarTime& local);
/// A time that the end of summer time repeats means the first of the two; a time that its start skips counts
/// with the offset from before. False when the system cannot tell.
bool UnixFromLocal(const CalendarTime& local, std::int64_t& seconds);

/// Minutes that local time is ahead of UTC now, summer time included; negative west of Greenwich.
std::int32_t UtcOffsetMinutes();

}  // namespace vrx::platform
