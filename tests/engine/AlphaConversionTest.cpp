// Overlays keep their colours and their alpha as ten-bit pictures, and what is hidden has no edges of its
// own.
#include "engine/AlphaConversion.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "engine/FramePool.h"
#include "tests/engine/PictureCard.h"

namespace vrx::engine {
namespace {

constexpr AVPixelFormat kFormat = AV_PIX_FMT_YUVA444P10;

int Sample(const AVFrame& frame, int plane, int x, int y) {
  return reinterpret_cast<const std::uint16_t*>(frame.data[plane] + y * frame.linesize[plane])[x];
}

TEST(AlphaConversionTest, ColoursAndAlphaAreExactInBothMatrices) {
  for (const auto& [height, encoding] : {std::pair{576, kMovie601}, {578, kMovie709}}) {
    constexpr int kWidth = 34;
    std::vector<std::uint32_t> drawing;
    for (int i = 0; i < kWidth * height; ++i) drawing.push_back(static_cast<std::uint32_t>(i) * 2654435761u);
    for (std::uint32_t i = 0; i < 4; ++i) drawing[i] = 0xFF000000 + 0x555555 * i;  // greys
    FramePool pool(kFormat);
    const FramePtr frame = pool.Get(kWidth, height);
    AlphaConversion(kWidth, height).Convert(drawing.data(), *frame);
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < kWidth; ++x) {
        const std::uint32_t pixel = drawing[static_cast<std::size_t>(y * kWidth + x)];
        const auto colour = [&](int shift) { return static_cast<double>(pixel >> shift & 0xFF) / 255; };
        const int alpha = static_cast<int>(pixel >> 24);
        ASSERT_EQ(Sample(*frame, 3, x, y) >> 2, alpha);
        ASSERT_EQ(Sample(*frame, 3, x, y) == 1023, alpha == 255);
        if (alpha == 0) continue;
        const Triple exact = encoding.SamplesOf({colour(16), colour(8), colour(0)});
        for (int plane = 0; plane < 3; ++plane) {
          ASSERT_NEAR(Sample(*frame, plane, x, y), exact[static_cast<std::size_t>(plane)] * 4, 0.55);
        }
      }
    }
    for (int x = 0; x < 4; ++x) EXPECT_EQ(Sample(*frame, 1, x, 0), 512);
  }
}

TEST(AlphaConversionTest, HiddenPixelsContinueTheNearestColour) {
  constexpr int kWidth = 80, kHeight = 48;
  constexpr std::uint32_t kRed = 0xFFFF0000, kGreen = 0xFF00FF00, kFaintBlue = 0x080000FF;
  std::vector<std::uint32_t> drawing(kWidth * kHeight, 0x00FFFFFF);  // white, but transparent
  const auto at = [&](int x, int y) -> std::uint32_t& {
    return drawing[static_cast<std::size_t>(y * kWidth + x)];
  };
  for (int y = 20; y < 28; ++y) {
    for (int x = 20; x < 24; ++x) at(x, y) = x < 23 ? kRed : kFaintBlue;
    at(30, y) = kGreen;
  }
  FramePool pool(kFormat);
  const FramePtr frame = pool.Get(kWidth, kHeight);
  AlphaConversion conversion(kWidth, kHeight);
  // A picture of before leaves nothing behind.
  conversion.Convert(std::vector<std::uint32_t>(kWidth * kHeight, kGreen).data(), *frame);
  conversion.Convert(drawing.data(), *frame);
  const auto name = [&](int x, int y) {
    for (const auto& [pixel, found] :
         {std::pair{kRed, "red"}, {kGreen, "green"}, {0xFF0000FF, "blue"}, {0xFF000000u, "black"}}) {
      const auto colour = [&, p = pixel](int shift) { return static_cast<double>(p >> shift & 0xFF) / 255; };
      const Triple exact = kMovie601.SamplesOf({colour(16), colour(8), colour(0)});
      bool isSame = true;
      for (int plane = 0; plane < 3; ++plane) {
        isSame =
            isSame && std::abs(Sample(*frame, plane, x, y) - exact[static_cast<std::size_t>(plane)] * 4) < 1;
      }
      if (isSame) return found;
    }
    return "another";
  };
  EXPECT_STREQ(name(19, 24), "red");
  EXPECT_STREQ(name(5, 24), "red");
  EXPECT_STREQ(name(4, 24), "black");  // 16 away
  EXPECT_STREQ(name(21, 5), "red");
  EXPECT_STREQ(name(21, 42), "red");
  EXPECT_STREQ(name(21, 44), "black");
  EXPECT_STREQ(name(14, 14), "red");
  EXPECT_STREQ(name(23, 24), "blue");  // seen, if only a little
  EXPECT_STREQ(name(24, 24), "red");   // but too faint to be continued
  EXPECT_STREQ(name(28, 24), "green");
  EXPECT_STREQ(name(45, 24), "green");
  EXPECT_STREQ(name(46, 24), "black");
  EXPECT_EQ(Sample(*frame, 3, 5, 24), 0);
  // Rows do not continue in those beside them.
  for (const int edge : {0, kWidth - 1}) {
    std::fill(drawing.begin(), drawing.end(), 0);
    for (int y = 0; y < kHeight; ++y) at(edge, y) = kGreen;
    conversion.Convert(drawing.data(), *frame);
    EXPECT_STREQ(name(edge, 24), "green");
    EXPECT_STREQ(name(kWidth - 1 - edge, 24), "black");
  }
}

}  // namespace
}  // namespace vrx::engine
