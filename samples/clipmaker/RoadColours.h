// The colours of the road scene, and how distance and tunnels change them.
#pragma once

#include <cmath>
#include <cstdint>

#include "samples/clipmaker/FlatCanvas.h"

namespace vrx::test_support::road {

constexpr Rgb kSkyTop = {66, 136, 214};
constexpr Rgb kSkyLow = {206, 229, 244};
constexpr Rgb kCloud = {255, 255, 255};
constexpr Rgb kGrass = {122, 176, 84};
constexpr Rgb kAsphalt = {108, 111, 118};
constexpr Rgb kPaint = {246, 246, 240};
constexpr Rgb kWater = {70, 142, 190};
constexpr Rgb kConcrete = {172, 172, 166};
constexpr Rgb kMetal = {70, 76, 84};
constexpr Rgb kWood = {150, 104, 62};
constexpr Rgb kTrunk = {104, 78, 56};
constexpr Rgb kRed = {214, 50, 40};
constexpr Rgb kBlack = {18, 20, 24};

/// As it looks that many meters away.
inline Rgb Hazed(const Rgb& colour, double meters) {
  return MixRgb(colour, kSkyLow, 0.75 * (1 - std::exp(-meters / 650)));
}

inline Rgb Lit(const Rgb& colour, double light) { return MixRgb(kBlack, colour, light); }

/// Of what lies in a tunnel, seen from a car with its lights on.
inline double TunnelLight(double meters) { return 0.2 + 0.3 * std::exp(-meters / 14); }

/// A number from 0 to 1 for a thing beside the way, the same on each machine.
inline double Chance(std::int64_t place, std::uint32_t what) {
  auto h = static_cast<std::uint32_t>(place) * 0x85EBCA6BU + what * 0x9E3779B9U;
  h ^= h >> 15;
  h *= 0x2C1B3C6DU;
  h ^= h >> 12;
  h *= 0x297A2D39U;
  h ^= h >> 15;
  return (h >> 8) / static_cast<double>(1U << 24);
}

}  // namespace vrx::test_support::road
