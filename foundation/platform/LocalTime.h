// The system's rules of local time: zone and summer time at a given date.
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
};

/// Local calendar time of a number of seconds since 1970, UTC. False when the system cannot tell.
bool LocalFromUnix(std::int64_t seconds, CalendarTime& local);
/// A time that summer time skips or repeats is resolved as the C library does.
bool UnixFromLocal(const CalendarTime& local, std::int64_t& seconds);

}  // namespace vrx::platform
