// Sources of any shape, orientation and colour sit in the movie's frame as a viewer expects them.
#include "engine/FrameFitter.h"

extern "C" {
#include <libavutil/display.h>
}

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "engine/PictureColour.h"

namespace vrx::engine {
namespace {

TEST(FitPicture, KeepsTheShapeOnEvenPixels) {
  struct Case {
    int width, height;
    AVRational aspect;
    bool sideways;
    int outWidth, outHeight;
    std::array<int, 4> expected;  // x, y, width, height
  };
  const Case cases[] = {
      {1440, 1080, {4, 3}, false, 1920, 1080, {0, 0, 1920, 1080}},
      {1000, 500, {0, 1}, false, 1920, 1080, {0, 60, 1920, 960}},
      {640, 480, {1, 1}, false, 1920, 1080, {240, 0, 1440, 1080}},
      {1920, 1080, {1, 1}, true, 1920, 1080, {656, 0, 606, 1080}},
      {4096, 2160, {1, 1}, false, 1920, 1080, {0, 34, 1920, 1012}},
      {7, 3, {1, 1}, false, 7 * 16, 48, {0, 0, 112, 48}},
      {10000, 2, {1, 1}, false, 64, 48, {0, 22, 64, 2}},
  };
  for (const Case& c : cases) {
    const FitRectangle fit = FitPicture(c.width, c.height, c.aspect, c.sideways, c.outWidth, c.outHeight);
    EXPECT_EQ((std::array{fit.x, fit.y, fit.width, fit.height}), c.expected)
        << c.width << "x" << c.height << " in " << c.outWidth << "x" << c.outHeight;
  }
}

constexpr int kSize = 64;
constexpr int kTopLeft = 60, kTopRight = 100, kBottomLeft = 150, kBottomRight = 210;

/// A square whose quarters have four levels of grey.
FramePtr Quarters(FramePool& pool) {
  FramePtr frame = pool.Get(kSize, kSize);
  FillBlack(*frame);
  for (int y = 0; y < kSize; ++y) {
    for (int x = 0; x < kSize; ++x) {
      const bool right = x >= kSize / 2, bottom = y >= kSize / 2;
      frame->data[0][y * frame->linesize[0] + x] = static_cast<std::uint8_t>(
          bottom ? (right ? kBottomRight : kBottomLeft) : (right ? kTopRight : kTopLeft));
    }
  }
  return frame;
}

TEST(FrameFitter, TurnsAsTheDisplayMatrixSaysBetweenBlackBars) {
  struct Case {
    double counterClockwise;
    bool mirrored;
    std::array<int, 4> corners;  // top left, top right, bottom left, bottom right
  };
  const Case cases[] = {
      {0, false, {kTopLeft, kTopRight, kBottomLeft, kBottomRight}},
      {-90, false, {kBottomLeft, kTopLeft, kBottomRight, kTopRight}},  // a quarter turn clockwise
      {180, false, {kBottomRight, kBottomLeft, kTopRight, kTopLeft}},
      {90, false, {kTopRight, kBottomRight, kTopLeft, kBottomLeft}},
      {0, true, {kTopRight, kTopLeft, kBottomRight, kBottomLeft}},  // left and right exchanged
  };
  for (const int scale : {1, 2}) {
    const int size = kSize * scale, bar = scale == 1 ? 0 : kSize;
    for (const Case& c : cases) {
      SCOPED_TRACE(testing::Message() << c.counterClockwise << " degrees to " << size);
      std::array<std::int32_t, 9> matrix{};
      // libav sets the matrix clockwise, and reads it counter-clockwise.
      av_display_rotation_set(matrix.data(), -c.counterClockwise);
      if (c.mirrored) av_display_matrix_flip(matrix.data(), 1, 0);
      FramePool pool;
      const FramePtr source = Quarters(pool);
      FramePtr fitted;
      FrameFitter fitter(size + 2 * bar, size);
      ASSERT_EQ(fitter.Fit(*source, Orientation::OfDisplayMatrix(matrix.data()), fitted), kOk);
      const auto luma = [&](int x, int y) { return fitted->data[0][y * fitted->linesize[0] + x]; };
      const int left = bar + size / 4, right = bar + size * 3 / 4, top = size / 4, bottom = size * 3 / 4;
      EXPECT_EQ(
          (std::array<int, 4>{luma(left, top), luma(right, top), luma(left, bottom), luma(right, bottom)}),
          c.corners);
      for (int x = 0; x < bar; ++x) {
        ASSERT_EQ(luma(x, top), 16) << x;
        ASSERT_EQ(luma(bar + size + x, top), 16) << x;
      }
      const bool staysAsItIs = scale == 1 && c.counterClockwise == 0 && !c.mirrored;
      EXPECT_EQ(fitted->data[0] == source->data[0], staysAsItIs);
    }
  }
}

FramePtr Uniform(AVPixelFormat format, std::array<int, 3> samples, AVColorSpace matrix, AVColorRange range) {
  FramePtr frame(av_frame_alloc());
  frame->format = format;
  frame->width = frame->height = kSize;
  frame->colorspace = matrix;
  frame->color_range = range;
  av_frame_get_buffer(frame.get(), 0);
  const bool wide = format == AV_PIX_FMT_YUV422P10LE;
  for (std::size_t plane = 0; plane < samples.size() && frame->data[plane] != nullptr; ++plane) {
    const bool halved = plane > 0 && (format == AV_PIX_FMT_YUV420P || format == AV_PIX_FMT_YUVJ420P);
    const int bytes = (halved ? kSize / 2 : kSize) * frame->linesize[plane];
    if (wide) {
      std::fill_n(reinterpret_cast<std::uint16_t*>(frame->data[plane]), bytes / 2, samples[plane]);
    } else {
      std::fill_n(frame->data[plane], bytes, samples[plane]);
    }
  }
  return frame;
}

/// The samples of a saturated orange with the given matrix, range and depth.
std::array<int, 3> OrangeIn(double kr, double kb, bool fullRange, int depth) {
  constexpr double kRed = 200, kGreen = 100, kBlue = 40;
  const double y = kr * kRed + (1 - kr - kb) * kGreen + kb * kBlue;
  const double scale = 1 << (depth - 8);
  const double luma = fullRange ? y : 16 + y * 219 / 255;
  const double gain = fullRange ? 1 : 224.0 / 255;
  const double u = 128 + (kBlue - y) / (2 * (1 - kb)) * gain;
  const double v = 128 + (kRed - y) / (2 * (1 - kr)) * gain;
  return {static_cast<int>(luma * scale + 0.5), static_cast<int>(u * scale + 0.5),
          static_cast<int>(v * scale + 0.5)};
}

TEST(FrameFitter, BringsEveryMatrixAndRangeToTheMovies) {
  const auto bt709 = [](bool full, int depth = 8) { return OrangeIn(0.2126, 0.0722, full, depth); };
  const auto bt601 = [](bool full) { return OrangeIn(0.299, 0.114, full, 8); };
  const FramePtr sources[] = {
      Uniform(AV_PIX_FMT_YUV420P, bt709(false), AVCOL_SPC_BT709, AVCOL_RANGE_MPEG),
      Uniform(AV_PIX_FMT_YUV420P, bt601(false), AVCOL_SPC_SMPTE170M, AVCOL_RANGE_MPEG),
      Uniform(AV_PIX_FMT_YUVJ420P, bt601(true), AVCOL_SPC_SMPTE170M, AVCOL_RANGE_UNSPECIFIED),
      Uniform(AV_PIX_FMT_YUV420P, bt601(false), AVCOL_SPC_UNSPECIFIED, AVCOL_RANGE_UNSPECIFIED),
      Uniform(AV_PIX_FMT_YUV444P, bt709(true), AVCOL_SPC_BT709, AVCOL_RANGE_JPEG),
      Uniform(AV_PIX_FMT_YUV422P10LE, bt709(false, 10), AVCOL_SPC_BT709, AVCOL_RANGE_MPEG),
      Uniform(AV_PIX_FMT_GBRP, {100, 40, 200}, AVCOL_SPC_RGB, AVCOL_RANGE_JPEG),
  };
  for (const int size : {720, 480}) {
    const std::array<int, 3> expected = size == 720 ? bt709(false) : bt601(false);
    for (std::size_t i = 0; i < std::size(sources); ++i) {
      FrameFitter fitter(size, size);
      FramePtr fitted;
      ASSERT_EQ(fitter.Fit(*sources[i], Orientation{}, fitted), kOk);
      for (std::size_t plane = 0; plane < 3; ++plane) {
        const int middle = plane == 0 ? size / 2 : size / 4;
        EXPECT_NEAR(fitted->data[plane][middle * fitted->linesize[plane] + middle], expected[plane], 2)
            << "source " << i << " plane " << plane << " to " << size;
      }
    }
  }
}

}  // namespace
}  // namespace vrx::engine
