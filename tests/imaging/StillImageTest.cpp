#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <functional>

#include "imaging/loader/ImageFormats.h"
#include "tests/imaging/ImageFiles.h"
#include "tests/imaging/LoadedImage.h"
#include "tests/support/TempFolder.h"

namespace {

using namespace imagefiles;
using vrx::imaging::RowOrder;
using vrx::imaging::StillImage;
using vrx::imaging::StillImageRequest;

struct Rgb {
  int red, green, blue;
};

/// Every pixel in both row orders is what the samples say, within `tolerance` a channel.
void ExpectPixels(const Bytes& file, int width, int height, const std::function<Rgb(int x, int y)>& expected,
                  int tolerance = 0) {
  for (const RowOrder rows : {RowOrder::TopDown, RowOrder::BottomUp}) {
    const Loaded loaded = Load(file, {.rows = rows});
    ASSERT_EQ(loaded.result, XpOk) << loaded.problem;
    ASSERT_EQ(loaded.image.fullWidth, width);
    ASSERT_EQ(loaded.image.fullHeight, height);
    const XpPlaneBase& plane = *loaded.image.pixmap->GetPlane(0);
    ASSERT_EQ(plane.width, width);
    ASSERT_EQ(plane.height, height);
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        const unsigned char* bgr = plane.Row(rows == RowOrder::TopDown ? y : height - 1 - y) + x * 3;
        const Rgb want = expected(x, y);
        ASSERT_NEAR(bgr[0], want.blue, tolerance) << "blue at " << x << ", " << y;
        ASSERT_NEAR(bgr[1], want.green, tolerance) << "green at " << x << ", " << y;
        ASSERT_NEAR(bgr[2], want.red, tolerance) << "red at " << x << ", " << y;
      }
    }
  }
}

int Product(int a, int b) { return (a * b + 127) / 255; }

constexpr std::pair<int, int> kSizes[] = {{1, 1}, {1, 7}, {301, 5}, {16, 16}, {33, 18}};

Rgb OfRgb(const Samples& s, int x, int y) { return {s.At(x, y)[0], s.At(x, y)[1], s.At(x, y)[2]}; }
Rgb OfGrey(const Samples& s, int x, int y) { return {s.At(x, y)[0], s.At(x, y)[0], s.At(x, y)[0]}; }
Rgb OfPalette(const Samples& s, int x, int y) {
  const int i = s.At(x, y)[0];
  return {GifColour(i, 0), GifColour(i, 1), GifColour(i, 2)};
}
Rgb Shaded(Rgb c, int alpha) {
  return {Product(c.red, alpha), Product(c.green, alpha), Product(c.blue, alpha)};
}

TEST(StillImage, PngOfEveryColourTypeShowsItsPixelsOnBlack) {
  for (const auto& [width, height] : kSizes) {
    for (const bool isInterlaced : {false, true}) {
      for (const int depth : {8, 16}) {
        SCOPED_TRACE(testing::Message() << width << "x" << height << " depth " << depth);
        const Samples grey = Noise(width, height, 1), rgb = Noise(width, height, 3);
        const Samples greyAlpha = Noise(width, height, 2), rgba = Noise(width, height, 4);
        ExpectPixels(Png(grey, {.colourType = 0, .depth = depth, .isInterlaced = isInterlaced}), width,
                     height, [&](int x, int y) { return OfGrey(grey, x, y); });
        ExpectPixels(Png(rgb, {.depth = depth, .isInterlaced = isInterlaced}), width, height,
                     [&](int x, int y) { return OfRgb(rgb, x, y); });
        ExpectPixels(
            Png(greyAlpha, {.colourType = 4, .depth = depth, .isInterlaced = isInterlaced}), width, height,
            [&](int x, int y) { return Shaded(OfGrey(greyAlpha, x, y), greyAlpha.At(x, y)[1]); }, 1);
        ExpectPixels(
            Png(rgba, {.colourType = 6, .depth = depth, .isInterlaced = isInterlaced}), width, height,
            [&](int x, int y) { return Shaded(OfRgb(rgba, x, y), rgba.At(x, y)[3]); }, 1);
      }
    }
  }
}

TEST(StillImage, PngOfFewBitsPaletteAndTransparentKey) {
  Samples bits = Noise(13, 9, 1);
  for (auto& sample : bits.data) sample &= 3;
  ExpectPixels(Png(bits, {.colourType = 0, .depth = 2}), 13, 9, [&](int x, int y) {
    const int grey = bits.At(x, y)[0] * 85;
    return Rgb{grey, grey, grey};
  });
  ExpectPixels(Png(bits, {.colourType = 0, .depth = 2, .key = 3}), 13, 9, [&](int x, int y) {
    const int grey = bits.At(x, y)[0] % 3 * 85;
    return Rgb{grey, grey, grey};
  });
  const std::vector<std::uint8_t> palette = {10, 20, 30, 200, 100, 50, 0, 255, 7, 90, 91, 92};
  const std::vector<std::uint8_t> alpha = {255, 128, 0};
  ExpectPixels(
      Png(bits,
          {.colourType = 3, .depth = 2, .isInterlaced = true, .palette = palette, .paletteAlpha = alpha}),
      13, 9,
      [&](int x, int y) {
        const std::size_t i = bits.At(x, y)[0];
        return Shaded({palette[i * 3], palette[i * 3 + 1], palette[i * 3 + 2]}, i < 3 ? alpha[i] : 255);
      },
      1);
}

TEST(StillImage, JpegOfEveryColourFormComesNearItsPixels) {
  constexpr int kTolerance = 6;
  for (const auto& [width, height] : kSizes) {
    for (const bool isProgressive : {false, true}) {
      SCOPED_TRACE(testing::Message() << width << "x" << height << " progressive " << isProgressive);
      const Samples grey = Noise(width, height, 1), rgb = Smooth(width, height, 3),
                    ink = Smooth(width, height, 4);
      ExpectPixels(
          Jpeg(grey, {.isProgressive = isProgressive}), width, height,
          [&](int x, int y) { return OfGrey(grey, x, y); }, kTolerance);
      for (const bool isSubsampled : {false, true}) {
        ExpectPixels(
            Jpeg(rgb, {.isProgressive = isProgressive, .isSubsampled = isSubsampled}), width, height,
            [&](int x, int y) { return OfRgb(rgb, x, y); }, isSubsampled ? 60 : kTolerance);
      }
      ExpectPixels(
          Jpeg(ink, {.isProgressive = isProgressive, .isAdobeInk = true}), width, height,
          [&](int x, int y) { return Shaded(OfRgb(ink, x, y), ink.At(x, y)[3]); }, kTolerance);
      ExpectPixels(
          Jpeg(ink, {.isProgressive = isProgressive}), width, height,
          [&](int x, int y) {
            const Rgb c = OfRgb(ink, x, y);
            return Shaded({255 - c.red, 255 - c.green, 255 - c.blue}, 255 - ink.At(x, y)[3]);
          },
          kTolerance);
    }
  }
}

TEST(StillImage, GifStandsOnItsScreenWithBlackAroundAndThroughIt) {
  for (const auto& [width, height] : kSizes) {
    for (const bool isInterlaced : {false, true}) {
      SCOPED_TRACE(testing::Message() << width << "x" << height << " interlaced " << isInterlaced);
      const Samples indices = Noise(width, height, 1);
      const int transparent = indices.At(0, 0)[0];
      const GifForm form{width + 5, height + 4, 3, 2, transparent, isInterlaced};
      ExpectPixels(Gif(indices, form), width + 5, height + 4, [&](int x, int y) {
        const bool isOutside = x < 3 || y < 2 || x >= 3 + width || y >= 2 + height;
        if (isOutside || indices.At(x - 3, y - 2)[0] == transparent) return Rgb{0, 0, 0};
        return OfPalette(indices, x - 3, y - 2);
      });
      // A picture that sticks out is cut, one without a screen is its own.
      ExpectPixels(Gif(indices, {1, 1, 0, 0, -1, isInterlaced}), 1, 1,
                   [&](int x, int y) { return OfPalette(indices, x, y); });
      ExpectPixels(Gif(indices, {0, 0, 0, 0, -1, isInterlaced}), width, height,
                   [&](int x, int y) { return OfPalette(indices, x, y); });
    }
  }
}

TEST(StillImage, TiffInStripsAndTilesOfEveryColourForm) {
  for (const auto& [width, height] : kSizes) {
    for (const int tile : {0, 16}) {
      for (const int compression : {1, 5, 8}) {
        SCOPED_TRACE(testing::Message()
                     << width << "x" << height << " tile " << tile << " packed " << compression);
        const auto form = [&](int photometric, int extra = 0) {
          return TiffForm{.photometric = photometric,
                          .compression = compression,
                          .tile = tile,
                          .orientation = 6,
                          .extraSample = extra};
        };
        const Samples grey = Noise(width, height, 1), rgb = Noise(width, height, 3),
                      four = Noise(width, height, 4);
        ExpectPixels(Tiff(rgb, form(2)), width, height, [&](int x, int y) { return OfRgb(rgb, x, y); });
        ExpectPixels(Tiff(grey, form(1)), width, height, [&](int x, int y) { return OfGrey(grey, x, y); });
        ExpectPixels(Tiff(grey, form(3)), width, height, [&](int x, int y) { return OfPalette(grey, x, y); });
        ExpectPixels(
            Tiff(four, form(2, 2)), width, height,
            [&](int x, int y) { return Shaded(OfRgb(four, x, y), four.At(x, y)[3]); }, 1);
        ExpectPixels(
            Tiff(four, form(5)), width, height,
            [&](int x, int y) {
              const Rgb c = OfRgb(four, x, y);
              return Shaded({255 - c.red, 255 - c.green, 255 - c.blue}, 255 - four.At(x, y)[3]);
            },
            1);
      }
    }
    const Samples rgb = Noise(width, height, 3), smooth = Smooth(width, height, 3);
    ExpectPixels(Tiff(rgb, {.depth = 16}), width, height, [&](int x, int y) { return OfRgb(rgb, x, y); });
    ExpectPixels(
        Tiff(smooth, {.photometric = 6, .compression = 7, .rowsPerStrip = 8}), width, height,
        [&](int x, int y) { return OfRgb(smooth, x, y); }, 6);
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

/// What the picture `small` differs by from the averages over the parts of `whole` that its pixels cover.
struct Difference {
  double largest = 0, mean = 0;
};

Difference FromAverage(const XpPlaneBase& whole, const XpPlaneBase& small) {
  Difference difference;
  const double stepX = static_cast<double>(whole.width) / small.width;
  const double stepY = static_cast<double>(whole.height) / small.height;
  const auto share = [](double from, double to, int at) {
    return std::min(to, at + 1.0) - std::max<double>(from, at);
  };
  for (int y = 0; y < small.height; ++y) {
    for (int x = 0; x < small.width * 3; ++x) {
      const double left = x / 3 * stepX, right = std::min<double>(left + stepX, whole.width);
      const double top = y * stepY, bottom = std::min<double>(top + stepY, whole.height);
      double sum = 0, area = 0;
      for (int sy = static_cast<int>(top); sy < bottom; ++sy) {
        for (int sx = static_cast<int>(left); sx < right; ++sx) {
          const double part = share(top, bottom, sy) * share(left, right, sx);
          sum += part * whole.Row(sy)[sx * 3 + x % 3];
          area += part;
        }
      }
      const double error = std::abs(small.Row(y)[x] - sum / area);
      difference.largest = std::max(difference.largest, error);
      difference.mean += error;
    }
  }
  difference.mean /= small.height * small.width * 3.0;
  return difference;
}

// On noise the whole picture is clipped at black and white before it is averaged, which shows in the largest.
TEST(StillImage, AScaledJpegStaysNearTheAverageOfTheWholeOne) {
  struct Case {
    const char* name;
    Samples samples;
    double largest, mean;
  };
  for (const Case& c : {Case{"smooth", Smooth(256, 192, 3), 3, 1}, Case{"noise", Noise(256, 192, 3), 6, 1}}) {
    const Bytes file = Jpeg(c.samples, {.quality = 95});
    const Loaded whole = Load(file, {});
    ASSERT_EQ(whole.result, XpOk);
    for (const int eighths : {1, 2, 4}) {
      const Loaded small = Load(file, {.enoughWidth = 32 * eighths, .enoughHeight = 24 * eighths});
      ASSERT_EQ(small.result, XpOk);
      ASSERT_EQ(small.image.pixmap->width, 32 * eighths);
      const Difference d = FromAverage(*whole.image.pixmap->GetPlane(0), *small.image.pixmap->GetPlane(0));
      EXPECT_LE(d.largest, c.largest) << c.name << " at " << eighths << "/8, mean " << d.mean;
      EXPECT_LE(d.mean, c.mean) << c.name << " at " << eighths << "/8, largest " << d.largest;
      RecordProperty(std::string(c.name) + std::to_string(eighths),
                     std::to_string(d.largest) + " largest, " + std::to_string(d.mean) + " mean");
    }
  }
}

}  // namespace
