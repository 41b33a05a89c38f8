#include "gps/painter/GpsReadouts.h"

#include <algorithm>

#include "foundation/number/Saturate.h"
#include "foundation/text/XpFormat.h"
#include "gps/log/GpsTime.h"
#include "gps/track/GpsUnits.h"

namespace vrx::gps {
namespace {

constexpr char16_t kNoNumber[] = u"--";

double RoundToOneDecimal(double value) {
  return static_cast<double>(Saturate<std::int64_t>(value * 10 + 0.5)) / 10;
}

XpString OneDecimal(double value) {
  XpString text;
  XpFormat(text, u"%.1f", value);
  return text;
}

XpString Clock(std::int64_t seconds) {
  seconds = std::max<std::int64_t>(seconds, 0);
  XpString text;
  XpFormat(text, u"%02I64d:%02I64d:%02I64d", seconds / 3600, seconds / 60 % 60, seconds % 60);
  return text;
}

XpString SpeedText(const GpsMoment& moment, std::int32_t unit) {
  if (!moment.hasFix || !(moment.point.speed >= 0)) return kNoNumber;
  const bool isKnown = unit >= kGpsUnitKilometers && unit <= kGpsUnitNauticalMiles;
  return OneDecimal(isKnown ? RoundToOneDecimal(SpeedInUnit(moment.point.speed, unit)) : 0.0);
}

}  // namespace

bool HasFix(const KVUGPSInfo& point) { return point.status != 0 || point.kind == GPSPointHeld; }

GpsReadouts MakeGpsReadouts(const GpsMoment& moment, const GpsUnitTexts& units) {
  const auto minutes = static_cast<std::int16_t>(moment.timeZoneMinutes);
  const XpDateTime local = Moved(XpDateTime(moment.point.time), kSecondsPerMinute * minutes);
  const XpString average =
      moment.averageSpeed >= 0 ? OneDecimal(RoundToOneDecimal(moment.averageSpeed)) : XpString(kNoNumber);
  return {.speed = SpeedText(moment, units.unit),
          .date = local.FormatDate(XpDateShort),
          .clock = local.FormatTime(XpTimeSecond, false),
          .elapsed = Clock(moment.elapsedMs / 1000),
          .total = Clock(Saturate<std::int64_t>(moment.totalSeconds)),
          .average = average + u" " + units.speed,
          .distance = OneDecimal(moment.point.distance) + u" " + units.distance};
}

}  // namespace vrx::gps
