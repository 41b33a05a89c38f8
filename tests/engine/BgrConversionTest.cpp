// Overlays keep their colours, and the picture beside them keeps its samples.
#include "engine/BgrConversion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <string>
#include <vector>

namespace vrx::engine {
namespace {

struct Planes {
  Planes(int w, int h, std::mt19937& random) : width(w), height(h) {
    const auto fill = [&](std::vector<std::uint8_t>& plane, int columns, int rows) {
      plane.resize(static_cast<std::size_t>(columns * rows));
      for (auto& sample : plane) sample = static_cast<std::uint8_t>(16 + random() % 220);
    };
    fill(y, w, h);
    fill(u, (w + 1) / 2, (h + 1) / 2);
    fill(v, (w + 1) / 2, (h + 1) / 2);
  }
  PlanarPicture View() { return {y.data(), u.data(), v.data(), width, (width + 1) / 2, width, height}; }
  bool operator==(const Planes&) const = default;

  int width, height;
  std::vector<std::uint8_t> y, u, v;
};

struct Colour {
  double r = 0, g = 0, b = 0;
};

Colour ColourOf(std::uint32_t pixel) {
  return {double(pixel >> 16 & 0xFF), double(pixel >> 8 & 0xFF), double(pixel & 0xFF)};
}

/// Limited-range samples by the defining equations, unrounded.
std::array<double, 3> Reference(const Colour& c, OutputMatrix matrix) {
  const double kr = matrix == OutputMatrix::Bt709 ? 0.2126 : 0.299;
  const double kb = matrix == OutputMatrix::Bt709 ? 0.0722 : 0.114;
  const double y = kr * c.r + (1 - kr - kb) * c.g + kb * c.b;
  return {16 + y * 219 / 255, 128 + (c.b - y) / (2 * (1 - kb)) * 224 / 255,
          128 + (c.r - y) / (2 * (1 - kr)) * 224 / 255};
}

class Conversion : public testing::TestWithParam<OutputMatrix> {};

TEST_P(Conversion, MatchesTheDefiningEquationsAtEverySize) {
  std::mt19937 random(7);
  for (const auto& [w, h] :
       {std::pair{1, 1}, {1, 7}, {2, 2}, {7, 1}, {17, 5}, {64, 16}, {301, 5}, {33, 33}}) {
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(w * h));
    for (auto& pixel : pixels) pixel = static_cast<std::uint32_t>(random());
    Planes planes(w, h, random);
    BgrToPlanar({pixels.data(), w}, GetParam(), planes.View());
    const auto at = [&](int x, int y) {
      return ColourOf(pixels[static_cast<std::size_t>(std::min(y, h - 1) * w + std::min(x, w - 1))]);
    };
    for (int y = 0; y < h; ++y) {
      for (int x = 0; x < w; ++x) {
        const std::string place = std::to_string(w) + "x" + std::to_string(h) + " at " + std::to_string(x) +
                                  "," + std::to_string(y);
        ASSERT_NEAR(planes.y[static_cast<std::size_t>(y * w + x)], Reference(at(x, y), GetParam())[0], 0.51)
            << place;
        if (x % 2 != 0 || y % 2 != 0) continue;
        Colour mean;
        for (const auto& [dx, dy] : {std::pair{0, 0}, {1, 0}, {0, 1}, {1, 1}}) {
          const Colour c = at(x + dx, y + dy);
          mean = {mean.r + c.r / 4, mean.g + c.g / 4, mean.b + c.b / 4};
        }
        const auto chroma = static_cast<std::size_t>(y / 2 * ((w + 1) / 2) + x / 2);
        ASSERT_NEAR(planes.u[chroma], Reference(mean, GetParam())[1], 0.51) << place;
        ASSERT_NEAR(planes.v[chroma], Reference(mean, GetParam())[2], 0.51) << place;
      }
    }
  }
}

TEST_P(Conversion, GreysAndPureColoursComeBackAsTheyWere) {
  std::vector<std::uint32_t> colours = {0xFF0000u, 0x00FF00u, 0x0000FFu, 0xFFFF00u};
  for (std::uint32_t grey = 0; grey < 256; ++grey) colours.push_back(0x010101u * grey);
  for (const std::uint32_t colour : colours) {
    std::vector<std::uint32_t> pixels(16 * 16, colour);
    std::mt19937 random(1);
    Planes planes(16, 16, random);
    BgrToPlanar({pixels.data(), 16}, GetParam(), planes.View());
    PlanarToBgr(planes.View(), GetParam(), {pixels.data() + 15 * 16, -16});
    for (const int shift : {0, 8, 16}) {
      EXPECT_NEAR(static_cast<int>(pixels[37] >> shift & 0xFF), static_cast<int>(colour >> shift & 0xFF),
                  colour % 0x010101u == 0 ? 2 : 3)
          << std::hex << colour;
    }
  }
}

TEST_P(Conversion, OnlyChangedPixelsReachThePicture) {
  std::mt19937 random(11);
  const auto below = [&](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
  for (int round = 0; round < 200; ++round) {
    const int w = 1 + below(80), h = 1 + below(20);
    Planes planes(w, h, random);
    Planes expected = planes;
    std::vector<std::uint32_t> before(static_cast<std::size_t>(w * h));
    PlanarToBgr(planes.View(), GetParam(), {before.data(), w});
    std::vector<std::uint32_t> after = before;
    const int left = below(w), top = below(h);
    const int right = std::min(w, left + 1 + below(9)), bottom = std::min(h, top + 3);
    for (int y = top; y < bottom; ++y) {
      for (int x = left; x < right; ++x) after[static_cast<std::size_t>(y * w + x)] ^= 0x00402010;
    }
    for (auto& pixel : after) pixel &= 0x00FFFFFF;  // the fourth byte alone is no change
    ChangedBgrToPlanar({after.data(), w}, {before.data(), w}, GetParam(), planes.View());
    Planes all = expected;
    BgrToPlanar({after.data(), w}, GetParam(), all.View());
    for (int y = top; y < bottom; ++y) {
      for (int x = left; x < right; ++x) {
        const auto luma = static_cast<std::size_t>(y * w + x);
        const auto chroma = static_cast<std::size_t>(y / 2 * ((w + 1) / 2) + x / 2);
        expected.y[luma] = all.y[luma];
        expected.u[chroma] = all.u[chroma];
        expected.v[chroma] = all.v[chroma];
      }
    }
    ASSERT_TRUE(planes == expected) << left << "," << top << " to " << right << "," << bottom << " of " << w
                                    << "x" << h;
  }
}

TEST_P(Conversion, VectorsAndSinglePixelsGiveTheSameBytes) {
  std::mt19937 random(13);
  for (const auto& [w, h] : {std::pair{32, 2}, {33, 3}, {62, 1}, {64, 4}, {301, 5}}) {
    Planes planes(w, h, random);
    for (auto* plane : {&planes.y, &planes.u, &planes.v}) {
      for (auto& sample : *plane)
        sample = static_cast<std::uint8_t>(random());  // also outside the limited range
    }
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(w * h)), narrowPixels = pixels;
    PlanarToBgr(planes.View(), GetParam(), {pixels.data(), w});
    const auto forPairs = [&, width = w, height = h](Planes& of, auto convert) {
      for (int x = 0; x < width; x += 2) convert(x, of.View().Part(x, 0, std::min(2, width - x), height));
    };
    forPairs(planes, [&](int x, const PlanarPicture& pair) {
      PlanarToBgr(pair, GetParam(), {narrowPixels.data() + x, pair.lumaStride});
    });
    ASSERT_EQ(pixels, narrowPixels) << w << "x" << h;

    std::vector<std::uint32_t> drawn = pixels;
    for (auto& pixel : drawn) {
      if (random() % 3 == 0) pixel = static_cast<std::uint32_t>(random());
    }
    Planes whole = planes, narrow = planes;
    ChangedBgrToPlanar({drawn.data(), w}, {pixels.data(), w}, GetParam(), whole.View());
    forPairs(narrow, [&](int x, const PlanarPicture& pair) {
      ChangedBgrToPlanar({drawn.data() + x, pair.lumaStride}, {pixels.data() + x, pair.lumaStride},
                         GetParam(), pair);
    });
    ASSERT_EQ(whole, narrow) << w << "x" << h;
    BgrToPlanar({drawn.data(), w}, GetParam(), whole.View());
    forPairs(narrow, [&](int x, const PlanarPicture& pair) {
      BgrToPlanar({drawn.data() + x, pair.lumaStride}, GetParam(), pair);
    });
    ASSERT_EQ(whole, narrow) << w << "x" << h;
  }
}

INSTANTIATE_TEST_SUITE_P(Both, Conversion, testing::Values(OutputMatrix::Bt601, OutputMatrix::Bt709),
                         [](const auto& matrix) {
                           return std::string(matrix.param == OutputMatrix::Bt709 ? "Bt709" : "Bt601");
                         });

}  // namespace
}  // namespace vrx::engine
