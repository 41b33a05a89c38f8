#include "gps/receiver/LogFormat.h"

#include <string_view>

#include "gps/receiver/GpxReader.h"
#include "gps/receiver/NmeaReader.h"

namespace vrx::receiver {
namespace {

constexpr std::string_view kMoffSignature = "MOFF";

}  // namespace

LogFormat DetectFormat(std::span<const char> bytes) {
  if (std::string_view(bytes.data(), bytes.size()).starts_with(kMoffSignature)) return LogFormat::Moff;
  if (HoldsGpx(bytes)) return LogFormat::Gpx;
  return HoldsNmea(bytes) ? LogFormat::Nmea : LogFormat::Unknown;
}

const char* LogFormatName(LogFormat format) {
  switch (format) {
    case LogFormat::Moff:
      return "moff";
    case LogFormat::Nmea:
      return "nmea";
    case LogFormat::Gpx:
      return "gpx";
    case LogFormat::Unknown:
      break;
  }
  return "unknown";
}

}  // namespace vrx::receiver
