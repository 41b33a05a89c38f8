#include "host/MovieFormat.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
#include <string_view>

#include "host/ReadNumber.h"
#include "vrx/VRXLimits.h"

namespace vrx::host {
namespace {

struct Rate {
  std::uint64_t scale;
  std::uint64_t value;

  double PerSecond() const { return static_cast<double>(scale) / static_cast<double>(value); }
};

constexpr std::array<Rate, 9> kUsualRates{
    {{24000, 1001}, {24, 1}, {25, 1}, {30000, 1001}, {30, 1}, {48, 1}, {50, 1}, {60000, 1001}, {60, 1}}};

double PerSecond(const VRXTimeInfo& duration) {
  return duration.value == 0 ? 0.0
                             : static_cast<double>(duration.scale) / static_cast<double>(duration.value);
}

std::optional<PictureSize> ReadSize(const std::string& text) {
  const std::size_t cross = text.find_first_of("xX");
  PictureSize size;
  if (cross == text.npos || !ReadNumber(std::string_view(text).substr(0, cross), size.width) ||
      !ReadNumber(std::string_view(text).substr(cross + 1), size.height))
    return {};
  return size;
}

/// A decimal rate that stands for one with 1001 in it: 23.976, 29.97, 59.94.
std::optional<VRXTimeInfo> BroadcastRate(double perSecond) {
  constexpr double kRounding = 0.006;
  for (const Rate& rate : kUsualRates) {
    if (rate.value != 1 && std::abs(rate.PerSecond() - perSecond) < kRounding)
      return VRXTimeInfo{rate.value, rate.scale};
  }
  return {};
}

}  // namespace

std::optional<PictureSize> ParsePictureSize(const std::string& text) {
  const auto size = ReadSize(text);
  const bool isUsable = size && limits::IsUsableSide(size->width) && limits::IsUsableSide(size->height);
  return isUsable ? size : std::nullopt;
}

std::string CheckPictureSize(const std::string& text) {
  if (ParsePictureSize(text)) return {};
  if (!ReadSize(text)) return text + " is no size such as 1920x1080";
  return text + " is no size of a movie: width and height are even, from " +
         std::to_string(limits::kMinSide) + " to " + std::to_string(limits::kMaxSide);
}

std::optional<VRXTimeInfo> ParseFrameRate(const std::string& text) {
  VRXTimeInfo duration;
  const std::size_t slash = text.find('/');
  double decimal = 0.0;
  std::uint32_t scale = 0, value = 1;
  if (slash != text.npos) {
    if (!ReadNumber(std::string_view(text).substr(0, slash), scale) ||
        !ReadNumber(std::string_view(text).substr(slash + 1), value))
      return {};
    duration = {value, scale};
  } else if (ReadNumber(std::string_view(text), scale)) {
    duration = {1, scale};
  } else if (ReadNumber(std::string_view(text), decimal) && std::isfinite(decimal) && decimal > 0.0) {
    constexpr double kMostPerSecond = 1e6, kDecimals = 1000.0;
    if (decimal > kMostPerSecond) return {};
    duration = BroadcastRate(decimal).value_or(
        VRXTimeInfo{1000, static_cast<std::uint64_t>(std::llround(decimal * kDecimals))});
  }
  if (!limits::IsUsableFrameLength(duration.value, duration.scale)) return {};
  return duration;
}

std::string CheckFrameRate(const std::string& text) {
  return ParseFrameRate(text) ? std::string() : text + " is no frame rate such as 25, 29.97 or 30000/1001";
}

std::optional<std::int32_t> ParseBitrate(const std::string& text) {
  std::string_view digits = text;
  double factor = 1.0, number = 0.0;
  if (digits.ends_with('k') || digits.ends_with('K')) factor = 1e3;
  if (digits.ends_with('M')) factor = 1e6;
  if (factor != 1.0) digits.remove_suffix(1);
  if (!ReadNumber(digits, number) || !(number * factor >= 1.0) ||
      number * factor > std::numeric_limits<std::int32_t>::max())
    return {};
  return static_cast<std::int32_t>(std::llround(number * factor));
}

std::string CheckBitrate(const std::string& text) {
  constexpr std::int32_t kLeast = 10'000;
  const auto bitrate = ParseBitrate(text);
  if (!bitrate) return text + " is no bitrate such as 8M, 8000k or 8000000";
  if (*bitrate >= kLeast) return {};
  return text + " bits a second are too few for a movie; did you mean " + text + "k or " + text + "M?";
}

VRXTimeInfo UsualFrameDuration(const VRXTimeInfo& source) {
  constexpr double kWaver = 0.04, kMost = 60.5;
  double perSecond = PerSecond(source);
  std::uint64_t value = source.value;
  // Slow motion is recorded with a multiple of the rate at which it is shown.
  for (; perSecond > kMost; perSecond /= 2.0) value *= 2;
  const Rate* nearest = nullptr;
  const auto distance = [&](const Rate& rate) { return std::abs(perSecond / rate.PerSecond() - 1.0); };
  for (const Rate& rate : kUsualRates) {
    if (nearest == nullptr || distance(rate) < distance(*nearest)) nearest = &rate;
  }
  if (distance(*nearest) < kWaver) return {nearest->value, nearest->scale};
  if (limits::IsUsableFrameLength(value, source.scale)) return {value, source.scale};
  return {1, 30};
}

std::string RateText(const VRXTimeInfo& frameDuration) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.3f", PerSecond(frameDuration));
  std::string number = text.data();
  while (number.ends_with('0')) number.pop_back();
  if (number.ends_with('.')) number.pop_back();
  return number;
}

}  // namespace vrx::host
