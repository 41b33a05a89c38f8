#include "imaging/pixmap/XpPixmapOverlay.h"

#include <gtest/gtest.h>

#include "imaging/pixmap/XpPixmapBlock.h"
#include "tests/imaging/RandomPixmap.h"

namespace {

void ComposePlainly(unsigned char* d, const unsigned char* s) {
  const int a = s[3];
  if (a == 0) return;
  if (a == 255) {
    std::copy_n(s, 4, d);
    return;
  }
  for (int c = 0; c < 3; ++c) d[c] = static_cast<unsigned char>(d[c] + (((s[c] - d[c]) * a) >> 8));
  d[3] = static_cast<unsigned char>(d[3] + (((255 - d[3]) * a) >> 8));
}

/// The equations of straight alpha.
void ComposeSmoothlyPlainly(unsigned char* d, const unsigned char* s) {
  const double over = s[3] / 255.0, under = d[3] / 255.0 * (1 - over), whole = over + under;
  constexpr double kHalf = 0.5 + 1e-9;  // halves go up
  if (over == 0) return;
  for (int c = 0; c < 3; ++c) d[c] = static_cast<unsigned char>((s[c] * over + d[c] * under) / whole + kHalf);
  d[3] = static_cast<unsigned char>(whole * 255 + kHalf);
}

void ComposeWithAlphaPlainly(unsigned char* d, const unsigned char* s, int alpha) {
  const int w = s[3] * alpha;
  if (d[3] == 0) {
    std::copy_n(s, 3, d);
    d[3] = static_cast<unsigned char>(w >> 8);
    return;
  }
  for (int c = 0; c < 3; ++c) d[c] = static_cast<unsigned char>(d[c] + (((s[c] - d[c]) * w) >> 16));
  d[3] = static_cast<unsigned char>(d[3] + (((255 - d[3]) * w) >> 16));
}

TEST(PixmapOverlayTest, ComposesLikeThePlainLoopWhereverThePictureLies) {
  std::mt19937 random(4);
  for (int round = 0; round < 2000; ++round) {
    const auto [dw, dh] = kOddSizes[random() % kOddSizes.size()];
    const auto [sw, sh] = kOddSizes[random() % kOddSizes.size()];
    XpPixmap32 dest, source;
    ASSERT_EQ(dest.Allocate(dw, dh), XpOk);
    ASSERT_EQ(source.Allocate(sw, sh), XpOk);
    FillRandom(dest, random);
    FillRandom(source, random);
    const int kind = static_cast<int>(random() % 6);
    Block b = RandomBlock(random, dest, source);
    b.sourceX = 0;
    if (kind != 0 && kind != 5) b.sourceY = 0;
    if (kind == 0 || kind == 3 || kind == 5) {
      b.sourceWidth = b.destWidth;
      b.sourceHeight = b.destHeight;
    }
    const auto alpha =
        static_cast<std::uint8_t>(std::array<std::uint_fast32_t, 4>{0, 255, 128, random()}[random() % 4]);
    // A caller who knows which rows hold something gets the same picture.
    XpRowRange drawn;
    if (kind == 1 && random() % 2 == 0) {
      drawn.last = Between(random, 0, source.height);
      drawn.first = Between(random, 0, drawn.last);
      std::fill(source.data, source.GetPlane(0)->Row(0) + drawn.first * source.width * 4, 0);
      std::fill(source.data + drawn.last * source.width * 4, source.data + source.size, 0);
    }
    const Bytes expected = ComposedPlainly(dest, source, b, [&](unsigned char* d, const unsigned char* s) {
      if (kind < 2) return ComposePlainly(d, s);
      kind >= 4 ? ComposeSmoothlyPlainly(d, s) : ComposeWithAlphaPlainly(d, s, alpha);
    });
    if (kind == 0) {
      OverlayPixmapBlock(dest, b.destX, b.destY, b.destWidth, b.destHeight, source, b.sourceY);
    } else if (kind == 5) {
      OverlaySmoothPixmapBlock(dest, b.destX, b.destY, b.destWidth, b.destHeight, source, b.sourceY);
    } else if (kind == 1) {
      OverlayPixmap(dest, b.destX, b.destY, b.destWidth, b.destHeight, source, b.sourceWidth, b.sourceHeight,
                    drawn);
    } else if (kind == 4) {
      OverlaySmoothPixmap(dest, b.destX, b.destY, b.destWidth, b.destHeight, source, b.sourceWidth,
                          b.sourceHeight);
    } else {
      OverlayPixmapWithAlpha(dest, b.destX, b.destY, b.destWidth, b.destHeight, source, b.sourceWidth,
                             b.sourceHeight, alpha);
    }
    ASSERT_TRUE(SamePicture(expected, dest))
        << "round " << round << " kind " << kind << " alpha " << int{alpha} << " at " << b;
  }
}

/// Every pair of bytes, at the alphas where rounding can go off by one.
TEST(PixmapOverlayTest, EveryPairOfBytesGivesTheExactResult) {
  XpPixmap32 dest, source;
  ASSERT_EQ(dest.Allocate(256, 256), XpOk);
  ASSERT_EQ(source.Allocate(256, 256), XpOk);
  for (const int a : {0, 1, 2, 85, 127, 128, 129, 253, 254, 255}) {
    for (int i = 0; i < 256 * 256; ++i) {
      const auto d = static_cast<unsigned char>(i), s = static_cast<unsigned char>(i >> 8);
      const unsigned char to[4] = {d, d, static_cast<unsigned char>(255 - d), d};
      const unsigned char from[4] = {s, static_cast<unsigned char>(255 - s), s,
                                     static_cast<unsigned char>(a)};
      std::copy_n(to, 4, dest.data + i * 4);
      std::copy_n(from, 4, source.data + i * 4);
    }
    const Block whole{0, 0, 256, 256, 0, 0, 256, 256};
    const Bytes before = BytesOf(dest);
    const Bytes once = ComposedPlainly(dest, source, whole, ComposePlainly);
    OverlayPixmap(dest, 0, 0, 256, 256, source, 256, 256);
    ASSERT_TRUE(SamePicture(once, dest)) << "alpha " << a;
    std::copy(before.begin(), before.end(), dest.data);
    const int constant = 255 - a / 3;
    const Bytes twice = ComposedPlainly(
        dest, source, whole,
        [constant](unsigned char* d, const unsigned char* s) { ComposeWithAlphaPlainly(d, s, constant); });
    OverlayPixmapWithAlpha(dest, 0, 0, 256, 256, source, 256, 256, static_cast<std::uint8_t>(constant));
    ASSERT_TRUE(SamePicture(twice, dest)) << "alpha " << a << " constant " << constant;
  }
}

TEST(PixmapOverlayTest, EmptyPicturesAndExtremePlacesDrawNothing) {
  constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
  constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();
  XpPixmap32 dest, source, empty;
  ASSERT_EQ(dest.Allocate(5, 5), XpOk);
  ASSERT_EQ(source.Allocate(3, 3), XpOk);
  FillPixmap(source, 1, 2, 3, 255);
  const Bytes clear = BytesOf(dest);
  OverlayPixmap(dest, 0, 0, 5, 5, empty, 5, 5);
  OverlayPixmap(empty, 0, 0, 5, 5, source, 3, 3);
  OverlayPixmap(dest, 0, 0, 0, 5, source, 3, 3);
  OverlayPixmap(dest, 0, 0, 5, -5, source, 3, 3);
  for (std::int32_t at : {kMin, kMax}) {
    OverlayPixmap(dest, at, 0, 5, 5, source, 3, 3);
    OverlayPixmapBlock(dest, 0, at, 3, 3, source, 0);
    OverlayPixmapBlock(dest, 0, 0, 3, 3, source, at);
    OverlayPixmapWithAlpha(dest, at, at, kMax, kMax, source, 0, kMax, 128);
  }
  EXPECT_TRUE(SamePicture(clear, dest));
  OverlayPixmap(dest, kMin, kMin, kMax, kMax, source, kMax, kMax);
  OverlayPixmap(dest, 0, 0, kMax, kMax, source, 1, kMax);
}

}  // namespace
