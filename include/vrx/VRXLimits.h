// The limits of a movie's settings. The engine refuses a render outside them; hosts can check before they
// start one.
#pragma once

#include <array>
#include <cstdint>

namespace vrx::limits {

inline constexpr std::int32_t kMinSide = 16;  // pixels of width and height, which are even
inline constexpr std::int32_t kMaxSide = 8192;
inline constexpr std::uint32_t kMinSampleRate = 8000;  // Hz
inline constexpr std::uint32_t kMaxSampleRate = 192000;
inline constexpr std::uint64_t kMaxFramesPerSecond = 1000;
inline constexpr std::uint64_t kMaxSecondsPerFrame = 10;
inline constexpr std::int64_t kMaxMovieFrames = 0x7FFFFFFF;

/// Presets of encoders as x264 names them, the fastest first.
inline constexpr std::array<const char*, 9> kPresets{"ultrafast", "superfast", "veryfast", "faster",  "fast",
                                                     "medium",    "slow",      "slower",   "veryslow"};
inline constexpr double kMaxQuality = 51.0;     // constant rate factor; higher is worse
inline constexpr double kMaxAv1Quality = 63.0;  // the same of AV1

constexpr bool IsUsableSide(std::int32_t pixels) {
  return pixels >= kMinSide && pixels <= kMaxSide && pixels % 2 == 0;
}

/// Mono, stereo and 5.1.
constexpr bool IsUsableChannelCount(std::uint32_t channels) {
  return channels == 1 || channels == 2 || channels == 6;
}

constexpr bool IsUsableSampleRate(std::uint32_t hertz) {
  return hertz >= kMinSampleRate && hertz <= kMaxSampleRate;
}

/// Whether a frame of `value` / `scale` seconds lasts 1/1000 to 10 seconds; false where either is 0.
constexpr bool IsUsableFrameLength(std::uint64_t value, std::uint64_t scale) {
  if (value == 0 || scale == 0) return false;
  // value >= ceil(scale / rate) says that value * rate >= scale, without a product that could overflow.
  const std::uint64_t shortest = scale / kMaxFramesPerSecond + (scale % kMaxFramesPerSecond != 0 ? 1 : 0);
  const std::uint64_t least = value / kMaxSecondsPerFrame + (value % kMaxSecondsPerFrame != 0 ? 1 : 0);
  return value >= shortest && scale >= least;
}

}  // namespace vrx::limits
