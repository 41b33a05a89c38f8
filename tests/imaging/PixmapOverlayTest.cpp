#include "imaging/pixmap/XpPixmapOverlay.h"

#include <gtest/gtest.h>

#include <functional>

#include "imaging/pixmap/XpPixmapBlock.h"
#include "tests/imaging/RandomPixmap.h"

namespace {

using PixelRule = std::function<void(unsigned char* dest, const unsigned char* source)>;

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

struct Placement {
  std::int32_t destX, destY, destWidth, destHeight, sourceY, sourceWidth, sourceHeight;
};

Bytes OverlaidPlainly(const XpPixmap32& dest, const XpPixmap32& source, const Placement& p,
                      const PixelRule& rule) {
  Bytes result = BytesOf(dest);
  const auto visibleEnd = [](std::int64_t d, std::int64_t dn, std::int64_t sn, std::int64_t size) {
    return d + dn + std::min<std::int64_t>(0, size - sn) * dn / sn;
  };
  const std::int64_t stepX = (std::int64_t{p.sourceWidth} << 16) / p.destWidth;
  const std::int64_t stepY = (std::int64_t{p.sourceHeight} << 16) / p.destHeight;
  const bool scaled = p.destWidth != p.sourceWidth || p.destHeight != p.sourceHeight;
  for (std::int64_t y = 0; y < p.destHeight; ++y) {
    for (std::int64_t x = 0; x < p.destWidth; ++x) {
      const std::int64_t dx = p.destX + x, dy = p.destY + y;
      if (dx < 0 || dy < 0 || dx >= dest.width || dy >= dest.height) continue;
      if (scaled && (dx >= visibleEnd(p.destX, p.destWidth, p.sourceWidth, source.width) ||
                     dy >= visibleEnd(p.destY, p.destHeight, p.sourceHeight, source.height))) {
        continue;
      }
      const std::int64_t sx = scaled ? x * stepX >> 16 : x;
      const std::int64_t sy = scaled ? y * stepY >> 16 : y + p.sourceY;
      if (sx < 0 || sy < 0 || sx >= source.width || sy >= source.height) continue;
      rule(result.data() + (dy * dest.width + dx) * 4, source.data + (sy * source.width + sx) * 4);
    }
  }
  return result;
}

TEST(PixmapOverlay, ComposesLikeThePlainLoopWhereverThePictureLies) {
  std::mt19937 random(4);
  for (int round = 0; round < 2000; ++round) {
    const auto [dw, dh] = kOddSizes[random() % kOddSizes.size()];
    const auto [sw, sh] = kOddSizes[random() % kOddSizes.size()];
    XpPixmap32 dest, source;
    ASSERT_EQ(dest.Allocate(dw, dh), XpOk);
    ASSERT_EQ(source.Allocate(sw, sh), XpOk);
    FillRandom(dest, random);
    FillRandom(source, random);
    Placement p{Between(random, -dw - 2, dw + 2),
                Between(random, -dh - 2, dh + 2),
                Between(random, 1, 2 * dw + 3),
                Between(random, 1, 2 * dh + 3),
                0,
                Between(random, 1, 2 * sw + 3),
                Between(random, 1, 2 * sh + 3)};
    const int kind = static_cast<int>(random() % 5);
    if (kind == 0 || kind == 3) {
      p.sourceWidth = p.destWidth;
      p.sourceHeight = p.destHeight;
    }
    if (kind == 0) p.sourceY = Between(random, -sh - 2, sh + 2);
    const auto alpha =
        static_cast<std::uint8_t>(std::array<std::uint_fast32_t, 4>{0, 255, 128, random()}[random() % 4]);
    SCOPED_TRACE(testing::Message() << "round " << round << " kind " << kind << " alpha " << int{alpha}
                                    << " at " << p.destX << "," << p.destY << " size " << p.destWidth << "x"
                                    << p.destHeight << " from row " << p.sourceY << " " << p.sourceWidth
                                    << "x" << p.sourceHeight);
    if (kind == 0) {
      const Bytes expected = OverlaidPlainly(dest, source, p, ComposePlainly);
      OverlayPixmapBlock(dest, p.destX, p.destY, p.destWidth, p.destHeight, source, p.sourceY);
      ASSERT_TRUE(SamePicture(expected, dest));
    } else if (kind == 1) {
      // A caller who knows which rows hold something gets the same picture.
      XpRowRange drawn;
      if (random() % 2 == 0) {
        drawn.last = static_cast<std::int32_t>(random() % static_cast<unsigned>(source.height + 1));
        drawn.first = static_cast<std::int32_t>(random() % static_cast<unsigned>(drawn.last + 1));
        const std::size_t row = source.size / static_cast<std::size_t>(source.height);
        std::fill(source.data, source.data + row * static_cast<std::size_t>(drawn.first), 0);
        std::fill(source.data + row * static_cast<std::size_t>(drawn.last), source.data + source.size, 0);
      }
      const Bytes expected = OverlaidPlainly(dest, source, p, ComposePlainly);
      OverlayPixmap(dest, p.destX, p.destY, p.destWidth, p.destHeight, source, p.sourceWidth, p.sourceHeight,
                    drawn);
      ASSERT_TRUE(SamePicture(expected, dest));
    } else if (kind == 4) {
      const Bytes expected = OverlaidPlainly(dest, source, p, ComposeSmoothlyPlainly);
      OverlaySmoothPixmap(dest, p.destX, p.destY, p.destWidth, p.destHeight, source, p.sourceWidth,
                          p.sourceHeight);
      ASSERT_TRUE(SamePicture(expected, dest));
    } else {
      const Bytes expected = OverlaidPlainly(
          dest, source, p,
          [alpha](unsigned char* d, const unsigned char* s) { ComposeWithAlphaPlainly(d, s, alpha); });
      OverlayPixmapWithAlpha(dest, p.destX, p.destY, p.destWidth, p.destHeight, source, p.sourceWidth,
                             p.sourceHeight, alpha);
      ASSERT_TRUE(SamePicture(expected, dest));
    }
  }
}

/// Every pair of bytes, at the alphas where rounding can go off by one.
TEST(PixmapOverlay, EveryPairOfBytesGivesTheExactResult) {
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
    const Placement whole{0, 0, 256, 256, 0, 256, 256};
    const Bytes before = BytesOf(dest);
    const Bytes once = OverlaidPlainly(dest, source, whole, ComposePlainly);
    OverlayPixmap(dest, 0, 0, 256, 256, source, 256, 256);
    ASSERT_TRUE(SamePicture(once, dest)) << "alpha " << a;
    std::copy(before.begin(), before.end(), dest.data);
    const int constant = 255 - a / 3;
    const Bytes twice = OverlaidPlainly(
        dest, source, whole,
        [constant](unsigned char* d, const unsigned char* s) { ComposeWithAlphaPlainly(d, s, constant); });
    OverlayPixmapWithAlpha(dest, 0, 0, 256, 256, source, 256, 256, static_cast<std::uint8_t>(constant));
    ASSERT_TRUE(SamePicture(twice, dest)) << "alpha " << a << " constant " << constant;
  }
}

TEST(PixmapOverlay, EmptyPicturesAndExtremePlacesDrawNothing) {
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
