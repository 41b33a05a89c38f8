#include <gtest/gtest.h>

#include <cmath>

#include "tests/imaging/ImageFiles.h"

namespace {

using namespace imagefiles;
using vrx::imaging::RowOrder;

/// Every pixel in both row orders is what `expected` says, within `tolerance` a channel.
void ExpectPixels(const Bytes& file, int width, int height, const SampleRule& expected, int tolerance = 0) {
  for (const RowOrder rows : {RowOrder::TopDown, RowOrder::BottomUp}) {
    const Loaded loaded = Load(file, {.rows = rows});
    ASSERT_EQ(loaded.result, XpOk) << loaded.problem;
    ASSERT_EQ(loaded.image.fullWidth, width);
    ASSERT_EQ(loaded.image.fullHeight, height);
    const XpPlaneBase& plane = *loaded.image.pixmap->GetPlane(0);
    ASSERT_EQ(plane.width, width);
    ASSERT_EQ(plane.height, height);
    for (int y = 0; y < height; ++y) {
      const unsigned char* bgr = plane.Row(rows == RowOrder::TopDown ? y : height - 1 - y);
      for (int i = 0; i < 3 * width; ++i) {
        ASSERT_NEAR(bgr[i], expected(i / 3, y, 2 - i % 3), tolerance) << i / 3 << ", " << y << ", " << i % 3;
      }
    }
  }
}

constexpr std::pair<int, int> kSizes[] = {{1, 1}, {1, 7}, {301, 5}, {16, 16}, {33, 18}};

int Product(int a, int b) { return (a * b + 127) / 255; }

/// What the channels of a pixel look like, composed on black.
using Look = int (*)(const std::uint8_t* pixel, int c);
int Grey(const std::uint8_t* pixel, int) { return pixel[0]; }
int Colour(const std::uint8_t* pixel, int c) { return pixel[c]; }
int GreyAlpha(const std::uint8_t* pixel, int) { return Product(pixel[0], pixel[1]); }
int ColourAlpha(const std::uint8_t* pixel, int c) { return Product(pixel[c], pixel[3]); }
int Ink(const std::uint8_t* pixel, int c) { return Product(255 - pixel[c], 255 - pixel[3]); }

void ExpectPixels(const Bytes& file, const Samples& samples, Look look, int tolerance) {
  ExpectPixels(
      file, samples.width, samples.height, [&](int x, int y, int c) { return look(samples.At(x, y), c); },
      tolerance);
}

TEST(StillImage, PngOfEveryColourTypeShowsItsPixelsOnBlack) {
  struct Case {
    int colourType, channels;
    Look look;
    int tolerance;
  };
  for (const auto& [width, height] : kSizes) {
    for (const Case& c :
         {Case{0, 1, Grey, 0}, Case{2, 3, Colour, 0}, Case{4, 2, GreyAlpha, 1}, Case{6, 4, ColourAlpha, 1}}) {
      const Samples samples = Noise(width, height, c.channels);
      for (const bool isInterlaced : {false, true}) {
        for (const int depth : {8, 16}) {
          SCOPED_TRACE(testing::Message() << width << "x" << height << " type " << c.colourType << " depth "
                                          << depth << " interlaced " << isInterlaced);
          ExpectPixels(
              Png(samples, {.colourType = c.colourType, .depth = depth, .isInterlaced = isInterlaced}),
              samples, c.look, c.tolerance);
        }
      }
    }
  }
}

TEST(StillImage, PngOfFewBitsPaletteAndTransparentKey) {
  Samples bits = Noise(13, 9, 1);
  for (auto& sample : bits.data) sample &= 3;
  const auto at = [&](int x, int y) { return bits.At(x, y)[0]; };
  ExpectPixels(Png(bits, {.colourType = 0, .depth = 2}), 13, 9,
               [&](int x, int y, int) { return at(x, y) * 85; });
  ExpectPixels(Png(bits, {.colourType = 0, .depth = 2, .key = 3}), 13, 9,
               [&](int x, int y, int) { return at(x, y) % 3 * 85; });
  const std::vector<std::uint8_t> palette = {10, 20, 30, 200, 100, 50, 0, 255, 7, 90, 91, 92};
  const std::vector<std::uint8_t> alpha = {255, 128, 0};
  ExpectPixels(
      Png(bits,
          {.colourType = 3, .depth = 2, .isInterlaced = true, .palette = palette, .paletteAlpha = alpha}),
      13, 9,
      [&](int x, int y, int c) {
        const std::size_t i = at(x, y);
        return Product(palette[i * 3 + static_cast<std::size_t>(c)], i < 3 ? alpha[i] : 255);
      },
      1);
}

TEST(StillImage, JpegOfEveryColourFormComesNearItsPixels) {
  for (const auto& [width, height] : kSizes) {
    for (const bool progressive : {false, true}) {
      SCOPED_TRACE(testing::Message() << width << "x" << height << " progressive " << progressive);
      constexpr int kTolerance = 6;
      const Samples grey = Noise(width, height, 1), ink = Smooth(width, height, 4),
                    rgb = Smooth(width, height, 3);
      ExpectPixels(Jpeg(grey, {progressive}), grey, Grey, kTolerance);
      ExpectPixels(Jpeg(rgb, {progressive}), rgb, Colour, kTolerance);
      ExpectPixels(Jpeg(ink, {progressive, true}), ink, ColourAlpha, kTolerance);  // stored inverted
      ExpectPixels(Jpeg(ink, {progressive}), ink, Ink, kTolerance);
    }
  }
}

TEST(StillImage, GifStandsOnItsScreenWithBlackAroundAndThroughIt) {
  for (const auto& [width, height] : kSizes) {
    for (const bool isInterlaced : {false, true}) {
      SCOPED_TRACE(testing::Message() << width << "x" << height << " interlaced " << isInterlaced);
      const Samples indices = Noise(width, height, 1);
      const int transparent = indices.At(0, 0)[0];
      const auto plain = [&](int x, int y, int c) { return GifColour(indices.At(x, y)[0], c); };
      const GifForm form{width + 5, height + 4, 3, 2, transparent, isInterlaced};
      ExpectPixels(
          Gif(indices, form), width + 5, height + 4, [&, w = width, h = height](int x, int y, int c) {
            const bool isOutside = x < 3 || y < 2 || x >= 3 + w || y >= 2 + h;
            return isOutside || indices.At(x - 3, y - 2)[0] == transparent ? 0 : plain(x - 3, y - 2, c);
          });
      // A picture that sticks out is cut, one without a screen is its own.
      ExpectPixels(Gif(indices, {1, 1, 0, 0, -1, isInterlaced}), 1, 1, plain);
      ExpectPixels(Gif(indices, {0, 0, 0, 0, -1, isInterlaced}), width, height, plain);
    }
  }
}

TEST(StillImage, TiffInStripsAndTilesOfEveryColourForm) {
  struct Case {
    int photometric, channels, extraSample;
    Look look;
    int tolerance;
  };
  for (const auto& [width, height] : kSizes) {
    for (const Case& c : {Case{1, 1, 0, Grey, 0}, Case{2, 3, 0, Colour, 0}, Case{2, 4, 2, ColourAlpha, 1},
                          Case{5, 4, 0, Ink, 1}}) {
      const Samples samples = Noise(width, height, c.channels);
      for (const int tile : {0, 16}) {
        for (const int compression : {1, 8}) {
          SCOPED_TRACE(testing::Message() << width << "x" << height << " form " << c.photometric << " tile "
                                          << tile << " packed " << compression);
          ExpectPixels(Tiff(samples, {c.photometric, compression, tile, c.extraSample}), samples, c.look,
                       c.tolerance);
        }
      }
    }
  }
}

TEST(StillImage, AJpegComesAtTheLeastScaleThatCoversWhatIsEnough) {
  const Bytes file = Jpeg(Smooth(301, 165, 3));
  struct Case {
    int enoughWidth, enoughHeight, width, height;
  };
  for (const Case& c : {Case{0, 0, 301, 165}, Case{301, 165, 301, 165}, Case{1, 1, 38, 21},
                        Case{39, 1, 76, 42}, Case{1, 42, 76, 42}, Case{100, 80, 151, 83},
                        Case{152, 80, 301, 165}, Case{5000, 1, 301, 165}, Case{10, 0, 301, 165}}) {
    SCOPED_TRACE(testing::Message() << c.enoughWidth << "x" << c.enoughHeight);
    const Loaded loaded = Load(file, {.enoughWidth = c.enoughWidth, .enoughHeight = c.enoughHeight});
    ASSERT_EQ(loaded.result, XpOk) << loaded.problem;
    EXPECT_EQ(loaded.image.pixmap->width, c.width);
    EXPECT_EQ(loaded.image.pixmap->height, c.height);
    EXPECT_EQ(loaded.image.fullWidth, 301);
    EXPECT_EQ(loaded.image.fullHeight, 165);
  }
}

// On noise the whole picture is clipped at black and white before it is averaged, which shows in the largest.
TEST(StillImage, AScaledJpegStaysNearTheAverageOfTheWholeOne) {
  for (const auto& [samples, most] : {std::pair{Smooth(256, 192, 3), 3}, {Noise(256, 192, 3), 6}}) {
    const Bytes file = Jpeg(samples);
    const Loaded whole = Load(file);
    ASSERT_EQ(whole.result, XpOk);
    for (const int side : {8, 4, 2}) {  // of the square that becomes one pixel
      const int width = 256 / side, height = 192 / side;
      const Loaded small = Load(file, {.enoughWidth = width, .enoughHeight = height});
      ASSERT_EQ(small.result, XpOk);
      ASSERT_EQ(small.image.pixmap->width, width);
      double largest = 0, all = 0;
      for (int i = 0; i < width * height * 3; ++i) {
        const int x = i / 3 % width, y = i / 3 / width, c = i % 3;
        int sum = 0;
        for (int part = 0; part < side * side; ++part) {
          const unsigned char* row = whole.image.pixmap->GetPlane(0)->Row(y * side + part / side);
          sum += row[(x * side + part % side) * 3 + c];
        }
        const int value = small.image.pixmap->GetPlane(0)->Row(y)[x * 3 + c];
        const double error = std::abs(value - static_cast<double>(sum) / (side * side));
        largest = std::max(largest, error);
        all += error;
      }
      EXPECT_LE(largest, most) << "a pixel for " << side << "x" << side;
      EXPECT_LE(all / (width * height * 3), 1) << "a pixel for " << side << "x" << side;
    }
  }
}

}  // namespace
