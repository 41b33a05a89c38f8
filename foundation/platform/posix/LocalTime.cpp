#include "foundation/platform/LocalTime.h"

#include <time.h>

namespace vrx::platform {

namespace {
constexpr int kTmYear = 1900;
}

bool LocalFromUnix(std::int64_t seconds, CalendarTime& local) {
  static_assert(sizeof(time_t) >= sizeof(seconds));
  const time_t point = seconds;
  tm fields{};
  tzset();  // localtime_r alone need not notice a changed zone
  if (localtime_r(&point, &fields) == nullptr) return false;
  local = {fields.tm_year + kTmYear, fields.tm_mon + 1, fields.tm_mday,
           fields.tm_hour,           fields.tm_min,     fields.tm_sec};
  return true;
}

bool UnixFromLocal(const CalendarTime& local, std::int64_t& seconds) {
  constexpr int kUntouched = -1;
  tm fields{};
  fields.tm_year = local.year - kTmYear;
  fields.tm_mon = local.month - 1;
  fields.tm_mday = local.day;
  fields.tm_hour = local.hour;
  fields.tm_min = local.minute;
  fields.tm_sec = local.second;
  fields.tm_isdst = -1;
  fields.tm_wday = kUntouched;  // -1 is also the result of the second before 1970
  const time_t point = mktime(&fields);
  if (fields.tm_wday == kUntouched) return false;
  seconds = point;
  return true;
}

}  // namespace vrx::platform
