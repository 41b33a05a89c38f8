#include "imaging/pixmap/XpPixmapBlock.h"

#include <gtest/gtest.h>

#include "imaging/pixmap/XpPixmapRotate.h"
#include "tests/imaging/RandomPixmap.h"

namespace {

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
    Block b = RandomBlock(random, dest, source);
    if (random() % 2 != 0) {
      b.sourceWidth = b.destWidth;
      b.sourceHeight = b.destHeight;
    }
    const Bytes expected = ComposedPlainly(
        dest, source, b, [](unsigned char* to, const unsigned char* from) { std::copy_n(from, 3, to); });
    StretchPixmapBlock(dest, b.destX, b.destY, b.destWidth, b.destHeight, source, b.sourceX, b.sourceY,
                       b.sourceWidth, b.sourceHeight);
    ASSERT_TRUE(SamePicture(expected, dest)) << "round " << round << " " << b;
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
  EXPECT_EQ(dest.GetPlane(0)->Row(2)[4 * 3], 9);
  EXPECT_EQ(dest.GetPlane(0)->Row(3)[4 * 3], 0);
  EXPECT_EQ(BytesOf(*MakeSolidPixmap(0, 1, 2, 178)), (Bytes{2, 1, 0, 178}));
  EXPECT_EQ(RotatePixmap180(empty), nullptr);
  EXPECT_EQ(MirrorPixmap(overlay), nullptr);
}

}  // namespace
