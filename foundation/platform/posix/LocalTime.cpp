#include "foundation/platform/LocalTime.h"

#include <time.h>

#include <initializer_list>

namespace vrx::platform {
namespace {

constexpr int kTmYear = 1900;
constexpr std::int64_t kSecondsPerMinute = 60;
constexpr std::int64_t kSecondsPerDay = 86400;
static_assert(sizeof(time_t) >= sizeof(std::int64_t));

/// By the zone that is in force now; localtime_r alone need not notice a change.
bool LocalFields(std::int64_t seconds, tm& fields) {
  const time_t point = seconds;
  tzset();
  return localtime_r(&point, &fields) != nullptr;
}

CalendarTime CalendarOf(const tm& fields) {
  return {fields.tm_year + kTmYear, fields.tm_mon + 1, fields.tm_mday,
          fields.tm_hour,           fields.tm_min,     fields.tm_sec};
}

/// What the fields would be in UTC.
std::int64_t SecondsAsUtc(const CalendarTime& time) {
  tm fields{};
  fields.tm_year = time.year - kTmYear;
  fields.tm_mon = time.month - 1;
  fields.tm_mday = time.day;
  fields.tm_hour = time.hour;
  fields.tm_min = time.minute;
  fields.tm_sec = time.second;
  return timegm(&fields);
}

}  // namespace

bool LocalFromUnix(std::int64_t seconds, CalendarTime& local) {
  tm fields{};
  if (!LocalFields(seconds, fields)) return false;
  local = CalendarOf(fields);
  return true;
}

// mktime is not used: its answer for a repeated time depends on earlier calls.
bool UnixFromLocal(const CalendarTime& local, std::int64_t& seconds) {
  const std::int64_t asUtc = SecondsAsUtc(local);
  tm before{}, after{};
  if (!LocalFields(asUtc - kSecondsPerDay, before) || !LocalFields(asUtc + kSecondsPerDay, after)) {
    return false;
  }
  seconds = asUtc - before.tm_gmtoff;
  if (before.tm_gmtoff == after.tm_gmtoff) return true;
  CalendarTime found;
  for (const long offset : {before.tm_gmtoff, after.tm_gmtoff}) {
    if (!LocalFromUnix(asUtc - offset, found) || found != local) continue;
    seconds = asUtc - offset;
    break;
  }
  return true;
}

std::int32_t UtcOffsetMinutes() {
  tm local{};
  if (!LocalFields(time(nullptr), local)) return 0;
  return static_cast<std::int32_t>(local.tm_gmtoff / kSecondsPerMinute);
}

}  // namespace vrx::platform
