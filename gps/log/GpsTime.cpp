#include "gps/log/GpsTime.h"

#include <cmath>

#include "foundation/number/Saturate.h"
#include "foundation/time/SerialDate.h"

namespace vrx::gps {

namespace serial = vrx::serialdate;

std::int64_t WholeSeconds(double serialDate) {
  if (!serial::IsInRange(serialDate)) return 0;
  return std::llround(serial::ToLinear(serialDate) * static_cast<double>(serial::kSecondsPerDay));
}

XpDateTime FromWholeSeconds(std::int64_t seconds) {
  std::int64_t day = seconds / serial::kSecondsPerDay;
  std::int64_t secondOfDay = seconds % serial::kSecondsPerDay;
  if (secondOfDay < 0) {
    secondOfDay += serial::kSecondsPerDay;
    --day;
  }
  const auto days = static_cast<double>(day);
  const double fraction = static_cast<double>(secondOfDay) * serial::kSecond;
  return XpDateTime(day < 0 ? days - fraction : days + fraction);
}

XpDateTime Moved(const XpDateTime& date, std::int64_t seconds) {
  return date.IsValid() ? FromWholeSeconds(SaturatedAdd(WholeSeconds(date), seconds)) : date;
}

}  // namespace vrx::gps
