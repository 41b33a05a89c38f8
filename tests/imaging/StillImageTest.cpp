// Pictures of every format look as they do elsewhere, and hostile or broken files do no harm.
#include <gtest/gtest.h>
#include <zlib.h>

#include <cmath>

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

Bytes Little(std::uint32_t value, int bytes) {
  Bytes out;
  for (int i = 0; i < bytes; ++i, value >>= 8) out += static_cast<char>(value);
  return out;
}

Bytes Big(std::uint32_t value, int bytes) {
  const Bytes little = Little(value, bytes);
  return {little.rbegin(), little.rend()};
}

struct BmpForm {
  int bits = 24;
  std::uint32_t compression = 0;
  Bytes palette = {};  // or masks
  Bytes data;
};

Bytes Bmp(int width, int height, const BmpForm& form) {
  const auto offset = static_cast<std::uint32_t>(54 + form.palette.size());
  const auto colours = form.bits <= 8 ? static_cast<std::uint32_t>(form.palette.size() / 4) : 0;
  return "BM" + Little(0, 8) + Little(offset, 4) + Little(40, 4) +
         Little(static_cast<std::uint32_t>(width), 4) + Little(static_cast<std::uint32_t>(height), 4) +
         Little(1, 2) + Little(static_cast<std::uint32_t>(form.bits), 2) + Little(form.compression, 4) +
         Little(0, 12) + Little(colours, 4) + Little(0, 4) + form.palette + form.data;
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

TEST(StillImage, BmpOfEveryPackingShowsItsPixels) {
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
    // What packings end with is no more than a mark; every byte before it counts.
    for (std::size_t length = 0; length + 1 < c.file.size(); ++length) {
      const Loaded cut = Load(c.file.substr(0, length));
      if (c.file[length] == 0 && cut.result == XpOk) continue;
      EXPECT_EQ(cut.result, XpErrInvalidFile) << c.name << " cut to " << length;
    }
  }
}

TEST(StillImage, AFileCutAnywhereIsAnErrorInWordsAndAFlippedByteDoesNoHarm) {
  struct Case {
    const char* name;
    Bytes file;
    std::size_t spare;  // bytes at the end that are no picture data
  };
  const Samples rgb = Noise(9, 7, 3), grey = Noise(9, 7, 1);
  const Case cases[] = {
      {"PNG", Png(rgb), 0},
      {"PNG, interlaced", Png(rgb, {.isInterlaced = true}), 0},
      {"JPEG", Jpeg(rgb), 0},
      {"JPEG, progressive", Jpeg(rgb, {.isProgressive = true}), 0},
      {"GIF", Gif(grey, {9, 7, 0, 0, -1, false}), 2},
      {"GIF, interlaced", Gif(grey, {9, 7, 0, 0, 1, true}), 2},
      {"TIFF", Tiff(rgb), 4},
      {"TIFF, tiled and packed", Tiff(rgb, {.compression = 8, .tile = 16}), 4},
      {"TIFF, grey and packed", Tiff(grey, {.photometric = 1, .compression = 5}), 4},
  };
  testing::internal::CaptureStderr();
  for (const Case& c : cases) {
    ASSERT_EQ(Load(c.file).result, XpOk) << c.name;
    for (std::size_t at = 0; at < c.file.size(); ++at) {
      const Loaded cut = Load(c.file.substr(0, at));
      if (at + c.spare < c.file.size()) {
        EXPECT_EQ(cut.result, XpErrInvalidFile) << c.name << " cut to " << at << " of " << c.file.size();
        EXPECT_FALSE(cut.problem.empty());
        EXPECT_EQ(cut.image.pixmap, nullptr);
      }
      Load(c.file.substr(0, at), {}, false);
      for (const int flip : {0xFF, 0x01, 0x80}) {
        Bytes bent = c.file;
        bent[at] = static_cast<char>(bent[at] ^ flip);
        const Loaded loaded = Load(bent, {.limits = {.pixels = 1'000'000}});
        EXPECT_EQ(loaded.result == XpOk, loaded.image.pixmap != nullptr);
      }
    }
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(StillImage, SizesBeyondTheLimitsAreRefusedFromTheHead) {
  Bytes png = Png(Noise(1, 1, 3)), jpeg = Jpeg(Noise(8, 8, 3)),
        gif = Gif(Noise(1, 1, 1), {65535, 65535, 0, 0, -1, false});
  // Type and fields of the PNG's first chunk are 17 bytes from 12 on, and its checksum follows them.
  png.replace(16, 8, Big(65535, 4) + Big(65535, 4));
  const auto* chunk = reinterpret_cast<const unsigned char*>(png.data()) + 12;
  png.replace(29, 4, Big(static_cast<std::uint32_t>(crc32(0, chunk, 17)), 4));
  const std::size_t frame = jpeg.find("\xFF\xC0");
  jpeg.replace(frame + 5, 4, "\xFF\xDC\xFF\xDC");
  const Bytes bmp = Bmp(65535, 65535, {24, 0, {}, "1234"});
  for (const Bytes& file : {png, jpeg, gif, bmp}) {
    for (const bool wantsPixels : {true, false}) {
      const Loaded loaded = Load(file, {}, wantsPixels);
      EXPECT_EQ(loaded.result, XpErrOutOfMemory) << loaded.problem;
      EXPECT_NE(loaded.problem.find("too large"), std::string::npos) << loaded.problem;
    }
  }
  EXPECT_EQ(Load(Png(Noise(21, 2, 3)), {.limits = {.side = 20}}).result, XpErrOutOfMemory);
  EXPECT_EQ(Load(Tiff(Noise(21, 2, 3)), {.limits = {.side = 20}}).result, XpErrOutOfMemory);
  EXPECT_EQ(Load(Png(Noise(10, 10, 3)), {.limits = {.pixels = 99}}).result, XpErrOutOfMemory);
  EXPECT_EQ(Load(Png(Noise(10, 10, 3)), {.limits = {.fileBytes = 50}}).result, XpErrOutOfMemory);
  // Within the limits, but more than so small a file can hold.
  for (const Bytes& file :
       {Bmp(12000, 12000, {24, 0, {}, "1234"}), jpeg.replace(frame + 5, 4, "\x2E\xE0\x2E\xE0")}) {
    EXPECT_EQ(Load(file, {}).result, XpErrInvalidFile);
  }
}

TEST(StillImage, ThousandsOfScansAreGivenUp) {
  Bytes jpeg = Jpeg(Noise(8, 8, 1), {.isProgressive = true});
  const std::size_t first = jpeg.find("\xFF\xDA");
  const std::size_t next = jpeg.find("\xFF\xC4", first);
  const Bytes scan = jpeg.substr(first, next - first);
  ASSERT_NE(next, Bytes::npos);
  Bytes many = jpeg.substr(0, first);
  for (int i = 0; i < 5000; ++i) many += scan;
  const Loaded loaded = Load(many + "\xFF\xD9");
  EXPECT_EQ(loaded.result, XpErrInvalidFile);
  EXPECT_NE(loaded.problem.find("scans"), std::string::npos) << loaded.problem;
}

TEST(StillImage, TheContentTellsTheFormatAndMissingFilesSaySo) {
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
