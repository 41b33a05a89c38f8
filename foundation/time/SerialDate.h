// The arithmetic of serial dates: days since 30 December 1899 as a floating-point value whose fraction always
// runs forward in time. Used by XpDateTime and XpDateTimeSpan.
#pragma once

#include <cstdint>

namespace vrx::serialdate {

inline constexpr std::int64_t kSecondsPerDay = 86400;
inline constexpr double kSecond = 1.1574074074074073e-05;  // in days
inline constexpr double kHalfSecond = 5.787037037037037e-06;
inline constexpr double kFirst = -657434.0;         // 1 January 100
inline constexpr double kLast = 2958465.999988426;  // 31 December 9999, 23:59:59
inline constexpr int kFirstYear = 100;
inline constexpr int kLastYear = 9999;

struct Fields {
  int year = 0;
  int month = 0;  // 1 to 12
  int day = 0;
  int hour = 0;
  int minute = 0;
  int second = 0;
  int dayOfWeek = 0;  // 0 is Sunday
};

/// False for NaN too.
inline bool IsInRange(double value) { return value >= kFirst && value <= kLast; }

/// False, with `value` untouched, when a field is outside the calendar. The year may go down to 0; the day of
/// the week is not read.
bool FromFields(const Fields& fields, double& value);

/// Whole days since day 0; the day's own number even when its last half second rounds up.
std::int64_t DayNumber(double value);
/// Second of the day, 0 to 86399, rounded.
std::int64_t SecondOfDay(double value);
/// `value` has to be in range.
Fields ToFields(double value);

/// Converts to days that can be added and subtracted also before day 0, and back.
double ToLinear(double value);
double FromLinear(double linear);

}  // namespace vrx::serialdate
