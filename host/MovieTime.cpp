#include "host/MovieTime.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <string_view>

#include "host/ReadNumber.h"
#include "src/timeline/FrameClock.h"

namespace vrx::host {
namespace {

constexpr double kMinute = 60.0;  // seconds; and minutes of an hour
constexpr int kMostParts = 3;

/// Hours and minutes are whole; what follows a colon is below 60.
std::optional<double> SecondsOf(std::string_view text) {
  double seconds = 0.0;
  for (int parts = 1; parts <= kMostParts; ++parts) {
    const std::size_t colon = text.find(':');
    const bool isLast = colon == text.npos;
    double part = 0.0;
    const bool isRead = ReadNumber(text.substr(0, colon), part, std::chars_format::fixed);
    if (!isRead || !std::isfinite(part) || std::signbit(part)) return {};
    if ((parts > 1 && part >= kMinute) || (!isLast && part != std::floor(part))) return {};
    seconds = seconds * kMinute + part;
    if (isLast) return seconds;
    text.remove_prefix(colon + 1);
  }
  return {};
}

/// What people write as well: "12,5", "90s", "1500ms".
std::optional<double> SecondsMeant(std::string text) {
  constexpr double kMillisecond = 1e-3;
  std::ranges::replace(text, ',', '.');
  double unit = 1.0;
  if (text.ends_with("ms")) {
    unit = kMillisecond;
    text.resize(text.size() - 2);
  } else if (text.ends_with('s')) {
    text.pop_back();
  }
  const auto seconds = SecondsOf(text);
  return seconds ? std::optional(*seconds * unit) : std::nullopt;
}

}  // namespace

std::optional<MovieTime> ParseMovieTime(const std::string& text) {
  if (text.ends_with('f')) {
    std::uint32_t frame = 0;
    if (!ReadNumber(std::string_view(text).substr(0, text.size() - 1), frame)) return {};
    return MovieTime{.frame = frame};
  }
  const auto seconds = SecondsOf(text);
  return seconds ? std::optional(MovieTime{.seconds = *seconds}) : std::nullopt;
}

std::string CheckMovieTime(const std::string& text) {
  if (ParseMovieTime(text)) return {};
  std::string cause = text + " is no time such as 12.5, 1:02.5, 00:01:02 or 310f";
  if (const auto meant = SecondsMeant(text)) {
    char number[32];
    std::snprintf(number, sizeof(number), "%.10g", *meant);
    cause += "; did you mean " + std::string(number) + "?";
  }
  return cause;
}

std::string ReadSeconds(std::string& text, double least, double most) {
  const bool isNegative = least < 0.0 && text.starts_with('-');
  const std::string amount = isNegative ? text.substr(1) : text;
  if (std::string cause = CheckMovieTime(amount); !cause.empty()) return cause;
  const MovieTime time = *ParseMovieTime(amount);
  if (time.frame) return text + " counts frames; a time such as 12.5 or 1:02.5 is needed";
  const double seconds = isNegative ? -time.seconds : time.seconds;
  char number[64];
  if (!(seconds >= least && seconds <= most)) {
    std::snprintf(number, sizeof(number), "%.10g to %.10g", least, most);
    return text + " is not from " + number + " seconds";
  }
  std::snprintf(number, sizeof(number), "%.10g", seconds);
  text = number;
  return {};
}

std::int64_t FrameAt(const MovieTime& time, const VRXTimeInfo& frameDuration) {
  if (time.frame) return *time.frame;
  const timeline::FrameClock clock(frameDuration);
  // So that a time that was copied from a frame's own start gives that frame despite its rounding.
  constexpr double kRoundingMs = 1e-6;
  return clock.IsUsable() ? clock.FloorToFrame(time.seconds * 1000.0 + kRoundingMs) / clock.GetFrameValue()
                          : 0;
}

}  // namespace vrx::host
