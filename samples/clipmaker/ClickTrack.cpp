#include "samples/clipmaker/ClickTrack.h"

#include <cmath>
#include <numbers>

namespace vrx::test_support {
namespace {

constexpr double kClickLevel = 0.9;
constexpr double kClickHz = 1000;
constexpr double kClickSeconds = 0.002;
constexpr double kToneLevel = 0.1;
constexpr double kToneHz = 440;
constexpr float kThreshold = 0.45F;
constexpr int kQuietPerSecond = 20;  // a click wants a twentieth of a second without another before it

// `hertz` is whole, so the wave repeats each second and only the place in the second counts.
float Wave(double level, double hertz, std::int64_t inSecond, int rate) {
  const double angle = 2 * std::numbers::pi * hertz * static_cast<double>(inSecond) / rate;
  return static_cast<float>(level * std::cos(angle));
}

std::int64_t PlaceInSecond(std::int64_t position, int rate) {
  const std::int64_t place = position % rate;
  return place < 0 ? place + rate : place;
}

}  // namespace

float ToneSample(std::int64_t position, int rate) {
  return Wave(kToneLevel, kToneHz, PlaceInSecond(position, rate), rate);
}

float ClickSample(std::int64_t position, int rate, ClickBackground background) {
  const std::int64_t place = PlaceInSecond(position, rate);
  if (static_cast<double>(place) < kClickSeconds * rate) return Wave(kClickLevel, kClickHz, place, rate);
  return background == ClickBackground::kTone ? ToneSample(position, rate) : 0.0F;
}

std::vector<std::int64_t> FindClicks(std::span<const float> samples, int rate) {
  std::vector<std::int64_t> clicks;
  const std::int64_t quiet = rate / kQuietPerSecond;
  std::int64_t lastLoud = -quiet;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    if (std::abs(samples[i]) < kThreshold) continue;
    const auto position = static_cast<std::int64_t>(i);
    if (position - lastLoud >= quiet) clicks.push_back(position);
    lastLoud = position;
  }
  return clicks;
}

}  // namespace vrx::test_support
