#include "foundation/time/XpDateTime.h"

#include <array>
#include <limits>
#include <optional>

#include "foundation/platform/LocalTime.h"
#include "foundation/time/DateTimeScanner.h"
#include "foundation/time/SerialDate.h"

namespace serial = vrx::serialdate;
using vrx::platform::CalendarTime;

namespace {

constexpr std::int64_t kTicksPerSecond = 10'000'000;
constexpr std::int64_t kUnixEpoch = 11'644'473'600;  // seconds from 1601 to 1970

std::optional<CalendarTime> ToCalendar(double value) {
  if (!serial::IsInRange(value)) return std::nullopt;
  const serial::Fields f = serial::ToFields(value);
  return CalendarTime{f.year, f.month, f.day, f.hour, f.minute, f.second};
}

XpDateTime FromUnixSeconds(std::int64_t seconds) {
  XpDateTime date;
  CalendarTime local;
  if (vrx::platform::LocalFromUnix(seconds, local)) {
    date.SetDateTime(local.year, local.month, local.day, local.hour, local.minute, local.second);
  }
  return date;
}

}  // namespace

XpDateTime::XpDateTime(double value) : m_value(value), m_valid(serial::IsInRange(value)) {}

XpDateTime XpDateTime::GetCurrentTime() {
  return FromUnixSeconds(static_cast<std::int64_t>(std::time(nullptr)));
}

XpDateTime XpDateTime::FromFileTime(const FILETIME& fileTime) {
  return FromUnixSeconds(static_cast<std::int64_t>(fileTime.Ticks() / kTicksPerSecond) - kUnixEpoch);
}

bool XpDateTime::SetDateTime(std::int32_t year, std::int32_t month, std::int32_t day, std::int32_t hour,
                             std::int32_t minute, std::int32_t second) {
  m_valid =
      year >= serial::kFirstYear && serial::FromFields({year, month, day, hour, minute, second}, m_value);
  return m_valid;
}

bool XpDateTime::SetFromTm(const std::tm& fields) {
  constexpr int kTmYear = 1900;
  constexpr int kMost = std::numeric_limits<int>::max() - kTmYear;
  // The largest year or month of the type must be refused without an overflow.
  const int year = fields.tm_year > kMost ? kMost : fields.tm_year;
  const int month = fields.tm_mon > kMost ? kMost : fields.tm_mon;
  return SetDateTime(year + kTmYear, month + 1, fields.tm_mday, fields.tm_hour, fields.tm_min, fields.tm_sec);
}

bool XpDateTime::ParseDateTime(const XpString& text, const XpString& format) {
  constexpr std::size_t kFewest = 3;
  std::array<std::int32_t, 6> numbers{};
  const std::size_t found = vrx::ScanIntegers(text.AsView(), format.AsView(), numbers);
  if (found < kFewest || found > numbers.size()) return false;
  return SetDateTime(numbers[0], numbers[1], numbers[2], numbers[3], numbers[4], numbers[5]);
}

bool XpDateTime::GetDateTimeFields(std::int32_t& year, std::int32_t& month, std::int32_t& day,
                                   std::int32_t& hour, std::int32_t& minute, std::int32_t& second,
                                   std::int32_t& dayOfWeek) const {
  if (!serial::IsInRange(m_value)) return false;
  const serial::Fields fields = serial::ToFields(m_value);
  year = fields.year;
  month = fields.month;
  day = fields.day;
  hour = fields.hour;
  minute = fields.minute;
  second = fields.second;
  dayOfWeek = fields.dayOfWeek;
  return true;
}

std::int32_t XpDateTime::GetSecond() const { return m_valid ? serial::ToFields(m_value).second : -1; }
std::int32_t XpDateTime::GetMinute() const { return m_valid ? serial::ToFields(m_value).minute : -1; }
std::int32_t XpDateTime::GetHour() const { return m_valid ? serial::ToFields(m_value).hour : -1; }
std::int32_t XpDateTime::GetDay() const { return m_valid ? serial::ToFields(m_value).day : -1; }
std::int32_t XpDateTime::GetMonth() const { return m_valid ? serial::ToFields(m_value).month : -1; }
std::int32_t XpDateTime::GetYear() const { return m_valid ? serial::ToFields(m_value).year : -1; }

void XpDateTime::MoveSeconds(std::int64_t seconds) {
  const double days = static_cast<double>(seconds) / static_cast<double>(serial::kSecondsPerDay);
  *this = XpDateTime(serial::FromLinear(serial::ToLinear(m_value) + days));
}

void XpDateTime::SubtractMinutes(std::int32_t minutes) { MoveSeconds(-std::int64_t{minutes} * 60); }

void XpDateTime::AddMinutesSeconds(std::int32_t minutes, std::int32_t seconds) {
  MoveSeconds(std::int64_t{minutes} * 60 + seconds);
}

XpDateTimeSpan XpDateTime::Difference(const XpDateTime& other) const {
  return XpDateTimeSpan(serial::ToLinear(m_value) - serial::ToLinear(other.m_value));
}

bool XpDateTime::DifferenceInSeconds(const XpDateTime& other, std::int64_t& seconds) const {
  seconds = 0;
  if (!m_valid || !other.m_valid) return false;
  seconds = (serial::DayNumber(m_value) - serial::DayNumber(other.m_value)) * serial::kSecondsPerDay +
            serial::SecondOfDay(m_value) - serial::SecondOfDay(other.m_value);
  return true;
}

bool XpDateTime::ToFileTime(FILETIME& fileTime) const {
  const auto local = ToCalendar(m_value);
  std::int64_t seconds = 0;
  if (!m_valid || !local || !vrx::platform::UnixFromLocal(*local, seconds)) return false;
  if (seconds < -kUnixEpoch) return false;
  fileTime = FILETIME::FromTicks(static_cast<std::uint64_t>((seconds + kUnixEpoch) * kTicksPerSecond));
  return true;
}

std::int64_t XpDateTime::ToTimeT() const {
  const auto local = ToCalendar(m_value);
  std::int64_t seconds = 0;
  return m_valid && local && vrx::platform::UnixFromLocal(*local, seconds) ? seconds : -1;
}
