// Serial dates as whole seconds, in which logs and tracks count and compare: sums of serial dates are off by
// parts of a microsecond, which must not decide whether a point lies in a range.
#pragma once

#include <cstdint>

#include "foundation/time/XpDateTime.h"

namespace vrx::gps {

/// Seconds since 30 December 1899, rounded. A value that is no date gives 0.
std::int64_t WholeSeconds(double serialDate);
inline std::int64_t WholeSeconds(const XpDateTime& date) { return WholeSeconds(date.GetValue()); }

/// The same serial date that the calendar's fields give. Not valid beyond the years 100 to 9999.
XpDateTime FromWholeSeconds(std::int64_t seconds);

/// The date moved by a number of seconds that may be negative; one that is not valid stays as it is.
XpDateTime Moved(const XpDateTime& date, std::int64_t seconds);

inline constexpr std::int64_t kSecondsPerMinute = 60;

/// The date in UTC of one in a zone `minutes` east of it.
inline XpDateTime UtcFromLocal(const XpDateTime& local, std::int32_t minutes) {
  return Moved(local, -kSecondsPerMinute * minutes);
}

}  // namespace vrx::gps
