// Pictures of every matrix, range, transfer and dynamic range have the colours in the movie that they should.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <tuple>

#include "engine/FrameFitter.h"
#include "tests/engine/PictureCard.h"

namespace vrx::engine {
namespace {

constexpr int kColumns = 6, kRows = 4;
constexpr std::array<int, 2> kSmall{360, 240}, kLarge{900, 600};  // BT.601 and BT.709 as movies

const Encoding& MovieOf(const std::array<int, 2>& size) { return size == kSmall ? kMovie601 : kMovie709; }

FramePtr FitTo(const AVFrame& card, const std::array<int, 2>& size) {
  FramePtr fitted;
  FrameFitter fitter(size[0], size[1]);
  EXPECT_EQ(fitter.Fit(card, Orientation{}, fitted), kOk);
  return fitted;
}

TEST(PictureColoursTest, StandardPicturesAreExactWithinALevel) {
  std::vector<Triple> colours;
  for (int step = 0; step < 8; ++step) colours.push_back({step / 7.0, step / 7.0, step / 7.0});
  for (const double strength : {1.0, 0.75}) {
    for (int bar = 0; bar < 8; ++bar) {
      colours.push_back({strength * (bar & 1), strength * (bar >> 1 & 1), strength * (bar >> 2 & 1)});
    }
  }
  const Encoding encodings[] = {kMovie601,
                                kMovie709,
                                {AVCOL_SPC_BT2020_NCL, 0.2627, 0.0593, false},
                                {AVCOL_SPC_SMPTE240M, 0.212, 0.087, false},
                                {AVCOL_SPC_FCC, 0.30, 0.11, false}};
  const AVColorTransferCharacteristic transfers[] = {
      AVCOL_TRC_BT709,       AVCOL_TRC_SMPTE170M, AVCOL_TRC_IEC61966_2_1,
      AVCOL_TRC_UNSPECIFIED, AVCOL_TRC_BT2020_10, static_cast<AVColorTransferCharacteristic>(31)};
  std::size_t turn = 0;
  for (const AVPixelFormat format : {AV_PIX_FMT_YUV420P, AV_PIX_FMT_NV12, AV_PIX_FMT_YUV444P,
                                     AV_PIX_FMT_YUV420P10, AV_PIX_FMT_P010, AV_PIX_FMT_YUV422P10}) {
    for (Encoding from : encodings) {
      for (const bool fullRange : {false, true}) {
        from.fullRange = fullRange;
        for (const auto& size : {kSmall, kLarge}) {
          std::vector<Triple> samples;
          for (const Triple& colour : colours) samples.push_back(from.SamplesOf(colour));
          const FramePtr card = MakeCard(format, size[0], size[1], kColumns, from, samples);
          card->color_trc = transfers[turn++ % std::size(transfers)];
          for (const auto& movie : {kSmall, kLarge}) {
            const FramePtr fitted = FitTo(*card, movie);
            for (int patch = 0; patch < kColumns * kRows; ++patch) {
              const auto index = static_cast<std::size_t>(patch);
              const Triple exact = MovieOf(movie).SamplesOf(from.ColoursOf(samples[index]));
              const Triple got = MiddleOf(*fitted, kColumns, kRows, patch);
              for (std::size_t i = 0; i < 3; ++i) {
                ASSERT_NEAR(got[i], std::clamp(exact[i], 0.0, 255.0), 1.0)
                    << av_get_pix_fmt_name(format) << " of matrix " << from.matrix << " full " << fullRange
                    << " " << size[0] << " to " << movie[0] << " patch " << patch << " part " << i;
              }
              if (patch < 8) {
                ASSERT_EQ((std::array{got[1], got[2]}), (std::array{128.0, 128.0})) << patch;
              }
            }
          }
        }
      }
    }
  }
}

constexpr double kWhite = 203;  // cd/m2

double PqCode(double light) {
  const double root = std::pow(light / 10000, 2610.0 / 16384);
  return std::pow((3424.0 / 4096 + 2413.0 / 128 * root) / (1 + 2392.0 / 128 * root), 2523.0 / 32);
}

double HlgCode(double scene) {
  return scene <= 1.0 / 12 ? std::sqrt(3 * scene)
                           : 0.17883277 * std::log(12 * scene - 0.28466892) + 0.55991073;
}

double Sum(const Triple& a, const Triple& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

constexpr Encoding kWide{AVCOL_SPC_BT2020_NCL, 0.2627, 0.0593, false};

/// The signal for the light of a display in cd/m2, whose shares in the luminance are `luma`.
Triple CodesOf(AVColorTransferCharacteristic transfer, const Triple& light,
               const Triple& luma = {0.2627, 0.678, 0.0593}) {
  const double luminance = Sum(luma, light);
  Triple codes{};
  for (std::size_t i = 0; i < 3; ++i) {
    const double scene = luminance <= 0 ? 0 : light[i] / 1000 * std::pow(luminance / 1000, -0.2 / 1.2);
    codes[i] = transfer == AVCOL_TRC_SMPTE2084 ? PqCode(light[i]) : HlgCode(scene);
  }
  return codes;
}

/// What the fitter makes of patches of light; one a patch, each with the movie's own colours between 0 and 1.
std::vector<Triple> FitLight(AVPixelFormat format, AVColorTransferCharacteristic transfer,
                             const std::vector<Triple>& light, const std::array<int, 2>& movie) {
  std::vector<Triple> samples, colours;
  for (const Triple& patch : light) samples.push_back(kWide.SamplesOf(CodesOf(transfer, patch)));
  const FramePtr card = MakeCard(format, kLarge[0], kLarge[1], kColumns, kWide, samples);
  card->color_trc = transfer;
  card->color_primaries = AVCOL_PRI_BT2020;
  const FramePtr fitted = FitTo(*card, movie);
  for (int patch = 0; patch < kColumns * kRows; ++patch) {
    const Triple got = MiddleOf(*fitted, kColumns, kRows, patch);
    const auto& [red, green, blue] = light[static_cast<std::size_t>(patch)];
    if (red == green && green == blue) {
      EXPECT_EQ((std::array{got[1], got[2]}), (std::array{128.0, 128.0})) << patch;
    }
    colours.push_back(MovieOf(movie).ColoursOf(got));
  }
  return colours;
}

/// The signal of a standard display of gamma 2.4 whose white is the reference white.
double StandardSignal(double light) { return std::pow(light / kWhite, 1 / 2.4); }

/// Primaries of a source and what is linear in them.
struct Primaries {
  AVColorPrimaries primaries;
  Triple luma;
  std::array<Triple, 3> ofBt709;  // rows
};
constexpr Primaries kPrimaries[] = {
    {AVCOL_PRI_BT709, {0.2126, 0.7152, 0.0722}, {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}}},
    {AVCOL_PRI_SMPTE432,
     {0.2290, 0.6917, 0.0793},
     {{{0.8225, 0.1775, 0}, {0.0332, 0.9668, 0}, {0.0171, 0.0724, 0.9105}}}},
    {AVCOL_PRI_BT2020,
     {0.2627, 0.6780, 0.0593},
     {{{0.6274, 0.3293, 0.0433}, {0.0691, 0.9195, 0.0114}, {0.0164, 0.0880, 0.8956}}}}};

/// The movie's luma for a grey of 10 bits.
double PqLevel(int code) {
  const double root = std::pow((code - 64) / 876.0, 32.0 / 2523);
  const double light =
      10000 * std::pow((root - 3424.0 / 4096) / (2413.0 / 128 - 2392.0 / 128 * root), 16384.0 / 2610);
  return 16 + 219 * StandardSignal(light);
}

class HdrTest : public testing::TestWithParam<AVColorTransferCharacteristic> {};
INSTANTIATE_TEST_SUITE_P(Transfers, HdrTest, testing::Values(AVCOL_TRC_SMPTE2084, AVCOL_TRC_ARIB_STD_B67));

TEST_P(HdrTest, GreysKeepTheirShadowsAndRollOffAboveWhite) {
  const double levels[] = {0,  0.05, 0.2, 0.5, 1,   2,   4,   7,   10,  14,  19,  26,
                           38, 52,   70,  90,  110, 150, 203, 280, 380, 520, 700, 1000};
  std::vector<Triple> light;
  for (const double level : levels) light.push_back({level, level, level});
  for (const AVPixelFormat format : {AV_PIX_FMT_YUV420P10, AV_PIX_FMT_P010, AV_PIX_FMT_YUV422P10}) {
    for (const auto& movie : {kSmall, kLarge}) {
      const std::vector<Triple> colours = FitLight(format, GetParam(), light, movie);
      for (std::size_t i = 0; i < std::size(levels); ++i) {
        SCOPED_TRACE(testing::Message() << av_get_pix_fmt_name(format) << " " << levels[i] << " cd/m2");
        if (i > 0) {
          EXPECT_GE(colours[i][1], colours[i - 1][1] + (levels[i] > kWhite ? 0.9 : 1.9) / 219);
        }
        if (levels[i] <= 90) {
          EXPECT_NEAR(colours[i][1], StandardSignal(levels[i]), 1.5 / 219);
        }
        if (levels[i] == kWhite) {
          EXPECT_GT(colours[i][1], 0.85);
          EXPECT_LT(colours[i][1], 0.95);
        }
        EXPECT_LE(colours[i][1], 1);
      }
    }
  }
}

TEST_P(HdrTest, ColoursOfBt709StayAndOthersAreBroughtIn) {
  // Rows of BT.709 to BT.2020.
  const auto wide = [](double red, double green, double blue) {
    return Triple{0.6274 * red + 0.3293 * green + 0.0433 * blue,
                  0.0691 * red + 0.9195 * green + 0.0114 * blue,
                  0.0164 * red + 0.0880 * green + 0.8956 * blue};
  };
  const Triple inside[] = {{60, 30, 20}, {20, 60, 30}, {30, 20, 60}, {80, 70, 20},
                           {10, 50, 60}, {50, 20, 40}, {8, 4, 3},    {100, 60, 45}};
  std::vector<Triple> light;
  for (const Triple& colour : inside) light.push_back(wide(colour[0], colour[1], colour[2]));
  for (const double level : {50.0, 800.0}) {
    for (int bar = 1; bar < 7; ++bar)
      light.push_back({level * (bar & 1), level * (bar >> 1 & 1), level * (bar >> 2)});
  }
  light.resize(kColumns * kRows);
  for (const auto& movie : {kSmall, kLarge}) {
    const std::vector<Triple> colours = FitLight(AV_PIX_FMT_YUV422P10, GetParam(), light, movie);
    for (std::size_t patch = 0; patch < std::size(inside); ++patch) {
      for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(colours[patch][i], StandardSignal(inside[patch][i]), 3.0 / 219) << patch << " part " << i;
      }
    }
    for (std::size_t patch = std::size(inside); patch < std::size(inside) + 12; ++patch) {
      const std::size_t bar = (patch - std::size(inside)) % 6 + 1;
      double darkest = 1, brightest = 0, weakestLit = 1;
      for (std::size_t i = 0; i < 3; ++i) {
        const double part = colours[patch][i];
        EXPECT_GT(part, -3.0 / 219) << patch;
        EXPECT_LT(part, 1 + 3.0 / 219) << patch;
        darkest = std::min(darkest, part);
        brightest = std::max(brightest, part);
        if ((bar >> i & 1) != 0) weakestLit = std::min(weakestLit, part);
      }
      EXPECT_GT(weakestLit, darkest + 0.15) << "a bar has lost its hue: " << patch;
      if (patch < std::size(inside) + 6) {
        const auto lightOf = [&](std::size_t i) {
          return kWhite * std::pow(std::max(colours[patch][i], 0.0), 2.4);
        };
        const Triple& from = light[patch];
        const double luminance = 0.2627 * from[0] + 0.678 * from[1] + 0.0593 * from[2];
        EXPECT_NEAR(0.2126 * lightOf(0) + 0.7152 * lightOf(1) + 0.0722 * lightOf(2), luminance,
                    luminance / 12)
            << patch;
      }
      EXPECT_GT(brightest, patch < std::size(inside) + 6 ? 0.4 : 0.8) << patch;
    }
  }
}

TEST_P(HdrTest, PrimariesMayChangeFromFrameToFrame) {
  const Triple colours[] = {{60, 30, 20}, {20, 60, 30}, {30, 20, 60},
                            {10, 50, 60}, {80, 70, 12}, {9, 60, 20}};
  FrameFitter fitter(kLarge[0], kLarge[1]);
  for (const Primaries& from : kPrimaries) {
    std::vector<Triple> samples;
    for (std::size_t patch = 0; patch < kColumns * kRows; ++patch) {
      Triple light{};
      for (std::size_t i = 0; i < 3; ++i)
        light[i] = Sum(from.ofBt709[i], colours[patch % std::size(colours)]);
      samples.push_back(kWide.SamplesOf(CodesOf(GetParam(), light, from.luma)));
    }
    const FramePtr card = MakeCard(AV_PIX_FMT_YUV422P10, kLarge[0], kLarge[1], kColumns, kWide, samples);
    card->color_trc = GetParam();
    card->color_primaries = from.primaries;
    if (from.primaries == AVCOL_PRI_BT2020) card->colorspace = AVCOL_SPC_UNSPECIFIED;
    FramePtr fitted;
    ASSERT_EQ(fitter.Fit(*card, Orientation{}, fitted), kOk);
    for (int patch = 0; patch < kColumns; ++patch) {
      const Triple got = kMovie709.ColoursOf(MiddleOf(*fitted, kColumns, kRows, patch));
      const Triple& exact = colours[static_cast<std::size_t>(patch)];
      for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(got[i], StandardSignal(exact[i]), 3.0 / 219)
            << from.primaries << " " << patch << " " << i;
      }
    }
  }
}

/// Every pixel of a level between two of the movie's is one of the two, and their mean is the level.
TEST(PictureColoursTest, LevelsBetweenTheMoviesAreDithered) {
  for (const auto& [transfer, code, exact] :
       {std::tuple{AVCOL_TRC_BT709, 401, 100.25}, {AVCOL_TRC_SMPTE2084, 401, PqLevel(401)}}) {
    FramePtr frame(av_frame_alloc());
    frame->format = AV_PIX_FMT_YUV420P10;
    frame->width = 144;
    frame->height = 96;
    frame->color_trc = transfer;
    frame->colorspace = AVCOL_SPC_SMPTE170M;
    ASSERT_EQ(av_frame_get_buffer(frame.get(), 0), 0);
    for (std::size_t plane = 0; plane < 3; ++plane) {
      auto* samples = reinterpret_cast<std::uint16_t*>(frame->data[plane]);
      std::fill_n(samples, frame->linesize[plane] / 2 * (plane == 0 ? 96 : 48),
                  static_cast<std::uint16_t>(plane == 0 ? code : 512));
    }
    const FramePtr fitted = FitTo(*frame, {144, 96});
    double sum = 0;
    for (int y = 0; y < 96; ++y) {
      for (int x = 0; x < 144; ++x) {
        const int level = fitted->data[0][y * fitted->linesize[0] + x];
        ASSERT_LT(std::abs(level - exact), 1.05) << x << " " << y;
        sum += level;
      }
    }
    EXPECT_NEAR(sum / (144 * 96), exact, 0.1) << transfer;
  }
}

TEST(PictureColoursTest, TheBrightestPqStaysBelowWhiteAndOddPicturesAreMappedToo) {
  std::vector<Triple> light;
  for (int i = 0; i < kColumns * kRows; ++i) {
    const double level = 1000 * std::pow(10, i / 23.0);
    light.push_back({level, level, level});
  }
  const std::vector<Triple> colours = FitLight(AV_PIX_FMT_YUV420P10, AVCOL_TRC_SMPTE2084, light, kLarge);
  EXPECT_LE(colours.back()[1], 1);
  EXPECT_GT(colours.back()[1], colours.front()[1] + 3.0 / 219);
  // Frames that change from one to the next, in ways that make no sense.
  FrameFitter fitter(64, 48);
  for (const auto& [width, height] : {std::pair{1, 1}, {3, 5}, {853, 481}, {2, 4000}}) {
    for (const AVPixelFormat format :
         {AV_PIX_FMT_YUV420P, AV_PIX_FMT_GRAY8, AV_PIX_FMT_YUV410P, AV_PIX_FMT_RGB48}) {
      for (const int value : {0, 2, 6, 9, 14, 16, 18}) {
        const FramePtr frame(av_frame_alloc());
        frame->format = format;
        frame->width = width;
        frame->height = height;
        frame->color_trc = static_cast<AVColorTransferCharacteristic>(value);
        frame->colorspace = static_cast<AVColorSpace>(std::min<int>(value, AVCOL_SPC_NB));
        frame->color_primaries = static_cast<AVColorPrimaries>(value);
        frame->chroma_location = static_cast<AVChromaLocation>(std::min<int>(value, AVCHROMA_LOC_NB));
        ASSERT_EQ(av_frame_get_buffer(frame.get(), 0), 0);
        for (AVBufferRef* buffer : frame->buf) {
          if (buffer != nullptr) std::fill_n(buffer->data, buffer->size, std::uint8_t{90});
        }
        FramePtr fitted;
        EXPECT_EQ(fitter.Fit(*frame, Orientation{}, fitted), kOk)
            << av_get_pix_fmt_name(format) << " " << value;
      }
    }
  }
}

}  // namespace
}  // namespace vrx::engine
