// Dates and times of the logs of receivers: their digits, and milliseconds since 1970 in UTC. The readers and
// the writer of logs use it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vrx::receiver {

inline constexpr std::int64_t kMillisecondsPerSecond = 1000;
inline constexpr std::int64_t kSecondsPerDay = 86'400;
inline constexpr std::int64_t kWeekRolloverSeconds = 1024 * 7 * kSecondsPerDay;
inline constexpr int kFirstYear = 1970;
inline constexpr int kLastYear = 2199;

struct CivilTime {
  int year = 0;
  int month = 0;  // 1 to 12
  int day = 0;
  int hour = 0;
  int minute = 0;
  int second = 0;  // 60 in a leap second
  int millisecond = 0;
};

/// Of a clock that is `zoneMinutes` ahead of UTC. Nothing when the fields are no date and time from 1970 to
/// 2199. The leap second 23:59:60 becomes the last
/// millisecond of its day: UTC as a count has no place for it, and so the log's times still never fall back.
std::optional<std::int64_t> UtcMilliseconds(const CivilTime& time, int zoneMinutes = 0);
/// Times outside of the years 1 to 9999 become the nearest one inside.
CivilTime CivilUtc(std::int64_t utcMilliseconds);

/// Takes `count` digits from the front of `text` as a number; false, with nothing taken, when there are
/// fewer.
bool TakeDigits(std::string_view& text, int count, int& number);
/// Takes a "." or "," and the digits after it as milliseconds, the rest of the digits cut off; without any,
/// they are 0.
int TakeMilliseconds(std::string_view& text);

/// Digits with at most one point between or around them, and nothing else.
std::optional<double> PlainDecimal(std::string_view text);
/// `value` with `decimals` digits after the point, the same in every locale.
std::string FixedDecimal(double value, int decimals);
/// `value` with leading zeros to `width` digits.
std::string Digits(std::int64_t value, int width);

/// A date and time of ISO 8601 in its extended form, with a blank or a T between them. Without a zone it is
/// UTC.
std::optional<std::int64_t> ParseIsoTime(std::string_view text);
/// "2024-05-01T10:11:12Z"; parts of a second are cut off.
std::string IsoText(std::int64_t utcMilliseconds);
/// "2024-05-01".
std::string UtcDateText(std::int64_t utcMilliseconds);
/// `text` without blanks around it.
std::string_view Trimmed(std::string_view text);

}  // namespace vrx::receiver
