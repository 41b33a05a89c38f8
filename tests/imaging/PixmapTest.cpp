#include <gtest/gtest.h>

#include <limits>

#include "imaging/pixmap/XpPixmapBlock.h"
#include "tests/imaging/RandomPixmap.h"
#include "vrx/XpResult.h"

namespace {

TEST(Pixmap, RowsArePaddedToFourBytesAndRunFromTheTop) {
  struct Case {
    std::int32_t width, height, rowBytes24;
  };
  for (const Case& c :
       {Case{1, 1, 4}, Case{3, 4, 12}, Case{4, 2, 12}, Case{5, 2, 16}, Case{1920, 1080, 5760}}) {
    SCOPED_TRACE(testing::Message() << c.width << "x" << c.height);
    XpPixmap24NoHandle plain;
    XpPixmap24 bitmap;
    XpPixmap32 overlay;
    for (XpPixmapBase* pixmap : {static_cast<XpPixmapBase*>(&plain), static_cast<XpPixmapBase*>(&bitmap),
                                 static_cast<XpPixmapBase*>(&overlay)}) {
      ASSERT_EQ(pixmap->Allocate(c.width, c.height), XpOk);
      const std::int32_t rowBytes = pixmap == &overlay ? c.width * 4 : c.rowBytes24;
      EXPECT_EQ(pixmap->GetPlane(0)->rowBytes, rowBytes);
      EXPECT_EQ(pixmap->size, static_cast<std::uint32_t>(rowBytes * c.height));
      EXPECT_EQ(pixmap->GetPlane(0)->data, pixmap->data);
      EXPECT_EQ(pixmap->GetBitmapInfo()->biSize, 44u);
      EXPECT_EQ(pixmap->GetBitmapInfo()->biHeight, -c.height);
      EXPECT_EQ(pixmap->GetBitmapInfo()->biSizeImage, pixmap->size);
      EXPECT_TRUE(std::all_of(pixmap->data, pixmap->data + pixmap->size, [](auto b) { return b == 0; }));
      for (int i = 1; i < XpPixmapBase::kPlanes; ++i) {
        EXPECT_EQ(pixmap->GetPlane(i)->width, 0);
        EXPECT_EQ(pixmap->GetPlane(i)->height, 0);
        EXPECT_EQ(pixmap->GetPlaneChannelMask(i), 0u);
        EXPECT_EQ(pixmap->GetPlane(i)->data, pixmap->data + pixmap->size);
      }
    }
    EXPECT_EQ(plain.GetBitmapHandle(), nullptr);
    ASSERT_NE(overlay.GetBitmapHandle(), nullptr);
    EXPECT_EQ(overlay.GetBitmapHandle()->bits, overlay.data);
    EXPECT_EQ(overlay.GetBitmapHandle()->rowBytes, c.width * 4);
    EXPECT_EQ(bitmap.GetBitmapHandle()->format, XpBitmapFormat::Bgr24);
  }
}

TEST(Pixmap, SizesThatCannotBeHadLeaveItEmpty) {
  constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
  constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();
  for (const auto& [width, height] :
       std::initializer_list<std::pair<std::int32_t, std::int32_t>>{{0, 5},
                                                                    {5, 0},
                                                                    {-1, 5},
                                                                    {kMin, 1},
                                                                    {1, kMin},
                                                                    {kMax, 1},
                                                                    {kMax, kMax},
                                                                    {32768, 16384},
                                                                    {65536, 65536}}) {
    SCOPED_TRACE(testing::Message() << width << "x" << height);
    XpPixmap32 pixmap;
    ASSERT_EQ(pixmap.Allocate(4, 4), XpOk);
    EXPECT_EQ(pixmap.Allocate(width, height), XpErrOutOfMemory);
    EXPECT_EQ(pixmap.data, nullptr);
    EXPECT_EQ(pixmap.size, 0u);
    EXPECT_EQ(pixmap.width, 0);
    EXPECT_EQ(pixmap.GetPlane(0), nullptr);
    EXPECT_EQ(pixmap.GetBitmapHandle(), nullptr);
    EXPECT_NE(pixmap.GetAllocator().GetLastError(), 0u);
    EXPECT_EQ(pixmap.Clone()->data, nullptr);
  }
}

TEST(Pixmap, CanBeAllocatedAnewAndReleasedTwice) {
  XpPixmap24 pixmap;
  pixmap.Release();
  ASSERT_EQ(pixmap.Allocate(4, -3), XpOk);
  EXPECT_EQ(pixmap.height, 3);
  EXPECT_EQ(pixmap.GetBitmapInfo()->biHeight, -3);
  ASSERT_EQ(pixmap.Allocate(9, 2), XpOk);
  EXPECT_EQ(pixmap.GetPlane(0)->width, 9);
  pixmap.Release();
  pixmap.Release();
  EXPECT_EQ(pixmap.GetPlane(0), nullptr);
  EXPECT_EQ(pixmap.GetPlaneBytesPerPixel(0), 0u);
}

TEST(Pixmap, ACloneHasTheSameBytesAndItsOwnMemory) {
  std::mt19937 random(1);
  XpPixmap24NoHandle pixmap;
  ASSERT_EQ(pixmap.Allocate(5, 3), XpOk);
  FillRandom(pixmap, random);
  const Bytes before = BytesOf(pixmap);
  const auto clone = pixmap.Clone();
  ASSERT_NE(dynamic_cast<XpPixmap24NoHandle*>(clone.get()), nullptr);
  FillPixmap(pixmap, 1, 2, 3);
  EXPECT_TRUE(SamePicture(before, *clone));
}

}  // namespace
