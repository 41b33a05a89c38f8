// Sources of any shape, orientation and colour sit in the movie's frame as a viewer expects them.
#include "engine/FrameFitter.h"

extern "C" {
#include <libavutil/display.h>
#include <libavutil/pixdesc.h>
}

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>

#include "engine/PictureColour.h"

namespace vrx::engine {
namespace {

TEST(OutputColourTest, FollowsTheHeightOfTheMovie) {
  EXPECT_EQ(OutputColour(480).matrix, AVCOL_SPC_SMPTE170M);
  EXPECT_EQ(OutputColour(576).matrix, AVCOL_SPC_BT470BG);
  EXPECT_EQ(OutputColour(578).matrix, AVCOL_SPC_BT709);
  EXPECT_EQ(MatrixOfHeight(576), OutputMatrix::Bt601);
  EXPECT_EQ(MatrixOfHeight(578), OutputMatrix::Bt709);
}

TEST(FitPictureTest, KeepsTheShapeOnEvenPixels) {
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
      {1920, 1080, {1, 1}, true, 1920, 1080, {656, 0, 608, 1080}},
      {4096, 2160, {1, 1}, false, 1920, 1080, {0, 34, 1920, 1012}},
      {7, 3, {1, 1}, false, 7 * 16, 48, {0, 0, 112, 48}},
      {854, 480, {1, 1}, false, 320, 180, {0, 0, 320, 180}},
      {1914, 1080, {1, 1}, false, 1920, 1080, {2, 0, 1914, 1080}},
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

TEST(FrameFitterTest, TurnsAsTheDisplayMatrixSaysBetweenBlackBars) {
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

FramePtr Uniform(AVPixelFormat format, std::array<int, 3> samples, AVColorSpace matrix, AVColorRange range,
                 int width = kSize, int height = kSize) {
  FramePtr frame(av_frame_alloc());
  frame->format = format;
  frame->width = width;
  frame->height = height;
  frame->colorspace = matrix;
  frame->color_range = range;
  av_frame_get_buffer(frame.get(), 0);
  const AVPixFmtDescriptor& descriptor = *av_pix_fmt_desc_get(format);
  for (std::size_t plane = 0; plane < samples.size() && frame->data[plane] != nullptr; ++plane) {
    const int rows = plane == 0 ? height : AV_CEIL_RSHIFT(height, descriptor.log2_chroma_h);
    const int bytes = rows * frame->linesize[plane];
    if (descriptor.comp[0].depth > 8) {
      std::fill_n(reinterpret_cast<std::uint16_t*>(frame->data[plane]), bytes / 2, samples[plane]);
    } else {
      std::fill_n(frame->data[plane], bytes, samples[plane]);
    }
  }
  return frame;
}

/// Whether each sample of the picture at `fit` is that in its middle, up to the scaler's dither, and each
/// other sample is black.
testing::AssertionResult IsUniformBetweenBars(const AVFrame& frame, const FitRectangle& fit) {
  for (int plane = 0; plane < 3; ++plane) {
    const int shift = plane == 0 ? 0 : 1;
    const int left = fit.x >> shift, top = fit.y >> shift;
    const int right = left + (fit.width >> shift), bottom = top + (fit.height >> shift);
    const auto at = [&](int x, int y) { return frame.data[plane][y * frame.linesize[plane] + x]; };
    const int picture = at((left + right) / 2, (top + bottom) / 2);
    for (int y = 0; y < frame.height >> shift; ++y) {
      for (int x = 0; x < frame.width >> shift; ++x) {
        const bool inside = x >= left && x < right && y >= top && y < bottom;
        const int expected = inside ? picture : plane == 0 ? 16 : 128;
        if (std::abs(at(x, y) - expected) <= (inside ? 1 : 0)) continue;
        return testing::AssertionFailure() << "plane " << plane << " at " << x << "," << y << " is "
                                           << int{at(x, y)} << ", not " << expected;
      }
    }
  }
  return testing::AssertionSuccess();
}

TEST(FrameFitterTest, WritesNothingBesideThePicture) {
  constexpr int kWidth = 160, kHeight = 64, kGuard = 0xA5;
  struct Kind {
    AVPixelFormat format;
    std::array<int, 3> samples;
    AVColorSpace matrix;
    AVColorRange range;
  };
  const Kind kinds[] = {
      {AV_PIX_FMT_YUV420P, {180, 90, 170}, AVCOL_SPC_SMPTE170M, AVCOL_RANGE_MPEG},
      {AV_PIX_FMT_YUV420P, {180, 90, 170}, AVCOL_SPC_BT709, AVCOL_RANGE_MPEG},
      {AV_PIX_FMT_YUVJ420P, {180, 90, 170}, AVCOL_SPC_SMPTE170M, AVCOL_RANGE_JPEG},
      {AV_PIX_FMT_YUV422P, {180, 90, 170}, AVCOL_SPC_BT709, AVCOL_RANGE_JPEG},
      {AV_PIX_FMT_YUV420P10LE, {720, 360, 680}, AVCOL_SPC_SMPTE170M, AVCOL_RANGE_MPEG},
      {AV_PIX_FMT_YUV420P10LE, {720, 360, 680}, AVCOL_SPC_BT2020_NCL, AVCOL_RANGE_MPEG},
      {AV_PIX_FMT_RGB24, {180, 0, 0}, AVCOL_SPC_RGB, AVCOL_RANGE_JPEG},
      {AV_PIX_FMT_GRAY8, {180, 0, 0}, AVCOL_SPC_UNSPECIFIED, AVCOL_RANGE_UNSPECIFIED},
  };
  for (const Kind& kind : kinds) {
    for (const Orientation& orientation : {Orientation{}, Orientation{0, true}, Orientation{90, false}}) {
      const bool sideways = orientation.IsSideways();
      for (int width = 2; width <= 130; ++width) {
        SCOPED_TRACE(testing::Message() << av_get_pix_fmt_name(kind.format) << " " << width
                                        << " wide, turned by " << orientation.clockwise);
        const FramePtr source = Uniform(kind.format, kind.samples, kind.matrix, kind.range,
                                        sideways ? kHeight : width, sideways ? width : kHeight);
        FrameFitter fitter(kWidth, kHeight);
        FramePtr fitted;
        ASSERT_EQ(fitter.Fit(*source, orientation, fitted), kOk);
        AVBufferRef& memory = *fitted->buf[0];
        const auto* first = memory.data;
        std::fill_n(memory.data, memory.size, kGuard);
        fitted.reset();
        ASSERT_EQ(fitter.Fit(*source, orientation, fitted), kOk);
        ASSERT_EQ(fitted->buf[0]->data, first) << "the pool gave other memory";
        ASSERT_TRUE(IsUniformBetweenBars(
            *fitted, FitPicture(source->width, source->height, {1, 1}, sideways, kWidth, kHeight)));
        const std::uint8_t* end = fitted->data[2] + kHeight / 2 * fitted->linesize[2];
        const auto room = first + fitted->buf[0]->size - end;
        ASSERT_GE(room, 64);
        ASSERT_EQ(std::count(end, end + room, kGuard), room);
      }
    }
  }
}

/// The samples of a saturated orange with the given matrix and range.
std::array<int, 3> OrangeIn(double kr, double kb, bool fullRange) {
  constexpr double kRed = 200, kGreen = 100, kBlue = 40;
  const double y = kr * kRed + (1 - kr - kb) * kGreen + kb * kBlue;
  const double luma = fullRange ? y : 16 + y * 219 / 255;
  const double gain = fullRange ? 1 : 224.0 / 255;
  const double u = 128 + (kBlue - y) / (2 * (1 - kb)) * gain;
  const double v = 128 + (kRed - y) / (2 * (1 - kr)) * gain;
  return {static_cast<int>(luma + 0.5), static_cast<int>(u + 0.5), static_cast<int>(v + 0.5)};
}

TEST(FrameFitterTest, FormatAndHeightSayWhatThePictureLeavesOpen) {
  const auto bt601 = [](bool full) { return OrangeIn(0.299, 0.114, full); };
  const FramePtr sources[] = {
      Uniform(AV_PIX_FMT_YUVJ420P, bt601(true), AVCOL_SPC_SMPTE170M, AVCOL_RANGE_UNSPECIFIED),
      Uniform(AV_PIX_FMT_YUV420P, bt601(false), AVCOL_SPC_UNSPECIFIED, AVCOL_RANGE_UNSPECIFIED),
      Uniform(AV_PIX_FMT_GBRP, {100, 40, 200}, AVCOL_SPC_RGB, AVCOL_RANGE_JPEG),
  };
  for (const int size : {720, 480}) {
    const std::array<int, 3> expected = size == 720 ? OrangeIn(0.2126, 0.0722, false) : bt601(false);
    for (std::size_t i = 0; i < std::size(sources); ++i) {
      FrameFitter fitter(size, size);
      FramePtr fitted;
      ASSERT_EQ(fitter.Fit(*sources[i], Orientation{}, fitted), kOk);
      for (std::size_t plane = 0; plane < 3; ++plane) {
        const int middle = plane == 0 ? size / 2 : size / 4;
        EXPECT_NEAR(fitted->data[plane][middle * fitted->linesize[plane] + middle], expected[plane], 1)
            << "source " << i << " plane " << plane << " to " << size;
      }
    }
  }
}

/// Luma and chroma in the middle of the movie's frame.
std::array<int, 3> FitOne(const AVFrame& source, int movieHeight) {
  FrameFitter fitter(movieHeight, movieHeight);
  FramePtr fitted;
  EXPECT_EQ(fitter.Fit(source, Orientation{}, fitted), kOk);
  const auto middle = [&](int plane) {
    const int place = movieHeight / (plane == 0 ? 2 : 4);
    return int{fitted->data[plane][place * fitted->linesize[plane] + place]};
  };
  return {middle(0), middle(1), middle(2)};
}

TEST(FrameFitterTest, GreysStayNeutralAndKeepTheirLevel) {
  const auto expect = [](AVPixelFormat format, int sample, int neutral, AVColorSpace matrix,
                         AVColorRange range, double level) {
    const FramePtr source = Uniform(format, {sample, neutral, neutral}, matrix, range);
    for (const int movieHeight : {kSize, 640}) {
      const std::array<int, 3> fitted = FitOne(*source, movieHeight);
      EXPECT_NEAR(fitted[0], level, 0.52) << av_get_pix_fmt_name(format) << " of matrix " << matrix;
      EXPECT_EQ(fitted[1], 128);
      EXPECT_EQ(fitted[2], 128);
    }
  };
  for (const int level : {16, 17, 120, 180, 234, 235}) {
    for (const AVColorSpace matrix : {AVCOL_SPC_SMPTE170M, AVCOL_SPC_BT709, AVCOL_SPC_BT2020_NCL}) {
      expect(AV_PIX_FMT_YUV420P, level, 128, matrix, AVCOL_RANGE_MPEG, level);
      expect(AV_PIX_FMT_YUV420P, level, 128, matrix, AVCOL_RANGE_JPEG, 16 + level * 219.0 / 255);
      expect(AV_PIX_FMT_YUV422P10LE, level * 4, 512, matrix, AVCOL_RANGE_MPEG, level);
    }
    expect(AV_PIX_FMT_GRAY8, level, 0, AVCOL_SPC_UNSPECIFIED, AVCOL_RANGE_UNSPECIFIED,
           16 + level * 219.0 / 255);
    expect(AV_PIX_FMT_GRAY8, level, 0, AVCOL_SPC_UNSPECIFIED, AVCOL_RANGE_MPEG, level);
    expect(AV_PIX_FMT_RGB24, level, 0, AVCOL_SPC_RGB, AVCOL_RANGE_JPEG, 16 + level * 219.0 / 255);
  }
}

}  // namespace
}  // namespace vrx::engine
