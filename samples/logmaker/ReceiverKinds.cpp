#include "samples/logmaker/ReceiverKinds.h"

#include "samples/logmaker/GpxLog.h"
#include "samples/logmaker/NmeaLog.h"

namespace vrx::test_support {
namespace {

std::string Utf16Gpx(const Route& route) {
  return GpxLog(route, {.speed = GpxSpeed::kExtension, .isUtf16 = true});
}

constexpr ReceiverKind kKinds[] = {
    {"classic", "GPS alone, RMC and GGA, NMEA 2.0 in whole seconds",
     [](const Route& route) { return NmeaLog(route, {.version = NmeaVersion::k20, .timeDecimals = 0}); }},
    {"mixed", "several systems, with GSA, GSV and VTG",
     [](const Route& route) { return NmeaLog(route, {.talker = "GN", .hasSatellites = true}); }},
    {"beidou", "BeiDou, talker BD, last position while void",
     [](const Route& route) {
       return NmeaLog(route, {.talker = "BD", .voids = NmeaVoid::kLastPosition, .hasCourse = false});
     }},
    {"beidou-41", "BeiDou, talker GB of NMEA 4.1",
     [](const Route& route) { return NmeaLog(route, {.talker = "GB", .version = NmeaVersion::k41}); }},
    {"galileo", "Galileo, five decimals, nothing while void",
     [](const Route& route) {
       return NmeaLog(route, {.talker = "GA", .voids = NmeaVoid::kNothing, .positionDecimals = 5});
     }},
    {"glonass", "GLONASS, RMC alone",
     [](const Route& route) { return NmeaLog(route, {.talker = "GL", .hasGga = false}); }},
    {"qzss", "QZSS, a time stamp before each line",
     [](const Route& route) {
       return NmeaLog(route, {.talker = "QZ", .linePrefix = "2024-05-01 14:00:00.250 "});
     }},
    {"5hz", "five fixes a second",
     [](const Route& route) { return NmeaLog(route, {.rate = 5, .positionDecimals = 5}); }},
    {"10hz", "ten fixes a second, NMEA 4.1",
     [](const Route& route) {
       return NmeaLog(route,
                      {.talker = "GN", .version = NmeaVersion::k41, .rate = 10, .positionDecimals = 7});
     }},
    {"20hz", "twenty fixes a second, times with six decimals",
     [](const Route& route) {
       return NmeaLog(route, {.talker = "GN", .rate = 20, .timeDecimals = 6, .positionDecimals = 5});
     }},
    {"no-checksum", "without checksums",
     [](const Route& route) { return NmeaLog(route, {.hasChecksum = false}); }},
    {"cr", "lines end with CR", [](const Route& route) { return NmeaLog(route, {.lineEnd = "\r"}); }},
    {"lf", "lines end with LF", [](const Route& route) { return NmeaLog(route, {.lineEnd = "\n"}); }},
    {"cr-cr-lf", "lines end with CR CR LF",
     [](const Route& route) { return NmeaLog(route, {.lineEnd = "\r\r\n"}); }},
    {"binary", "messages of a binary protocol between the sentences",
     [](const Route& route) { return NmeaLog(route, {.talker = "GN", .hasBinary = true}); }},
    {"rolled", "a date that is 1024 weeks too early",
     [](const Route& route) { return NmeaLog(route, {.rolledWeeks = 1024}); }},
    {"rolled-twice", "a date that is 2048 weeks too early",
     [](const Route& route) { return NmeaLog(route, {.rolledWeeks = 2048}); }},
    {"gpx-10", "GPX 1.0 with speeds",
     [](const Route& route) { return GpxLog(route, {.version = "1.0", .speed = GpxSpeed::kElement}); }},
    {"gpx-11", "GPX 1.1 with speeds and heart rate in extensions",
     [](const Route& route) { return GpxLog(route, {.speed = GpxSpeed::kExtension}); }},
    {"gpx-plain", "GPX 1.1 without speeds", [](const Route& route) { return GpxLog(route, {}); }},
    {"gpx-prefix", "GPX 1.1 whose elements have a prefix, five points a second",
     [](const Route& route) {
       return GpxLog(route, {.speed = GpxSpeed::kExtension, .prefix = "g:", .rate = 5});
     }},
    {"gpx-local", "GPX 1.1 with times of UTC-03:30",
     [](const Route& route) { return GpxLog(route, {.speed = GpxSpeed::kExtension, .zoneMinutes = -210}); }},
    {"gpx-utf16", "GPX 1.1 in UTF-16", Utf16Gpx},
};

}  // namespace

std::span<const ReceiverKind> ReceiverKinds() { return kKinds; }

}  // namespace vrx::test_support
