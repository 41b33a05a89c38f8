// A layer that is kept gives the pixels of a drawing from scratch, on whatever it is laid, and draws no more
// often than it has to.
#include <gtest/gtest.h>

#include <cstring>

#include "drawing/BoxTextRenderer.h"
#include "imaging/pixmap/XpPixmapBlock.h"
#include "overlay/painter/KeptLayer.h"
#include "tests/drawing/Sheet.h"

namespace {

using namespace vrx::overlay;
using vrx::drawing::Rect;
using vrx::drawing::Sheet;

class KeptLayerTest : public testing::Test {
 protected:
  void Draw(PainterSurface& surface) {
    ++draws;
    surface.Overlay(picture, place);
    surface.Overlay(picture, {place.left + 3, place.top + 2, place.right + 3, place.bottom + 2});
  }
  /// On a sheet with one pixel at `below`, the kept layer is what is drawn at once.
  void ExpectFresh(std::int32_t width, std::int32_t height, vrx::drawing::Point below) {
    Sheet kept(width, height), fresh(width, height);
    for (const Sheet* sheet : {&kept, &fresh})
      std::memset(sheet->pixmap.data + (below.y * width + below.x) * 4, 0x55, 4);
    PainterSurface onKept(kept.pixmap, boxes, renditions), onFresh(fresh.pixmap, boxes, renditions);
    layer.Show(onKept, [this](PainterSurface& surface) { Draw(surface); });
    const int before = draws;
    Draw(onFresh);
    draws = before;
    EXPECT_EQ(std::memcmp(kept.pixmap.data, fresh.pixmap.data, kept.pixmap.size), 0)
        << below.x << ", " << below.y;
    EXPECT_EQ(onKept.GetTouched(), onFresh.GetTouched());
  }

  vrx::drawing::BoxTextRenderer boxes;
  PictureRenditions renditions;
  PainterPicture picture{MakeSolidPixmap(200, 90, 10, 120).release()};
  Rect place{5, 6, 17, 11};
  KeptLayer layer;
  int draws = 0;
};

TEST_F(KeptLayerTest, LayerIsCopiedToClearGroundAndDrawnOnOther) {
  ExpectFresh(40, 30, {0, 0});
  ExpectFresh(40, 30, {39, 29});
  EXPECT_EQ(draws, 1);
  // The first and the last pixel of the layer, and one in the corner that it leaves free.
  for (const auto& below : {vrx::drawing::Point{5, 6}, {19, 12}, {19, 6}}) ExpectFresh(40, 30, below);
  EXPECT_EQ(draws, 4);
  ExpectFresh(40, 30, {0, 0});
  EXPECT_EQ(draws, 4);
}

TEST_F(KeptLayerTest, LayerIsDrawnAgainWhenItOrTheFrameChanges) {
  ExpectFresh(40, 30, {0, 0});
  place = {9, 4, 14, 20};
  layer.Forget();
  ExpectFresh(40, 30, {0, 0});
  ExpectFresh(64, 20, {0, 0});
  place = {4, 4, 4, 4};
  layer.Forget();
  ExpectFresh(64, 20, {4, 4});
  EXPECT_EQ(draws, 4);
}

}  // namespace
