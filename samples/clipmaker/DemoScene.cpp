#include "samples/clipmaker/DemoScene.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vrx::test_support {

// A chain of hills: a height above the horizon that depends on the place along it.
struct DemoScene::Ridge {
  float base;     // mean height, in heights of the picture
  float relief;   // height of its hills
  float period;   // waves across the picture
  float speed;    // widths of the picture a second
  float offset;   // different for each ridge
  Colour colour;  // at the crest
  float haze;     // share of the sky's colour at the foot
};

namespace {

using Colour = DemoScene::Colour;

constexpr std::array<DemoScene::Palette, 4> kPalettes = {{
    // noon
    {{58, 124, 208},
     {190, 220, 240},
     {255, 250, 225},
     {255, 255, 255},
     {112, 144, 176},
     {78, 128, 82},
     {104, 158, 70},
     {46, 96, 46}},
    // evening
    {{62, 66, 132},
     {250, 176, 118},
     {255, 226, 160},
     {255, 206, 186},
     {120, 96, 138},
     {88, 82, 84},
     {126, 118, 62},
     {62, 58, 44}},
    // autumn morning
    {{104, 152, 196},
     {246, 226, 196},
     {255, 244, 206},
     {255, 250, 240},
     {146, 150, 172},
     {166, 124, 66},
     {172, 150, 76},
     {182, 96, 36}},
    // winter
    {{108, 150, 204},
     {222, 232, 242},
     {255, 252, 240},
     {250, 252, 255},
     {158, 176, 204},
     {196, 208, 222},
     {226, 232, 240},
     {54, 84, 74}},
}};

constexpr float kHorizon = 0.56F;   // of the height
constexpr float kDriveSpeed = 9;    // metres of the road's own scale a second
constexpr float kRoadNear = 0.30F;  // half width at the bottom, in widths of the picture
constexpr float kRoadFar = 0.006F;
constexpr float kBend = 0.16F;  // how far the road's end wanders sideways, in widths
constexpr Colour kAsphalt = {92, 92, 98};
constexpr Colour kPaint = {240, 240, 232};

Colour Mix(const Colour& a, const Colour& b, float share) {
  return {a.red + (b.red - a.red) * share, a.green + (b.green - a.green) * share,
          a.blue + (b.blue - a.blue) * share};
}

Colour Scaled(const Colour& c, float factor) { return {c.red * factor, c.green * factor, c.blue * factor}; }

float Smooth(float from, float to, float x) {
  const float t = std::clamp((x - from) / (to - from), 0.0F, 1.0F);
  return t * t * (3 - 2 * t);
}

std::uint8_t ToByte(float x) { return static_cast<std::uint8_t>(std::clamp(x + 0.5F, 0.0F, 255.0F)); }

void Put(std::uint8_t* pixel, const Colour& c) {
  pixel[0] = ToByte(c.red);
  pixel[1] = ToByte(c.green);
  pixel[2] = ToByte(c.blue);
}

void Blend(std::uint8_t* pixel, const Colour& c, float share) {
  const Colour below = {static_cast<float>(pixel[0]), static_cast<float>(pixel[1]),
                        static_cast<float>(pixel[2])};
  Put(pixel, Mix(below, c, share));
}

// A number from 0 to 1 for a grid point, the same on each machine.
float Hash(std::uint32_t seed, std::int32_t x, std::int32_t y) {
  std::uint32_t h = seed * 0x9E3779B9U + static_cast<std::uint32_t>(x) * 0x85EBCA6BU +
                    static_cast<std::uint32_t>(y) * 0xC2B2AE35U;
  h ^= h >> 15;
  h *= 0x2C1B3C6DU;
  h ^= h >> 12;
  h *= 0x297A2D39U;
  h ^= h >> 15;
  return static_cast<float>(h >> 8) / static_cast<float>(1U << 24);
}

// One row of the noise for rising x: each pair of grid columns is hashed once, not at each pixel.
class NoiseRow {
 public:
  NoiseRow(std::uint32_t seed, float y) : m_seed(seed), m_row(static_cast<std::int32_t>(std::floor(y))) {
    m_v = Smooth(0, 1, y - std::floor(y));
  }

  float At(float x) {
    const auto column = static_cast<std::int32_t>(std::floor(x));
    if (!m_filled || column != m_column) {
      m_left = Column(column);
      m_right = Column(column + 1);
      m_column = column;
      m_filled = true;
    }
    return std::lerp(m_left, m_right, Smooth(0, 1, x - static_cast<float>(column)));
  }

 private:
  float Column(std::int32_t x) const {
    return std::lerp(Hash(m_seed, x, m_row), Hash(m_seed, x, m_row + 1), m_v);
  }

  std::uint32_t m_seed;
  std::int32_t m_row;
  float m_v;
  bool m_filled = false;
  std::int32_t m_column = 0;
  float m_left = 0;
  float m_right = 0;
};

}  // namespace

DemoScene::DemoScene(std::uint32_t seed)
    : m_seed(seed),
      m_palette(kPalettes[seed % kPalettes.size()]),
      m_sunX(0.2F + 0.6F * Hash(seed, 1, 1)),
      m_sunY(0.12F + 0.22F * Hash(seed, 2, 2)) {}

float DemoScene::Noise(float x, float y) const { return NoiseRow(m_seed, y).At(x); }

void DemoScene::Draw(double seconds, RgbImage& image) {
  m_width = static_cast<float>(image.Width());
  m_height = static_cast<float>(image.Height());
  m_horizon = std::round(kHorizon * m_height);
  DrawSky(seconds, image);
  const std::array<Ridge, 3> ridges = {{
      {0.13F, 0.14F, 5.0F, 0.006F, 11, m_palette.farHills, 0.55F},
      {0.06F, 0.09F, 3.6F, 0.018F, 23, Mix(m_palette.farHills, m_palette.nearHills, 0.6F), 0.35F},
      {0.015F, 0.06F, 2.4F, 0.045F, 37, m_palette.nearHills, 0.1F},
  }};
  for (const Ridge& ridge : ridges) DrawRidge(ridge, seconds, image);
  DrawGround(seconds, image);
  DrawTrees(seconds, image);
}

void DemoScene::DrawSky(double seconds, RgbImage& image) {
  const float drift = 0.04F * static_cast<float>(seconds);
  const float aspect = m_width / m_height;
  for (int y = 0; y < static_cast<int>(m_horizon); ++y) {
    const float v = static_cast<float>(y) / m_height;
    const Colour sky = Mix(m_palette.skyTop, m_palette.skyLow, std::pow(v / kHorizon, 1.4F));
    const float cloudiness = 0.85F * Smooth(kHorizon, 0.1F, v);
    const float cloudY = 11 * v;
    NoiseRow large(m_seed, cloudY);
    NoiseRow medium(m_seed, 2.3F * cloudY);
    NoiseRow small(m_seed, 5.1F * cloudY);
    std::uint8_t* pixel = image.Row(y);
    for (int x = 0; x < image.Width(); ++x, pixel += 3) {
      const float u = static_cast<float>(x) / m_width;
      const float sunX = (u - m_sunX) * aspect;
      const float sunY = v - m_sunY;
      const float distance = std::sqrt(sunX * sunX + sunY * sunY);
      Colour colour = Mix(sky, m_palette.sun, 0.55F / (1 + 60 * distance * distance));
      colour = Mix(colour, m_palette.sun, Smooth(0.048F, 0.044F, distance));
      const float cloudX = 3.2F * u * aspect + drift;
      const float cloud =
          0.6F * large.At(cloudX) + 0.28F * medium.At(2.3F * cloudX) + 0.12F * small.At(5.1F * cloudX);
      Put(pixel, Mix(colour, m_palette.cloud, cloudiness * Smooth(0.5F, 0.75F, cloud)));
    }
  }
}

void DemoScene::DrawRidge(const Ridge& ridge, double seconds, RgbImage& image) {
  const int bottom = static_cast<int>(m_horizon);
  const float shift = ridge.speed * static_cast<float>(seconds);
  for (int x = 0; x < image.Width(); ++x) {
    const float place = ridge.period * (static_cast<float>(x) / m_width + shift);
    const float wave = 0.65F * Noise(place, ridge.offset) + 0.25F * Noise(2.7F * place, ridge.offset + 1) +
                       0.1F * Noise(8.1F * place, ridge.offset + 2);
    const float crest = m_horizon - m_height * (ridge.base + ridge.relief * (wave - 0.35F));
    for (int y = std::max(0, static_cast<int>(crest)); y < bottom; ++y) {
      const float below = static_cast<float>(y) + 1 - crest;
      const float foot = below / std::max(m_horizon - crest, 1.0F);
      const Colour colour = Mix(ridge.colour, m_palette.skyLow, ridge.haze * std::min(foot, 1.0F));
      Blend(image.Row(y) + 3 * x, colour, std::clamp(below, 0.0F, 1.0F));
    }
  }
}

float DemoScene::RoadCentre(float depth, double seconds) const {
  const float away = 1 - depth;
  const auto bend = static_cast<float>(std::sin(0.21 * seconds) + 0.5 * std::sin(0.37 * seconds + m_seed));
  return m_width * (0.5F + kBend * bend * away * away);
}

void DemoScene::DrawGround(double seconds, RgbImage& image) {
  const float driven = kDriveSpeed * static_cast<float>(seconds);
  for (int y = static_cast<int>(m_horizon); y < image.Height(); ++y) {
    const float depth = (static_cast<float>(y) - m_horizon + 0.5F) / (m_height - m_horizon);
    const float along = 4 / depth + driven;  // metres from the start of the drive
    const float haze = 0.5F * std::pow(1 - depth, 6.0F);
    const float detail = Smooth(0.02F, 0.12F, depth);  // what is too small to be drawn far away
    const float stripe = 0.05F * detail * (std::fmod(along, 8.0F) < 4 ? 1.0F : -1.0F);
    const bool dash = std::fmod(along, 6.0F) < 3;
    const float half = m_width * (kRoadFar + (kRoadNear - kRoadFar) * depth);
    const float centre = RoadCentre(depth, seconds);
    const Colour grass = Mix(Scaled(m_palette.grass, 1 + stripe - 0.12F * depth), m_palette.skyLow, haze);
    const Colour road = Mix(kAsphalt, m_palette.skyLow, haze);
    std::uint8_t* pixel = image.Row(y);
    for (int x = 0; x < image.Width(); ++x, pixel += 3) {
      const float side = std::abs(static_cast<float>(x) + 0.5F - centre);
      const float tuft = 1 + 0.06F * detail * (Hash(m_seed, x, y) - 0.5F);
      Put(pixel, Scaled(grass, tuft));
      const float onRoad = std::clamp(half - side + 0.5F, 0.0F, 1.0F);
      if (onRoad <= 0) continue;
      Blend(pixel, road, onRoad);
      const float edge = std::clamp(0.025F * half - std::abs(side - 0.93F * half) + 0.5F, 0.0F, 1.0F);
      const float middle = std::clamp(0.022F * half - side + 0.5F, 0.0F, 1.0F);
      const float paint = std::max(edge, dash ? middle : middle * (1 - detail) * 0.5F);
      Blend(pixel, kPaint, 0.9F * paint * (1 - haze));
    }
  }
}

void DemoScene::DrawTrees(double seconds, RgbImage& image) {
  constexpr float kSpacing = 7;  // metres between two trees
  constexpr int kVisible = 26;
  constexpr float kNearest = 4.2F;
  const float driven = kDriveSpeed * static_cast<float>(seconds);
  const auto first = static_cast<std::int32_t>(std::ceil((driven + kNearest) / kSpacing));
  for (int i = kVisible; i >= 0; --i) {
    const std::int32_t number = first + i;
    const float distance = static_cast<float>(number) * kSpacing - driven;
    const float depth = 4 / distance;
    for (const std::int32_t side : {-1, 1}) {
      const float chance = Hash(m_seed, number, side);
      if (chance < 0.3F) continue;
      const float half = m_width * (kRoadFar + (kRoadNear - kRoadFar) * depth);
      const float x = RoadCentre(depth, seconds) + static_cast<float>(side) * half * (1.35F + 1.4F * chance);
      const float y = m_horizon + depth * (m_height - m_horizon);
      const float size = m_height * depth * (0.5F + 0.45F * Hash(m_seed + 1, number, side));
      DrawTree(x, y, size, 0.6F * std::pow(1 - depth, 8.0F), image);
    }
  }
}

void DemoScene::DrawTree(float x, float y, float size, float haze, RgbImage& image) {
  const Colour trunk = Mix({84, 64, 48}, m_palette.skyLow, haze);
  const Colour leaves = Mix(m_palette.tree, m_palette.skyLow, haze);
  const float crownY = y - 0.66F * size;
  const float radius = 0.36F * size;
  const int left = std::max(0, static_cast<int>(x - radius) - 1);
  const int right = std::min(image.Width(), static_cast<int>(x + radius) + 2);
  const int top = std::max(0, static_cast<int>(crownY - radius) - 1);
  const int bottom = std::min(image.Height(), static_cast<int>(y) + 1);
  for (int py = top; py < bottom; ++py) {
    for (int px = left; px < right; ++px) {
      const float dx = static_cast<float>(px) + 0.5F - x;
      const float dy = static_cast<float>(py) + 0.5F - crownY;
      std::uint8_t* pixel = image.Row(py) + 3 * px;
      if (dy > 0) Blend(pixel, trunk, std::clamp(0.05F * size - std::abs(dx) + 0.5F, 0.0F, 1.0F));
      // An uneven outline, and light from above.
      const float uneven = 1 + 0.1F * std::sin(7 * std::atan2(dy, dx) + 3);
      const float inside = radius * uneven * 0.92F - std::sqrt(dx * dx + dy * dy);
      const float light = 1.12F - 0.3F * (dy / radius + 1) * 0.5F;
      Blend(pixel, Scaled(leaves, light), std::clamp(inside + 0.5F, 0.0F, 1.0F));
    }
  }
}

}  // namespace vrx::test_support
