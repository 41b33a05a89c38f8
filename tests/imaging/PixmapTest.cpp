#include <gtest/gtest.h>

#include <limits>

#include "imaging/pixmap/XpPixmapBlock.h"
#include "imaging/pixmap/XpPixmapRotate.h"
#include "tests/imaging/RandomPixmap.h"
#include "vrx/XpResult.h"

namespace {

TEST(PixmapTest, RowsArePaddedToFourBytesAndClearAtFirst) {
  for (const std::int32_t width : {1, 3, 4, 5, 1920}) {
    XpPixmap24NoHandle plain;
    XpPixmap24 bitmap;
    XpPixmap32 overlay;
    for (XpPixmapBase* pixmap : std::initializer_list<XpPixmapBase*>{&plain, &bitmap, &overlay}) {
      SCOPED_TRACE(testing::Message() << width << " of " << pixmap->GetPlaneBytesPerPixel(0));
      ASSERT_EQ(pixmap->Allocate(width, 7), XpOk);
      const std::int32_t rowBytes = pixmap == &overlay ? width * 4 : (width * 3 + 3) / 4 * 4;
      EXPECT_EQ(pixmap->GetPlane(0)->rowBytes, rowBytes);
      EXPECT_EQ(pixmap->size, static_cast<std::uint32_t>(rowBytes * 7));
      EXPECT_EQ(pixmap->GetBitmapInfo()->biHeight, -7);
      EXPECT_TRUE(std::all_of(pixmap->data, pixmap->data + pixmap->size, [](auto b) { return b == 0; }));
      for (int i = 1; i < XpPixmapBase::kPlanes; ++i) EXPECT_EQ(pixmap->GetPlane(i)->width, 0);
      if (pixmap == &plain) continue;
      ASSERT_NE(pixmap->GetBitmapHandle(), nullptr);
      EXPECT_EQ(pixmap->GetBitmapHandle()->bits, pixmap->data);
      EXPECT_EQ(pixmap->GetBitmapHandle()->rowBytes, rowBytes);
    }
    EXPECT_EQ(plain.GetBitmapHandle(), nullptr);
  }
}

TEST(PixmapTest, ImpossibleSizesLeaveItEmpty) {
  constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
  constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();
  for (const auto& [width, height] :
       {std::pair{0, 5}, {5, 0}, {-1, 5}, {kMin, 1}, {1, kMin}, {kMax, kMax}, {32768, 16384}}) {
    SCOPED_TRACE(testing::Message() << width << "x" << height);
    XpPixmap32 pixmap;
    ASSERT_EQ(pixmap.Allocate(4, 4), XpOk);
    EXPECT_EQ(pixmap.Allocate(width, height), XpErrOutOfMemory);
    EXPECT_EQ(pixmap.data, nullptr);
    EXPECT_EQ(pixmap.GetPlane(0), nullptr);
    EXPECT_EQ(pixmap.GetBitmapHandle(), nullptr);
    EXPECT_EQ(pixmap.Clone()->data, nullptr);
  }
}

TEST(PixmapTest, CanBeAllocatedAgainClonedAndReleasedTwice) {
  std::mt19937 random(1);
  XpPixmap24NoHandle pixmap;
  pixmap.Release();
  ASSERT_EQ(pixmap.Allocate(4, -3), XpOk);
  EXPECT_EQ(pixmap.height, 3);
  ASSERT_EQ(pixmap.Allocate(9, 2), XpOk);
  EXPECT_EQ(pixmap.GetPlane(0)->width, 9);
  FillRandom(pixmap, random);
  const Bytes before = BytesOf(pixmap);
  const auto clone = pixmap.Clone();
  ASSERT_NE(dynamic_cast<XpPixmap24NoHandle*>(clone.get()), nullptr);
  pixmap.Release();
  pixmap.Release();
  EXPECT_EQ(pixmap.GetPlane(0), nullptr);
  EXPECT_TRUE(SamePicture(before, *clone));
}

TEST(PixmapTest, SwapExchangesPixelsPlanesAndHandles) {
  std::mt19937 random(1);
  XpPixmap32 wide, tall, empty;
  ASSERT_EQ(wide.Allocate(9, 2), XpOk);
  ASSERT_EQ(tall.Allocate(3, 7), XpOk);
  FillRandom(wide, random);
  FillRandom(tall, random);
  const Bytes wideBytes = BytesOf(wide), tallBytes = BytesOf(tall);
  const unsigned char* wideData = wide.data;
  wide.Swap(tall);
  EXPECT_TRUE(SamePicture(tallBytes, wide));
  EXPECT_TRUE(SamePicture(wideBytes, tall));
  wide.Swap(empty);
  EXPECT_EQ(wide.data, nullptr);
  EXPECT_EQ(wide.GetPlane(0), nullptr);
  EXPECT_EQ(wide.GetBitmapHandle(), nullptr);
  EXPECT_TRUE(SamePicture(tallBytes, empty));
  EXPECT_EQ(tall.data, wideData);  // nothing is copied
  for (const XpPixmap32* pixmap : {&tall, &empty}) {
    ASSERT_NE(pixmap->GetBitmapHandle(), nullptr);
    EXPECT_EQ(pixmap->GetBitmapHandle()->bits, pixmap->data);
    EXPECT_EQ(pixmap->GetBitmapHandle()->width, pixmap->width);
    EXPECT_EQ(pixmap->GetBitmapInfo()->biWidth, pixmap->width);
  }
  // A handle must not lead to the record of the other pixmap, which may be gone.
  const XpBitmapHandle before = tall.GetBitmapHandle();
  empty.Release();
  EXPECT_EQ(tall.GetBitmapHandle(), before);
  EXPECT_EQ(before->height, 2);
}

TEST(PixmapBlockTest, CopiesAndStretchesLikeThePlainLoopWhereverTheBlockLies) {
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

TEST(PixmapBlockTest, ExtremeArgumentsWriteNothingOutside) {
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
