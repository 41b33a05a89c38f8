#include "gps/receiver/UtcTime.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>

namespace vrx::receiver {
namespace {

constexpr std::int64_t kEarliest = -62'135'596'800'000;  // 1 January 1
constexpr std::int64_t kLatest = 253'402'300'799'999;    // 31 December 9999
constexpr int kLeapSecond = 60;
constexpr int kLastMillisecond = 999;
constexpr std::size_t kLongestNumber = 32;  // far beyond any field that carries meaning

constexpr int kMostZoneHours = 24;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

/// "Z", "+02:00", "-0330" or "+01", as minutes; nothing at all is UTC, as GPX wants its times.
std::optional<int> ZoneMinutes(std::string_view text) {
  if (text.empty() || text == "Z" || text == "z") return 0;
  const bool isWest = text.front() == '-';
  if (!isWest && text.front() != '+') return {};
  text.remove_prefix(1);
  int hours = 0;
  int minutes = 0;
  if (!TakeDigits(text, 2, hours)) return {};
  if (text.starts_with(':')) text.remove_prefix(1);
  if (!text.empty() && !TakeDigits(text, 2, minutes)) return {};
  if (!text.empty() || hours > kMostZoneHours || minutes > 59) return {};
  return (isWest ? -1 : 1) * (hours * 60 + minutes);
}

bool TakeCharacter(std::string_view& text, std::string_view allowed) {
  if (text.empty() || allowed.find(text.front()) == std::string_view::npos) return false;
  text.remove_prefix(1);
  return true;
}

}  // namespace

std::optional<std::int64_t> UtcMilliseconds(const CivilTime& time, int zoneMinutes) {
  using namespace std::chrono;
  if (time.year < kFirstYear || time.year > kLastYear || time.month < 1 || time.day < 1) return {};
  const year_month_day date{year(time.year), month(static_cast<unsigned>(time.month)),
                            day(static_cast<unsigned>(time.day))};
  if (!date.ok() || time.hour < 0 || time.hour > 23 || time.minute < 0 || time.minute > 59) return {};
  if (time.second < 0 || time.second > kLeapSecond) return {};
  const bool isLeapSecond = time.second == kLeapSecond;
  const std::int64_t minutes = time.hour * 60 + time.minute - zoneMinutes;
  const std::int64_t utcSeconds = sys_days(date).time_since_epoch().count() * kSecondsPerDay + minutes * 60 +
                                  (isLeapSecond ? kLeapSecond - 1 : time.second);
  if (utcSeconds < 0 || (isLeapSecond && (utcSeconds + 1) % kSecondsPerDay != 0)) return {};
  return utcSeconds * kMillisecondsPerSecond + (isLeapSecond ? kLastMillisecond : time.millisecond);
}

CivilTime CivilUtc(std::int64_t utcMilliseconds) {
  using namespace std::chrono;
  const sys_time<milliseconds> moment{milliseconds(std::clamp(utcMilliseconds, kEarliest, kLatest))};
  const sys_days midnight = floor<days>(moment);
  const year_month_day date(midnight);
  const hh_mm_ss clock(moment - midnight);
  return {static_cast<int>(date.year()),
          static_cast<int>(static_cast<unsigned>(date.month())),
          static_cast<int>(static_cast<unsigned>(date.day())),
          static_cast<int>(clock.hours().count()),
          static_cast<int>(clock.minutes().count()),
          static_cast<int>(clock.seconds().count()),
          static_cast<int>(clock.subseconds().count())};
}

bool TakeDigits(std::string_view& text, int count, int& number) {
  const auto length = static_cast<std::size_t>(count);
  if (text.size() < length || !std::ranges::all_of(text.substr(0, length), IsDigit)) return false;
  number = 0;
  for (const char c : text.substr(0, length)) number = number * 10 + (c - '0');
  text.remove_prefix(length);
  return true;
}

int TakeMilliseconds(std::string_view& text) {
  if (text.empty() || (text.front() != '.' && text.front() != ',')) return 0;
  text.remove_prefix(1);
  int milliseconds = 0;
  for (int place = 100; !text.empty() && IsDigit(text.front()); place /= 10) {
    milliseconds += place * (text.front() - '0');
    text.remove_prefix(1);
  }
  return milliseconds;
}

std::optional<double> PlainDecimal(std::string_view text) {
  const auto points = std::ranges::count(text, '.');
  const bool isPlain = std::ranges::all_of(text, [](char c) { return IsDigit(c) || c == '.'; });
  if (!isPlain || points > 1 || text.size() > kLongestNumber ||
      text.size() == static_cast<std::size_t>(points)) {
    return {};
  }
  double value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value);  // cannot fail on this form
  return value;
}

std::string FixedDecimal(double value, int decimals) {
  std::array<char, 400> buffer;  // the longest double has 309 digits before its point
  const auto result =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed, decimals);
  return {buffer.data(), result.ptr};
}

std::string Digits(std::int64_t value, int width) {
  std::string text = std::to_string(value);
  const auto length = static_cast<std::size_t>(width);
  return text.size() < length ? std::string(length - text.size(), '0') + text : text;
}

std::optional<std::int64_t> ParseIsoTime(std::string_view text) {
  text = Trimmed(text);
  CivilTime time;
  const bool isRead =
      TakeDigits(text, 4, time.year) && TakeCharacter(text, "-") && TakeDigits(text, 2, time.month) &&
      TakeCharacter(text, "-") && TakeDigits(text, 2, time.day) && TakeCharacter(text, "Tt ") &&
      TakeDigits(text, 2, time.hour) && TakeCharacter(text, ":") && TakeDigits(text, 2, time.minute) &&
      TakeCharacter(text, ":") && TakeDigits(text, 2, time.second);
  if (!isRead) return {};
  time.millisecond = TakeMilliseconds(text);
  const auto zoneMinutes = ZoneMinutes(text);
  return zoneMinutes ? UtcMilliseconds(time, *zoneMinutes) : std::nullopt;
}

std::string UtcDateText(std::int64_t utcMilliseconds) {
  const CivilTime time = CivilUtc(utcMilliseconds);
  return Digits(time.year, 4) + "-" + Digits(time.month, 2) + "-" + Digits(time.day, 2);
}

std::string IsoText(std::int64_t utcMilliseconds) {
  const CivilTime time = CivilUtc(utcMilliseconds);
  return UtcDateText(utcMilliseconds) + "T" + Digits(time.hour, 2) + ":" + Digits(time.minute, 2) + ":" +
         Digits(time.second, 2) + "Z";
}

std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

}  // namespace vrx::receiver
