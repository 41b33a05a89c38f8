// Pictures keep their detail, and their chroma its place, when they are scaled.
#include <gtest/gtest.h>

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <cmath>
#include <numbers>
#include <tuple>
#include <vector>

#include "engine/FrameFitter.h"

namespace vrx::engine {
namespace {

/// A square picture of numbers.
struct Plane {
  int size;
  std::vector<double> values;
  double& At(int x, int y) {
    return values[static_cast<std::size_t>(y) * static_cast<std::size_t>(size) + static_cast<std::size_t>(x)];
  }
};

Plane MakePlane(int size) {
  return {size, std::vector<double>(static_cast<std::size_t>(size) * static_cast<std::size_t>(size))};
}

/// Rings from the top left corner that reach half a period a pixel at the right and lower edge; luma levels.
Plane ZonePlate(int size) {
  Plane plate = MakePlane(size);
  for (int y = 0; y < size; ++y) {
    for (int x = 0; x < size; ++x) {
      plate.At(x, y) = std::round(128 + 80 * std::cos(std::numbers::pi / (2 * size) * (x * x + y * y)));
    }
  }
  return plate;
}

/// A sinc of 24 lobes, tapered, for the lower one of both sampling rates; rows of weights.
std::vector<std::vector<double>> IdealWeights(int from, int to) {
  constexpr double kLobes = 24;
  const double step = double(from) / to, stretch = std::max(step, 1.0);
  std::vector<std::vector<double>> rows;
  for (int out = 0; out < to; ++out) {
    std::vector<double> row(static_cast<std::size_t>(from));
    const double centre = (out + 0.5) * step - 0.5;
    double sum = 0;
    const int reach = static_cast<int>(kLobes * stretch);
    for (int in = static_cast<int>(centre) - reach; in <= static_cast<int>(centre) + reach; ++in) {
      const double place = (in - centre) / stretch, angle = std::numbers::pi * place;
      const double sinc = std::abs(angle) < 1e-9 ? 1 : std::sin(angle) / angle;
      const double weight = sinc * (0.5 + 0.5 * std::cos(angle / kLobes)) * (std::abs(place) < kLobes);
      row[static_cast<std::size_t>(std::clamp(in, 0, from - 1))] += weight;
      sum += weight;
    }
    for (double& weight : row) weight /= sum;
    rows.push_back(row);
  }
  return rows;
}

Plane ScaleIdeally(Plane& source, int size) {
  const auto weights = IdealWeights(source.size, size);
  Plane rows = MakePlane(std::max(size, source.size)), scaled = MakePlane(size);
  for (int y = 0; y < source.size; ++y) {
    for (int x = 0; x < size; ++x) {
      for (int in = 0; in < source.size; ++in) {
        rows.At(x, y) +=
            weights[static_cast<std::size_t>(x)][static_cast<std::size_t>(in)] * source.At(in, y);
      }
    }
  }
  for (int y = 0; y < size; ++y) {
    for (int in = 0; in < source.size; ++in) {
      const double weight = weights[static_cast<std::size_t>(y)][static_cast<std::size_t>(in)];
      if (weight == 0) continue;
      for (int x = 0; x < size; ++x) scaled.At(x, y) += weight * rows.At(x, in);
    }
  }
  return scaled;
}

/// A grey picture of any planar format from luma levels.
FramePtr GreyFrame(AVPixelFormat format, Plane& luma) {
  FramePtr frame(av_frame_alloc());
  frame->format = format;
  frame->width = frame->height = luma.size;
  frame->colorspace = IsRgb(format) ? AVCOL_SPC_RGB : AVCOL_SPC_BT709;
  frame->color_range = IsRgb(format) ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
  av_frame_get_buffer(frame.get(), 0);
  const AVPixFmtDescriptor& descriptor = *av_pix_fmt_desc_get(format);
  const int depth = descriptor.comp[0].depth;
  for (int plane = 0; plane < 3; ++plane) {
    const bool isChroma = plane > 0 && !IsRgb(format);
    const int width = isChroma ? luma.size >> descriptor.log2_chroma_w : luma.size;
    const int height = isChroma ? luma.size >> descriptor.log2_chroma_h : luma.size;
    for (int y = 0; y < height; ++y) {
      std::uint8_t* row = frame->data[plane] + y * frame->linesize[plane];
      for (int x = 0; x < width; ++x) {
        const double level = isChroma        ? 128
                             : IsRgb(format) ? (luma.At(x, y) - 16) * 255 / 219
                                             : luma.At(x, y);
        const auto sample = static_cast<std::uint16_t>(std::lround(level * (1 << (depth - 8))));
        if (depth == 8) row[x] = static_cast<std::uint8_t>(sample);
        if (depth > 8) reinterpret_cast<std::uint16_t*>(row)[x] = sample;
      }
    }
  }
  return frame;
}

double PsnrOfLuma(const AVFrame& frame, Plane& ideal) {
  double sum = 0;
  for (int y = 0; y < ideal.size; ++y) {
    for (int x = 0; x < ideal.size; ++x)
      sum += std::pow(frame.data[0][y * frame.linesize[0] + x] - ideal.At(x, y), 2);
  }
  return 10 * std::log10(255 * 255 / (sum / ideal.size / ideal.size));
}

TEST(PictureScalerTest, AZonePlateStaysCloseToAnIdealFilters) {
  struct Case {
    int from, to;
    double least;  // dB
  };
  for (const Case& c : {Case{320, 160, 28}, {320, 240, 26.5}, {240, 360, 24}}) {
    Plane plate = ZonePlate(c.from);
    Plane ideal = ScaleIdeally(plate, c.to);
    for (const AVPixelFormat format : {AV_PIX_FMT_YUV420P, AV_PIX_FMT_GBRP, AV_PIX_FMT_YUV422P10}) {
      FramePtr fitted;
      FrameFitter fitter(c.to, c.to);
      ASSERT_EQ(fitter.Fit(*GreyFrame(format, plate), Orientation{}, fitted), kOk);
      const double psnr = PsnrOfLuma(*fitted, ideal);
      EXPECT_GT(psnr, c.least) << av_get_pix_fmt_name(format) << " from " << c.from << " to " << c.to;
    }
  }
}

/// In the source and in the movie the chroma rises by a level for each so many pixels; between its edges the
/// place of every sample shows.
TEST(PictureScalerTest, ChromaKeepsItsPlace) {
  constexpr int kFrom = 128;
  for (const int size : {64, 96, 192, 256}) {
    for (const AVChromaLocation location : {AVCHROMA_LOC_UNSPECIFIED, AVCHROMA_LOC_LEFT, AVCHROMA_LOC_CENTER,
                                            AVCHROMA_LOC_TOPLEFT, AVCHROMA_LOC_BOTTOMLEFT}) {
      Plane grey = MakePlane(kFrom);
      std::fill(grey.values.begin(), grey.values.end(), 120);
      const FramePtr source = GreyFrame(AV_PIX_FMT_YUV420P, grey);
      source->colorspace = AVCOL_SPC_SMPTE170M;
      source->chroma_location = location;
      const double columnShift = location == AVCHROMA_LOC_CENTER ? 0.5 : 0;
      const double rowShift = location == AVCHROMA_LOC_TOPLEFT      ? 0
                              : location == AVCHROMA_LOC_BOTTOMLEFT ? 1
                                                                    : 0.5;
      for (int y = 0; y < kFrom / 2; ++y) {
        for (int x = 0; x < kFrom / 2; ++x) {
          source->data[1][y * source->linesize[1] + x] = static_cast<std::uint8_t>(40 + 2 * x + 0 * y);
          source->data[2][y * source->linesize[2] + x] = static_cast<std::uint8_t>(40 + 2 * y);
        }
      }
      FramePtr fitted;
      FrameFitter fitter(size, size);
      ASSERT_EQ(fitter.Fit(*source, Orientation{}, fitted), kOk);
      for (int at = 8; at < size / 2 - 8; ++at) {
        // Pixels from the edge to the sample, in the movie and so in the source.
        const double column = (2 * at + 0.5) * kFrom / size, row = (2 * at + 1) * double(kFrom) / size;
        EXPECT_NEAR(fitted->data[1][size / 4 * fitted->linesize[1] + at], 40 + column - 0.5 - columnShift,
                    0.8)
            << "column " << at << " of " << size << " sited " << location;
        EXPECT_NEAR(fitted->data[2][at * fitted->linesize[2] + size / 4], 40 + row - 0.5 - rowShift, 0.8)
            << "row " << at << " of " << size << " sited " << location;
      }
    }
  }
}

/// What a fitter keeps for one shape must not be used for another.
TEST(PictureScalerTest, ShapesMayChangeFromFrameToFrame) {
  Plane grey = MakePlane(256);
  std::fill(grey.values.begin(), grey.values.end(), 200);
  FrameFitter fitter(128, 96);
  for (const auto& [aspect, format, width] : {std::tuple{AVRational{1, 1}, AV_PIX_FMT_YUV420P, 64},
                                              {AVRational{3, 1}, AV_PIX_FMT_YUV420P, 64},
                                              {AVRational{1, 1}, AV_PIX_FMT_YUV420P, 33},
                                              {AVRational{1, 1}, AV_PIX_FMT_YUV420P, 253},
                                              {AVRational{1, 1}, AV_PIX_FMT_YUV422P10, 253},
                                              {AVRational{1, 1}, AV_PIX_FMT_YUV422P10, 64}}) {
    const FramePtr source = GreyFrame(format, grey);
    source->width = width;
    source->height = 64;
    source->sample_aspect_ratio = aspect;
    FramePtr fitted;
    ASSERT_EQ(fitter.Fit(*source, Orientation{}, fitted), kOk);
    const FitRectangle fit = FitPicture(width, 64, aspect, false, 128, 96);
    for (int y = 0; y < 96; ++y) {
      for (int x = 0; x < 128; ++x) {
        const bool isIn = x >= fit.x && x < fit.x + fit.width && y >= fit.y && y < fit.y + fit.height;
        ASSERT_NEAR(fitted->data[0][y * fitted->linesize[0] + x], isIn ? 200 : 16, 1)
            << width << " " << x << " " << y;
      }
    }
  }
}

}  // namespace
}  // namespace vrx::engine
