// Pictures of every format have the pixels that other programs show.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#include "tests/imaging/ImageFiles.h"
#include "tests/support/TempFolder.h"

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

TEST(StillImageTest, PngOfEveryColourTypeShowsItsPixelsOnBlack) {
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

TEST(StillImageTest, PngOfFewBitsWithPaletteOrTransparentKeyShowsItsPixels) {
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

TEST(StillImageTest, JpegOfEveryColourFormComesNearItsPixels) {
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

TEST(StillImageTest, GifIsPlacedOnItsScreenAndTheRestIsBlack) {
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
      // A picture larger than its screen is cut; without a screen size the picture is the screen.
      ExpectPixels(Gif(indices, {1, 1, 0, 0, -1, isInterlaced}), 1, 1, plain);
      ExpectPixels(Gif(indices, {0, 0, 0, 0, -1, isInterlaced}), width, height, plain);
    }
  }
}

TEST(StillImageTest, TiffInStripsAndTilesOfEveryColourFormShowsItsPixels) {
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

TEST(StillImageTest, JpegIsDecodedAtTheSmallestScaleThatCoversTheWantedSize) {
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

// The whole picture is clipped at black and white before it is averaged. On noise that raises the largest
// error.
TEST(StillImageTest, ScaledJpegIsNearTheAverageOfTheWholeOne) {
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

/// The picture's bytes from the top, BGR, as letters of the palette below where they match.
std::string Letters(const Loaded& loaded) {
  std::string letters;
  const XpPlaneBase& plane = *loaded.image.pixmap->GetPlane(0);
  for (int y = 0; y < plane.height; ++y) {
    for (int x = 0; x < plane.width; ++x) {
      const unsigned char* p = plane.Row(y) + x * 3;
      const int code = p[0] << 16 | p[1] << 8 | p[2];
      letters += code == 0 ? '.' : code == 0xFF ? 'r' : code == 0xFF00 ? 'g' : code == 0xFF0000 ? 'b' : '?';
    }
    letters += '/';
  }
  return letters;
}

// Blue, green, red, unused: index 0 is green, 1 red, 2 blue.
const Bytes kPalette("\0\xFF\0\0\0\0\xFF\0\xFF\0\0\0", 12);

TEST(StillImageTest, BmpOfEveryPackingShowsItsPixels) {
  const Bytes masks565 = Little(0xF800, 4) + Little(0x07E0, 4) + Little(0x001F, 4);
  const Bytes masks32 = Little(0xFF, 4) + Little(0xFF00, 4) + Little(0x00FF0000, 4);
  struct Case {
    const char* name;
    Bytes file;
    const char* letters;
  };
  const Bytes core = "BM" + Little(0, 8) + Little(26 + 6, 4) + Little(12, 4) + Little(3, 2) + Little(2, 2) +
                     Little(1, 2) + Little(1, 2) + Bytes("\0\xFF\0\0\0\xFF", 6) + Big(0xA0000000, 4) +
                     Big(0x40000000, 4);
  const Case cases[] = {
      {"1 bit", Bmp(3, 2, {1, 0, kPalette.substr(0, 8), Big(0xA0000000, 4) + Big(0x40000000, 4)}),
       "grg/rgr/"},
      {"OS/2", core, "grg/rgr/"},
      {"4 bits", Bmp(3, 1, {4, 0, kPalette, Big(0x01200000, 4)}), "grb/"},
      {"8 bits", Bmp(3, 1, {8, 0, kPalette, Big(0x00010200, 4)}), "grb/"},
      {"8 bits, index without a colour", Bmp(1, 1, {8, 0, kPalette, Big(0x09000000, 4)}), "./"},
      {"16 bits", Bmp(3, 1, {16, 0, {}, Little(0x7C00, 2) + Little(0x03E0, 2) + Little(0x001F, 4)}), "rgb/"},
      {"16 bits by masks",
       Bmp(3, 1, {16, 3, masks565, Little(0xF800, 2) + Little(0x07E0, 2) + Little(0x001F, 4)}), "rgb/"},
      {"24 bits from the top", Bmp(1, -2, {24, 0, {}, Little(0xFF0000, 4) + Little(0xFF, 4)}), "r/b/"},
      {"24 bits from the bottom", Bmp(1, 2, {24, 0, {}, Little(0xFF0000, 4) + Little(0xFF, 4)}), "b/r/"},
      {"32 bits", Bmp(2, 1, {32, 0, {}, Little(0x00FF0000, 4) + Little(0xFF00FF00, 4)}), "rg/"},
      {"32 bits by masks", Bmp(2, 1, {32, 3, masks32, Little(0x000000FF, 4) + Little(0x00FF0000, 4)}), "rb/"},
      {"run lengths of bytes, a move, literals",
       Bmp(5, 3, {8, 1, kPalette, Bytes("\3\1\0\0\0\2\1\0\1\2\0\0\0\3\0\1\2\0\0\1", 20)}),
       "grb../.b.../rrr../"},
      {"run lengths of nibbles, beyond the edge",
       Bmp(4, 2, {4, 2, kPalette, Bytes("\7\x12\0\0\0\3\x01\x20\0\1", 10)}), "grb./rbrb/"},
  };
  for (const Case& c : cases) {
    const Loaded loaded = Load(c.file);
    ASSERT_EQ(loaded.result, XpOk) << c.name << ": " << loaded.problem;
    EXPECT_EQ(Letters(loaded), c.letters) << c.name;
    // The mark at the end of a packing may be missing; every byte before it counts.
    for (std::size_t length = 0; length + 1 < c.file.size(); ++length) {
      const Loaded cut = Load(c.file.substr(0, length));
      if (c.file[length] == 0 && cut.result == XpOk) continue;
      SCOPED_TRACE(testing::Message() << c.name << " cut to " << length);
      ExpectErrorOrPart(cut);
      if (cut.result != XpOk) continue;
      const std::string part = Letters(cut), whole = c.letters;
      for (std::size_t i = 0; i < whole.size(); ++i)
        EXPECT_TRUE(part[i] == whole[i] || part[i] == '.') << part;
    }
  }
}

TEST(StillImageTest, RowsLargerThanOneReadOfTheFileAreWhole) {
  constexpr int kWidth = 50'000;
  Bytes data;
  for (int i = 0; i < 3 * kWidth * 3; ++i) data += static_cast<char>(i * 7 + i / 251);
  const Loaded loaded = Load(Bmp(kWidth, -3, {24, 0, {}, data}));
  ASSERT_EQ(loaded.result, XpOk) << loaded.problem;
  for (int y = 0; y < 3; ++y) {
    EXPECT_EQ(std::memcmp(loaded.image.pixmap->GetPlane(0)->Row(y), data.data() + y * kWidth * 3, kWidth * 3),
              0);
  }
}

TEST(StillImageTest, JpegWithStrayBytesBetweenItsSegmentsIsWhole) {
  for (const bool isProgressive : {false, true}) {
    const Bytes file = Jpeg(Noise(32, 24, 3), {.isProgressive = isProgressive});
    const Loaded whole = Load(file);
    for (std::size_t at = 2; at + 1 < file.size(); ++at) {
      const bool isMarker = file[at] == '\xFF' && static_cast<unsigned char>(file[at + 1]) >= 0xC0;
      if (!isMarker) continue;
      Bytes strayed = file;
      strayed.insert(at, "\x12\x34\0\x55", 4);
      const Loaded loaded = Load(strayed);
      ASSERT_EQ(loaded.result, XpOk) << at << ": " << loaded.problem;
      EXPECT_FALSE(loaded.image.isPartial) << at << ": " << loaded.problem;
      for (int y = 0; y < 24; ++y) {
        EXPECT_EQ(std::memcmp(loaded.image.pixmap->GetPlane(0)->Row(y),
                              whole.image.pixmap->GetPlane(0)->Row(y), 96),
                  0);
      }
    }
  }
}

TEST(StillImageTest, LabTiffHasNeutralGreysAndTheColoursOfTheirDefinition) {
  struct Case {
    int lightness, a, b;  // as in the file
    int red, green, blue;
  };
  // Greys, and the primaries of sRGB in Lab with the white D50.
  const Case cases[] = {{255, 0, 0, 255, 255, 255}, {200, 0, 0, 194, 194, 194}, {128, 0, 0, 119, 119, 119},
                        {10, 0, 0, 14, 14, 14},     {0, 0, 0, 0, 0, 0},         {138, 81, 70, 255, 0, 0},
                        {224, -79, 81, 0, 255, 0},  {75, 68, -112, 0, 0, 255}};
  Samples lab{8, 2, 3, {}};  // the first row is white
  for (int i = 0; i < 8; ++i) lab.data.insert(lab.data.end(), {255, 0, 0});
  for (const Case& c : cases) {
    for (const int sample : {c.lightness, c.a, c.b}) lab.data.push_back(static_cast<std::uint8_t>(sample));
  }
  for (const int tile : {0, 16}) {
    const Loaded loaded = Load(Tiff(lab, {.photometric = 8, .tile = tile}));
    ASSERT_EQ(loaded.result, XpOk) << loaded.problem;
    const unsigned char* bgr = loaded.image.pixmap->GetPlane(0)->Row(1);
    for (const Case& c : cases) {
      SCOPED_TRACE(testing::Message() << c.lightness << ", " << c.a << ", " << c.b);
      const int tolerance = c.a == 0 ? 1 : 14;  // whole numbers of Lab are coarse at the edge of sRGB
      EXPECT_NEAR(bgr[0], c.blue, tolerance);
      EXPECT_NEAR(bgr[1], c.green, tolerance);
      EXPECT_NEAR(bgr[2], c.red, tolerance);
      bgr += 3;
    }
  }
}

TEST(StillImageTest, FormatIsFoundByTheContentAndMissingFilesAreReported) {
  const TempFolder folder;
  folder.Write("png.jpg", Png(Noise(5, 4, 3)));
  folder.Write("jpeg.png", Jpeg(Noise(6, 4, 3)));
  folder.Write("empty.png", "");
  folder.Write("text.png", "plain text");
  struct Case {
    const char* name;
    XpResult result;
    std::int32_t width;
  };
  for (const Case& c :
       {Case{"png.jpg", XpOk, 5}, Case{"jpeg.png", XpOk, 6}, Case{"empty.png", XpErrInvalidFile, 0},
        Case{"text.png", XpErrInvalidFile, 0}, Case{"none.png", XpErrFileNotFound, 0}}) {
    const XpString path = XpNarrowString((folder.Path() / c.name).c_str()).ToWide();
    std::int32_t width = 0, height = 0;
    vrx::imaging::StillImage image;
    XpString problem;
    EXPECT_EQ(vrx::imaging::ReadStillImageSize(path, {}, width, height), c.result) << c.name;
    EXPECT_EQ(width, c.width) << c.name;
    EXPECT_EQ(vrx::imaging::LoadStillImage(path, {}, image, &problem), c.result) << c.name;
    EXPECT_EQ(problem.IsEmpty(), c.result == XpOk) << c.name;
  }
}

}  // namespace
