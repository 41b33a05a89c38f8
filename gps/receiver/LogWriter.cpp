#include "gps/receiver/LogWriter.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string_view>
#include <utility>

#include "gps/receiver/SecondFixes.h"
#include "gps/receiver/UtcTime.h"

namespace vrx::receiver {
namespace {

constexpr std::int64_t kFirstWritable = 946'684'800;    // 1 January 2000
constexpr std::int64_t kEndOfWritable = 4'102'444'800;  // 1 January 2100
constexpr int kMinuteDecimals = 6;                      // two millimetres
constexpr std::int64_t kMinuteParts = 1'000'000;
constexpr int kSpeedDecimals = 3;
constexpr std::size_t kBytesPerSecond = 140;  // of text, about
constexpr std::string_view kLineEnd = "\r\n";

/// "120000" of a clock.
std::string ClockText(const CivilTime& time) {
  return Digits(time.hour, 2) + Digits(time.minute, 2) + Digits(time.second, 2);
}

/// "20240501120000.000".
std::string StampText(std::int64_t utcSeconds) {
  const CivilTime time = CivilUtc(utcSeconds * kMillisecondsPerSecond);
  return Digits(time.year, 4) + Digits(time.month, 2) + Digits(time.day, 2) + ClockText(time) + ".000";
}

/// "4807.038000,N": rounded as a whole, so that there are never 60 minutes.
std::string AngleText(double degrees, int degreeDigits, const char* hemispheres) {
  const std::int64_t parts = std::llround(std::abs(degrees) * 60 * static_cast<double>(kMinuteParts));
  const std::int64_t minutes = parts / kMinuteParts;
  return Digits(minutes / 60, degreeDigits) + Digits(minutes % 60, 2) + "." +
         Digits(parts % kMinuteParts, kMinuteDecimals) + "," + hemispheres[degrees < 0 ? 1 : 0];
}

std::string Sentence(const std::string& body) {
  constexpr std::string_view kHexDigits = "0123456789ABCDEF";
  unsigned char sum = 0;
  for (const char c : body) sum = static_cast<unsigned char>(sum ^ static_cast<unsigned char>(c));
  std::string line = "$" + body + "*";
  line += kHexDigits[sum >> 4];
  line += kHexDigits[sum & 15];
  return line.append(kLineEnd);
}

/// The reader takes the clock from the first sentence, everything else from the second. It finds the date by
/// counting the fields that are not empty, so the course must be empty and the speed must not.
std::string SecondText(const Fix& fix, std::int64_t utcSecond) {
  const CivilTime time = CivilUtc(utcSecond * kMillisecondsPerSecond);
  const std::string clock = ClockText(time) + ".000";
  const std::string place = AngleText(fix.latitude, 2, "NS") + "," + AngleText(fix.longitude, 3, "EW");
  const std::string speed = FixedDecimal(std::max(fix.speedKnots, 0.0), kSpeedDecimals);
  const std::string date = Digits(time.day, 2) + Digits(time.month, 2) + Digits(time.year % 100, 2);
  return Sentence("GPGGA," + clock + "," + place + ",1,,,,M,,M,,") +
         Sentence("GPRMC," + clock + ",A," + place + "," + speed + ",," + date + ",,,A");
}

bool IsWritable(const Fix& fix) {
  return fix.utcMilliseconds >= kFirstWritable * kMillisecondsPerSecond &&
         fix.utcMilliseconds < kEndOfWritable * kMillisecondsPerSecond &&
         NearestSecond(fix) < kEndOfWritable && std::abs(fix.latitude) <= 90 &&
         std::abs(fix.longitude) <= 180 && fix.speedKnots <= kFastestKnots;
}

std::string HeadText(std::int64_t firstSecond, const LogStyle& style) {
  // The reader takes "d/" anywhere in the line for the mark.
  const std::string mark = style.hasHeaderMark ? "d/" : "";
  std::string text = "@Kelogps/" + mark + "wgs-84/" + StampText(firstSecond) + "/";
  text.append(kLineEnd);
  if (style.shiftSeconds == 0) return text;
  const std::string movieTime = StampText(firstSecond - style.shiftSeconds);
  text += "@Kelogpsoption/0/" + movieTime + "/" + StampText(firstSecond);
  return text.append(kLineEnd);
}

}  // namespace

XpResult WriteLog(std::span<const Fix> seconds, const LogStyle& style, std::string& text) {
  using Shifts = std::numeric_limits<std::int32_t>;
  text.clear();
  if (style.shiftSeconds < Shifts::min() || style.shiftSeconds > Shifts::max()) return XpErrInvalidArgument;
  std::string written;
  written.reserve(seconds.size() * kBytesPerSecond);
  std::int64_t last = 0;
  for (const Fix& fix : seconds) {
    if (!fix.isValid) continue;
    if (!IsWritable(fix) || NearestSecond(fix) <= last) return XpErrInvalidArgument;
    if (written.empty()) written = HeadText(NearestSecond(fix), style);
    last = NearestSecond(fix);
    written += SecondText(fix, last);
  }
  if (written.empty()) return XpErrInvalidArgument;
  text = std::move(written);
  return XpOk;
}

}  // namespace vrx::receiver
