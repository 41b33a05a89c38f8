#include "imaging/pixmap/XpPixmapBlock.h"

#include <gtest/gtest.h>

#include "imaging/pixmap/XpPixmapRotate.h"
#include "tests/imaging/RandomPixmap.h"

namespace {

using Pixel = std::array<unsigned char, 3>;

Pixel PixelAt(const XpPixmapBase& pixmap, std::int64_t x, std::int64_t y) {
  const unsigned char* at = pixmap.GetPlane(0)->Row(static_cast<std::int32_t>(y)) + x * 3;
  return {at[0], at[1], at[2]};
}

bool IsInside(const XpPixmapBase& pixmap, std::int64_t x, std::int64_t y) {
  return x >= 0 && y >= 0 && x < pixmap.width && y < pixmap.height;
}

void Put(Bytes& bytes, const XpPixmapBase& shape, std::int64_t x, std::int64_t y, const Pixel& pixel) {
  std::copy(pixel.begin(), pixel.end(), bytes.begin() + y * shape.GetPlane(0)->rowBytes + x * 3);
}

struct Block {
  std::int32_t destX, destY, destWidth, destHeight, sourceX, sourceY, sourceWidth, sourceHeight;
};

/// Pixel by pixel, as the rule is told: which pixels are written at all, and from where.
Bytes StretchedPlainly(const XpPixmapBase& dest, const XpPixmapBase& source, const Block& b) {
  Bytes result = BytesOf(dest);
  const auto lastOf = [](std::int64_t d, std::int64_t dn, std::int64_t s, std::int64_t sn,
                         std::int64_t size) {
    const std::int64_t lost = std::min<std::int64_t>(0, size - (s + sn));
    return d + dn + lost * dn / sn;
  };
  const auto firstOf = [](std::int64_t d, std::int64_t dn, std::int64_t s, std::int64_t sn) {
    return d + std::max<std::int64_t>(0, -s) * dn / sn;
  };
  const std::int64_t stepX = (std::int64_t{b.sourceWidth} << 16) / b.destWidth;
  const std::int64_t stepY = (std::int64_t{b.sourceHeight} << 16) / b.destHeight;
  const bool sourceSeen = b.sourceX < source.width && b.sourceX + b.sourceWidth > 0 &&
                          b.sourceY < source.height && b.sourceY + b.sourceHeight > 0;
  for (std::int64_t y = 0; y < dest.height && sourceSeen; ++y) {
    for (std::int64_t x = 0; x < dest.width; ++x) {
      if (x < b.destX || x >= b.destX + b.destWidth || y < b.destY || y >= b.destY + b.destHeight) continue;
      if (x < firstOf(b.destX, b.destWidth, b.sourceX, b.sourceWidth) ||
          x >= lastOf(b.destX, b.destWidth, b.sourceX, b.sourceWidth, source.width) ||
          y < firstOf(b.destY, b.destHeight, b.sourceY, b.sourceHeight) ||
          y >= lastOf(b.destY, b.destHeight, b.sourceY, b.sourceHeight, source.height)) {
        continue;
      }
      const std::int64_t sx = std::max<std::int64_t>(0, b.sourceX + (((x - b.destX) * stepX) >> 16));
      const std::int64_t sy = std::max<std::int64_t>(0, b.sourceY + (((y - b.destY) * stepY) >> 16));
      Put(result, dest, x, y, PixelAt(source, sx, sy));
    }
  }
  return result;
}

Bytes CopiedPlainly(const XpPixmapBase& dest, const XpPixmapBase& source, const Block& b) {
  Bytes result = BytesOf(dest);
  for (std::int64_t y = 0; y < b.destHeight; ++y) {
    for (std::int64_t x = 0; x < b.destWidth; ++x) {
      if (!IsInside(dest, b.destX + x, b.destY + y) || !IsInside(source, b.sourceX + x, b.sourceY + y))
        continue;
      Put(result, dest, b.destX + x, b.destY + y, PixelAt(source, b.sourceX + x, b.sourceY + y));
    }
  }
  return result;
}

TEST(PixmapBlock, CopiesAndStretchesLikeThePlainLoopWhereverTheBlockLies) {
  std::mt19937 random(2);
  for (int round = 0; round < 1500; ++round) {
    const auto [dw, dh] = kOddSizes[random() % kOddSizes.size()];
    const auto [sw, sh] = kOddSizes[random() % kOddSizes.size()];
    XpPixmap24 dest;
    XpPixmap24NoHandle source;
    ASSERT_EQ(dest.Allocate(dw, dh), XpOk);
    ASSERT_EQ(source.Allocate(sw, sh), XpOk);
    FillRandom(dest, random);
    FillRandom(source, random);
    Block b{Between(random, -dw - 2, dw + 2), Between(random, -dh - 2, dh + 2),
            Between(random, 1, 2 * dw + 3),   Between(random, 1, 2 * dh + 3),
            Between(random, -sw - 2, sw + 2), Between(random, -sh - 2, sh + 2),
            Between(random, 1, 2 * sw + 3),   Between(random, 1, 2 * sh + 3)};
    const bool scaled = random() % 2 == 0;
    if (!scaled) {
      b.sourceWidth = b.destWidth;
      b.sourceHeight = b.destHeight;
    }
    SCOPED_TRACE(testing::Message() << "round " << round << " dest " << b.destX << "," << b.destY << " "
                                    << b.destWidth << "x" << b.destHeight << " source " << b.sourceX << ","
                                    << b.sourceY << " " << b.sourceWidth << "x" << b.sourceHeight);
    const bool equalSizes = b.sourceWidth == b.destWidth && b.sourceHeight == b.destHeight;
    const Bytes expected = equalSizes ? CopiedPlainly(dest, source, b) : StretchedPlainly(dest, source, b);
    StretchPixmapBlock(dest, b.destX, b.destY, b.destWidth, b.destHeight, source, b.sourceX, b.sourceY,
                       b.sourceWidth, b.sourceHeight);
    ASSERT_TRUE(SamePicture(expected, dest));
  }
}

TEST(PixmapBlock, ExtremeArgumentsWriteNothingOutside) {
  constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
  constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();
  XpPixmap24 dest, source;
  ASSERT_EQ(dest.Allocate(5, 5), XpOk);
  ASSERT_EQ(source.Allocate(7, 3), XpOk);
  FillPixmap(source, 9, 9, 9);
  const std::int32_t values[] = {kMin, -1, 0, 1, kMax};
  for (std::int32_t at : values) {
    for (std::int32_t from : values) {
      for (std::int32_t size : values) {
        for (std::int32_t other : values) {
          StretchPixmapBlock(dest, at, at, size, size, source, from, from, other, other);
          CopyPixmapBlock(dest, at, from, source, from, at, size, other);
        }
      }
    }
  }
  FillPixmap(dest, 0, 0, 0);
  const Bytes black = BytesOf(dest);
  StretchPixmapBlock(dest, 0, 0, 0, 4, source, 0, 0, 4, 4);
  StretchPixmapBlock(dest, 0, 0, 4, 4, source, 0, 0, -4, 4);
  XpPixmap24 empty;
  CopyPixmapBlock(dest, empty);
  CopyPixmapBlock(empty, dest);
  XpPixmap32 overlay;
  ASSERT_EQ(overlay.Allocate(5, 5), XpOk);
  CopyPixmapBlock(dest, overlay);
  EXPECT_TRUE(SamePicture(black, dest));
  CopyPixmapBlock(dest, source);
  EXPECT_EQ(PixelAt(dest, 4, 2), (Pixel{9, 9, 9}));
  EXPECT_EQ(PixelAt(dest, 4, 3), (Pixel{0, 0, 0}));
}

TEST(PixmapBlock, FillSetsEveryPixelInMemoryOrderAndNoPadding) {
  for (const auto& [width, height] : kOddSizes) {
    XpPixmap32 with;
    XpPixmap24 without;
    ASSERT_EQ(with.Allocate(width, height), XpOk);
    ASSERT_EQ(without.Allocate(width, height), XpOk);
    FillPixmap(with, 3, 2, 1, 4);
    FillPixmap(without, 3, 2, 1);
    for (std::int32_t y = 0; y < height; ++y) {
      for (std::int32_t i = 0; i < width * 4; ++i) ASSERT_EQ(with.GetPlane(0)->Row(y)[i], i % 4 + 1);
      for (std::int32_t i = 0; i < without.GetPlane(0)->rowBytes; ++i) {
        ASSERT_EQ(without.GetPlane(0)->Row(y)[i], i < width * 3 ? i % 3 + 1 : 0);
      }
    }
  }
  const auto solid = MakeSolidPixmap(0, 0, 0, 178);
  EXPECT_EQ(BytesOf(*solid), (Bytes{0, 0, 0, 178}));
}

TEST(PixmapBlock, TurningAPictureMovesEachPixelToItsPlace) {
  std::mt19937 random(3);
  for (const auto& [width, height] : kOddSizes) {
    SCOPED_TRACE(testing::Message() << width << "x" << height);
    XpPixmap24 source;
    ASSERT_EQ(source.Allocate(width, height), XpOk);
    FillRandom(source, random);
    const auto cw = RotatePixmap90CW(source);
    const auto half = RotatePixmap180(source);
    const auto ccw = RotatePixmap90CCW(source);
    const auto mirror = MirrorPixmap(source);
    ASSERT_EQ(cw->width, height);
    ASSERT_EQ(ccw->height, width);
    for (std::int32_t y = 0; y < height; ++y) {
      for (std::int32_t x = 0; x < width; ++x) {
        const Pixel pixel = PixelAt(source, x, y);
        ASSERT_EQ(PixelAt(*cw, height - 1 - y, x), pixel);
        ASSERT_EQ(PixelAt(*half, width - 1 - x, height - 1 - y), pixel);
        ASSERT_EQ(PixelAt(*ccw, y, width - 1 - x), pixel);
        ASSERT_EQ(PixelAt(*mirror, width - 1 - x, y), pixel);
      }
    }
  }
  EXPECT_EQ(RotatePixmap180(XpPixmap24()), nullptr);
  XpPixmap32 overlay;
  ASSERT_EQ(overlay.Allocate(2, 2), XpOk);
  EXPECT_EQ(MirrorPixmap(overlay), nullptr);
}

}  // namespace
