#include <gtest/gtest.h>

#include <limits>

#include "tests/imaging/RandomPixmap.h"
#include "vrx/XpResult.h"

namespace {

TEST(Pixmap, RowsArePaddedToFourBytesAndBeginClear) {
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

TEST(Pixmap, SizesThatCannotBeHadLeaveItEmpty) {
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

TEST(Pixmap, CanBeAllocatedAnewClonedAndReleasedTwice) {
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

}  // namespace
