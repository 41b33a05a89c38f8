// Scaled pictures keep their colours up to their edges, whatever lies beside them unseen.
#include <gtest/gtest.h>

#include "drawing/PictureScaler.h"
#include "imaging/pixmap/XpPixmapBlock.h"
#include "tests/drawing/Sheet.h"

namespace vrx::drawing {
namespace {

TEST(PictureScalerTest, EdgesKeepTheirColourAndClearPixelsHaveNone) {
  // A white square with green around it that cannot be seen.
  XpPixmap32 picture;
  ASSERT_EQ(picture.Allocate(40, 40), XpOk);
  FillPixmap(picture, 0, 255, 0, 0);
  for (std::int32_t y = 10; y < 30; ++y) std::memset(picture.GetPlane(0)->Row(y) + 10 * 4, 255, 20 * 4);
  for (const auto& [width, height] : {std::pair{10, 10}, {27, 33}, {80, 80}, {13, 80}}) {
    const auto scaled = ScalePicture(picture, width, height);
    ASSERT_TRUE(scaled && scaled->width == width && scaled->height == height);
    int parts = 0;
    for (std::int32_t y = 0; y < height; ++y) {
      for (std::int32_t x = 0; x < width; ++x) {
        const std::uint32_t pixel = PixelAt(*scaled, x, y), alpha = pixel >> 24;
        EXPECT_EQ(pixel & 0xFFFFFF, alpha == 0 ? 0u : 0xFFFFFFu);
        parts += alpha != 0 && alpha != 255;
      }
    }
    EXPECT_EQ(PixelAt(*scaled, 0, 0), 0u);
    EXPECT_EQ(PixelAt(*scaled, width / 2, height / 2), 0xFFFFFFFFu);
    EXPECT_GT(parts, width == 27 ? 20 : -1);
  }
}

TEST(PictureScalerTest, PicturesDoNotFadeTowardsTheirEdges) {
  XpPixmap32 shade;
  ASSERT_EQ(shade.Allocate(1, 1), XpOk);
  FillPixmap(shade, 10, 20, 30, 178);
  const auto wide = ScalePicture(shade, 50, 20);
  ASSERT_TRUE(wide);
  const std::uint32_t first = PixelAt(*wide, 0, 0);
  EXPECT_EQ(first, 0xB20A141Eu) << "as bright as it was";
  for (std::int32_t x = 0; x < 50; ++x) EXPECT_EQ(PixelAt(*wide, x, 19), first);

  XpPixmap24 opaque;
  ASSERT_EQ(opaque.Allocate(4, 4), XpOk);
  FillPixmap(opaque, 1, 2, 3);
  EXPECT_EQ(PixelAt(*ScalePicture(opaque, 4, 4), 3, 3), 0xFF010203u);
  EXPECT_EQ(PixelAt(*ScalePicture(opaque, 2, 9), 0, 8), 0xFF010203u);
  for (const auto& [width, height] : {std::pair{0, 5}, {5, -1}, {40'000, 1}}) {
    EXPECT_EQ(ScalePicture(opaque, width, height), nullptr);
  }
  EXPECT_EQ(ScalePicture(XpPixmap32(), 5, 5), nullptr);
}

}  // namespace
}  // namespace vrx::drawing
