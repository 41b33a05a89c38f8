// The lines of a receiver's log as it lies in a movie's sidecar: marker lines, and NMEA 0183 sentences whose
// fields are counted without the empty ones. The log reader goes through them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "foundation/time/XpDateTime.h"

namespace vrx::gps {

/// A longer line is passed over: cut to this length, its last number would be a wrong one.
inline constexpr std::size_t kMostLineBytes = 99;

enum class LineKind { Other, Header, Option, FixTime, Position };

struct LogLine {
  LineKind kind = LineKind::Other;
  std::string_view body;  // after the sentence's name; of an option line from its name on
};

/// The first known name that the line contains anywhere decides; case counts.
LogLine ClassifyLine(std::string_view line);

/// The mark by which the painter refuses to count several logs as one journey.
bool HasHeaderMark(std::string_view line);

/// Both times of an option line; a missing or wrong one is not valid.
struct OptionTimes {
  XpDateTime before;
  XpDateTime after;
};
OptionTimes ReadOptionTimes(std::string_view body);

/// The first field of a sentence; empty when it has none.
std::string_view FirstField(std::string_view body);

/// What a sentence with a position says. Fields that are missing keep their values.
struct PositionFields {
  std::int64_t millisecondsOfDay = 0;  // UTC
  std::int32_t status = 0;             // 1: valid
  double latitude = 0.0;               // arc-seconds, north positive
  double longitude = 0.0;              // arc-seconds, east positive
  bool hasSpeed = false;
  double speed = 0.0;     // knots
  std::string_view date;  // ddmmyy
};
PositionFields ReadPosition(std::string_view body);

/// Digits with a decimal point, read up to the first other character; 0.0 without a point. Of a longer text
/// the first 19 characters count. No sign and no exponent.
double ReadDecimal(std::string_view text);

/// Arc-seconds of "dddmm.mmmm".
double ReadArcSeconds(std::string_view text);

/// The time in UTC of a date "ddmmyy" of this century and a clock "hhmmss"; not valid unless both are whole.
XpDateTime ReadFixTime(std::string_view date, std::string_view clock);

}  // namespace vrx::gps
