#include "foundation/time/SerialDate.h"

#include <array>
#include <cmath>

namespace vrx::serialdate {
namespace {

constexpr std::int64_t kDayZero = 693959;  // days from the start of the count to day 0
constexpr std::int64_t kWeekdayShift = 693958;
constexpr std::int64_t kDaysPer400Years = 146097;
constexpr std::int64_t kDaysPerCentury = 36524;
constexpr std::int64_t kDaysPer4Years = 1461;
constexpr std::int64_t kDaysPerYear = 365;
constexpr int kMonths = 12;
constexpr std::array<int, kMonths + 1> kDaysBeforeMonth = {0,   31,  59,  90,  120, 151, 181,
                                                           212, 243, 273, 304, 334, 365};

bool IsLeapYear(int year) { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

int DaysInMonth(int year, int month) {
  const auto index = static_cast<std::size_t>(month);
  const int days = kDaysBeforeMonth[index] - kDaysBeforeMonth[index - 1];
  return month == 2 && IsLeapYear(year) ? days + 1 : days;
}

bool IsInCalendar(const Fields& f) {
  if (f.year < 0 || f.year > kLastYear || f.month < 1 || f.month > kMonths) return false;
  if (f.day < 1 || f.day > DaysInMonth(f.year, f.month)) return false;
  return f.hour >= 0 && f.hour <= 23 && f.minute >= 0 && f.minute <= 59 && f.second >= 0 && f.second <= 59;
}

/// Fills month and day from the day of the year, the first being 0.
void SplitYear(std::int64_t dayOfYear, bool leap, Fields& fields) {
  constexpr std::int64_t kLeapDay = 59;
  if (leap && dayOfYear == kLeapDay) {
    fields.month = 2;
    fields.day = 29;
    return;
  }
  if (leap && dayOfYear > kLeapDay) --dayOfYear;
  std::size_t month = 1;
  while (dayOfYear >= kDaysBeforeMonth[month]) ++month;
  fields.month = static_cast<int>(month);
  fields.day = static_cast<int>(dayOfYear - kDaysBeforeMonth[month - 1] + 1);
}

/// The days of the count, from 1 January of year 0.
void SplitDays(std::int64_t days, Fields& fields) {
  std::int64_t year = days / kDaysPer400Years * 400;
  days %= kDaysPer400Years;
  // Year 0 of the 400 is a leap year, so the first century has one day more than the other three.
  bool leapCycles = true;
  if (days > kDaysPerCentury) {
    --days;
    year += days / kDaysPerCentury * 100;
    days %= kDaysPerCentury;
    leapCycles = false;
  }
  // In a century whose first year is no leap year, the first four years have one day less.
  bool leap = true;
  if (!leapCycles && days < kDaysPer4Years - 1) {
    leap = false;
  } else {
    if (!leapCycles) ++days;
    year += days / kDaysPer4Years * 4;
    days %= kDaysPer4Years;
  }
  if (leap && days > kDaysPerYear) {
    --days;
    leap = false;
  }
  if (!leap) {
    year += days / kDaysPerYear;
    days %= kDaysPerYear;
  }
  fields.year = static_cast<int>(year);
  SplitYear(days, leap, fields);
}

}  // namespace

bool FromFields(const Fields& f, double& value) {
  if (!IsInCalendar(f)) return false;
  const int year = f.year;
  std::int64_t days = year * kDaysPerYear + year / 4 - year / 100 + year / 400;
  days += kDaysBeforeMonth[static_cast<std::size_t>(f.month - 1)] + f.day;
  if (IsLeapYear(year) && f.month <= 2) --days;
  days -= kDayZero;
  const double fraction = (f.hour * 3600 + f.minute * 60 + f.second) * kSecond;
  const auto whole = static_cast<double>(days);
  value = days < 0 ? whole - fraction : whole + fraction;
  return true;
}

std::int64_t DayNumber(double value) {
  return static_cast<std::int64_t>(value < 0.0 ? std::ceil(value) : std::floor(value));
}

std::int64_t SecondOfDay(double value) {
  const double rounded = std::fabs(value) + kHalfSecond;
  return static_cast<std::int64_t>((rounded - std::floor(rounded)) * static_cast<double>(kSecondsPerDay));
}

Fields ToFields(double value) {
  Fields fields;
  const std::int64_t second = SecondOfDay(value);
  fields.second = static_cast<int>(second % 60);
  fields.minute = static_cast<int>(second / 60 % 60);
  fields.hour = static_cast<int>(second / 3600);
  const std::int64_t day = DayNumber(value);
  fields.dayOfWeek = static_cast<int>((day + kWeekdayShift) % 7);
  SplitDays(day + kDayZero, fields);
  return fields;
}

double ToLinear(double value) {
  if (!(value < 0.0)) return value;
  const double whole = std::ceil(value);
  return whole + (whole - value);
}

double FromLinear(double linear) {
  if (!(linear < 0.0)) return linear;
  const double whole = std::floor(linear);
  return whole + (whole - linear);
}

}  // namespace vrx::serialdate
