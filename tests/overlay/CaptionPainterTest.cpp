// Captions are drawn where, when and how the document says. Text is drawn as boxes, so pixels are known.
#include <cmath>
#include <optional>

#include <gtest/gtest.h>

#include "drawing/BoxTextRenderer.h"
#include "overlay/caption/KVSCaptionPainterPlugIn.h"
#include "tests/drawing/Sheet.h"

namespace {

using vrx::drawing::PixelAt;
using vrx::drawing::Rect;

CaptionItem Caption(const char16_t* text, std::int32_t startMs, std::int32_t endMs, std::int32_t layout = 5,
                    std::int32_t videoId = 0) {
  return {text, u"Face", 100.0, 0x0000FF, layout, startMs, endMs, videoId};
}

class CaptionPainterTest : public testing::Test {
 protected:
  void Set(std::vector<CaptionItem> items, bool saveMovieMode = false) {
    info.saveMovieMode = saveMovieMode;
    ASSERT_TRUE(painter->SetPainterInfo(&info, &info.captionInfo));
    painter->SetCaptionItems(items);
  }
  PixmapHolder Draw(std::int64_t ms, std::int32_t videoId = 0, std::int32_t width = 1920,
                    std::int32_t height = 1080) {
    PixmapHolder holder(new XpPixmap32);
    EXPECT_EQ(holder->Allocate(width, height), XpOk);
    EXPECT_TRUE(painter->DrawForVideo(videoId, 0, 0, ms, holder));
    return holder;
  }
  static Rect Drawn(const PixmapHolder& holder) { return vrx::drawing::InkOf(*holder); }

  vrx::drawing::BoxTextRenderer boxes;
  std::optional<KVSCaptionPainterPlugIn> painter{boxes};
  PainterInfo info;
};

TEST_F(CaptionPainterTest, ShowsTheFirstCaptionOfItsTimeAndClip) {
  Set({Caption(u"aa", 1000, 2000), Caption(u"bbbb", 1500, 3000), Caption(u"c", 0, 9000, 5, 7)});
  const Rect first = Drawn(Draw(1000));
  const Rect second = Drawn(Draw(2001));
  EXPECT_EQ(Drawn(Draw(999)), Rect{});
  EXPECT_EQ(Drawn(Draw(2000)), first);
  EXPECT_GT(second.Width(), first.Width());
  EXPECT_EQ(Drawn(Draw(3001)), Rect{});
  EXPECT_LT(Drawn(Draw(1000, 7)).Width(), first.Width());
  Set({Caption(u"c", 0, 9000, 5, 7)}, true);
  EXPECT_NE(Drawn(Draw(1000)), Rect{});  // whatever clip is current
}

TEST_F(CaptionPainterTest, DrawnRowsHoldEverythingThatIsDrawn) {
  for (const auto& [width, height] :
       {std::pair{1920, 1080}, {64, 48}, {90, 61}, {199, 1000}, {301, 2160}, {640, 359}}) {
    for (std::int32_t layout = 1; layout <= 9; ++layout) {
      Set({Caption(u"aa\nbb", 1000, 2000, layout)}, layout % 2 == 0);
      const Rect drawn = Drawn(Draw(1000, 0, width, height));
      const XpRowRange rows = painter->GetDrawnRows();
      ASSERT_FALSE(drawn.IsEmpty()) << layout << " on " << width << "x" << height;
      EXPECT_GE(drawn.top, rows.first) << layout << " on " << width << "x" << height;
      EXPECT_LE(drawn.bottom, rows.last) << layout << " on " << width << "x" << height;
    }
  }
  Draw(5000);
  EXPECT_TRUE(painter->GetDrawnRows().IsEmpty());
}

TEST_F(CaptionPainterTest, NinePlacesOnTheCanvasInsideTheMargin) {
  // A box of 60 by 80 on a line of 120 with an em of 100, on the canvas; the frame's margin squeezes it a
  // little.
  for (std::int32_t layout = 1; layout <= 9; ++layout) {
    Set({Caption(u"x", 0, 10, layout)});
    const Rect box = Drawn(Draw(5));
    const std::int32_t column = (layout - 1) % 3, row = (layout - 1) / 3;
    const std::int32_t left = column == 0 ? 0 : column == 1 ? 930 : 1860;
    const std::int32_t top = row == 0 ? 20 : row == 1 ? 500 : 980;
    EXPECT_NEAR(box.left, 10 + (left - 2) * 1900 / 1920, 3) << layout;
    EXPECT_NEAR(box.top, 10 + (top - 2) * 1060 / 1080, 3) << layout;
    EXPECT_NEAR(static_cast<double>(box.Height()), 82.0 * 1060 / 1080, 2) << layout;
  }
  for (const std::int32_t layout : {0, 10, -1}) {
    Set({Caption(u"x", 0, 10, layout)});
    EXPECT_EQ(Drawn(Draw(5)), Rect{}) << layout;
  }
}

TEST_F(CaptionPainterTest, ShadowLiesBelowTheTextAndIsHalfAsStrongInSaveMode) {
  for (const bool saveMode : {false, true}) {
    Set({Caption(u"x", 0, 10, 5)}, saveMode);
    const PixmapHolder holder = Draw(5);
    const Rect box = Drawn(holder);
    EXPECT_EQ(PixelAt(*holder, box.left + 20, box.top + 20), 0xFFFF0000u);
    // The right and bottom edges of what is drawn belong to the shadow alone; the outermost pixel is
    // smoothed.
    const std::uint32_t shadow = PixelAt(*holder, box.right - 2, box.bottom - 30);
    EXPECT_EQ(shadow & 0xFFFFFF, 0x000002u) << saveMode;
    EXPECT_EQ(shadow >> 24 > 0x80, !saveMode) << saveMode;
  }
}

TEST_F(CaptionPainterTest, LastLineOfAMultiLineCaptionIsDrawn) {
  for (std::int32_t layout = 1; layout <= 9; ++layout) {
    Set({Caption(u"x", 0, 10, layout), Caption(u"x\nx\nx", 20, 30, layout)});
    const double more = static_cast<double>(Drawn(Draw(25)).Height() - Drawn(Draw(5)).Height());
    EXPECT_NEAR(more, 2 * 120.0 * 1060 / 1080, 2) << layout;
  }
}

TEST_F(CaptionPainterTest, TallTextStartsAtTheTop) {
  const std::u16string text = u"x" + std::u16string(30, u'\n') + u"x";
  for (const std::int32_t layout : {4, 7}) {
    Set({Caption(text.c_str(), 0, 10, layout)});
    EXPECT_NEAR(Drawn(Draw(5)).top, 10 + 18, 3) << layout;
  }
}

TEST_F(CaptionPainterTest, CaptionLeavesNothingOnTheCanvasForTheNextOne) {
  for (const bool saveMode : {false, true}) {
    for (std::int32_t layout = 1; layout <= 9; ++layout) {
      const CaptionItem next = Caption(u"next", 20, 30, layout);
      painter.emplace(boxes);
      Set({next}, saveMode);
      const PixmapHolder expected = Draw(25);
      Set({Caption(u"WWWWWWWW\nmore\nand more", 0, 10, 10 - layout), next}, saveMode);
      Draw(5);
      EXPECT_EQ(std::memcmp(Draw(25)->data, expected->data, expected->size), 0) << layout;
    }
  }
}

TEST_F(CaptionPainterTest, EveryFrameSizeAndFontSizeStaysInsideTheMargin) {
  for (const double fontSize : {0.0, -20.0, 1e4, 1e300, -1e300}) {
    CaptionItem caption = Caption(u"words that wrap, words that wrap", 0, 10);
    caption.fontSize = fontSize;
    Set({caption});
    for (const auto& [width, height] : {std::pair{16, 16}, {20, 20}, {21, 33}, {1920, 1080}, {7680, 4320}}) {
      const Rect box = Drawn(Draw(5, 0, width, height));
      // Letters lie left of their shadows, which may take a little of the margin.
      const double shift = std::ceil(2.0 * (width - 20) / 1920);
      EXPECT_GE(box.IsEmpty() ? 10 : box.left, 10 - shift);
      EXPECT_LE(box.right, std::max(width - 10 + shift, 0.0));
    }
  }
}

TEST_F(CaptionPainterTest, StampsOfDifferentCaptionsDiffer) {
  const auto stamp = [this](std::int64_t ms, std::int32_t videoId = 0) {
    return painter->GetContentStamp({.videoId = videoId, .captionMs = ms});
  };
  Set({Caption(u"a", 0, 10), Caption(u"b", 20, 30)});
  const PainterStamp first = stamp(0);
  EXPECT_TRUE(first.isKnown);
  EXPECT_EQ(first, stamp(10));
  EXPECT_NE(first, stamp(15));
  EXPECT_NE(first, stamp(25));
  EXPECT_EQ(stamp(15), stamp(5, 3));
  painter->SetCaptionItems({});
  EXPECT_NE(first, stamp(0));
}

TEST_F(CaptionPainterTest, UnconfiguredPainterDrawsNothing) {
  PixmapHolder empty;
  EXPECT_FALSE(painter->Draw(0, 0, 0, empty));
  EXPECT_FALSE(painter->SetPainterInfo(&info, &info.templateInfo));
  EXPECT_FALSE(painter->SetPainterInfo(&info, nullptr));
  const CaptionItem caption = Caption(u"a", 0, 10);
  painter->SetCaptionItems({&caption, 1});
  EXPECT_EQ(Drawn(Draw(5)), Rect{});
}

}  // namespace
