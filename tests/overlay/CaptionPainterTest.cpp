// Captions are drawn where, when and how the document says. Text is drawn as boxes, so pixels are known.
#include <cmath>
#include <optional>
#include <tuple>

#include <gtest/gtest.h>

#include "drawing/BoxTextRenderer.h"
#include "drawing/pango/PangoTextRenderer.h"
#include "overlay/caption/KVSCaptionPainterPlugIn.h"
#include "tests/drawing/Sheet.h"

namespace {

using vrx::drawing::PixelAt;
using vrx::drawing::Rect;
using vrx::drawing::Size;
using vrx::overlay::TextResolution;

constexpr Size kFrameSizes[] = {{1920, 1080}, {64, 48},   {90, 61},     {199, 1000}, {301, 2160},
                                {640, 359},   {720, 576}, {3840, 2160}, {1080, 1920}};

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
  for (const auto& [width, height] : kFrameSizes) {
    for (std::int32_t layout = 1; layout <= 18; ++layout) {
      painter.emplace(boxes, layout > 9 ? TextResolution::Canvas : TextResolution::Frame);
      CaptionItem caption = Caption(u"aa\nbb", 1000, 2000, (layout - 1) % 9 + 1);
      if (layout % 3 == 0) caption.outline = 20;
      if (layout % 4 == 0) caption.boxOpacity = 50;
      info.captionInfo.keepShape = layout % 5 == 0;
      Set({caption}, layout % 2 == 0);
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
  for (const TextResolution resolution : {TextResolution::Frame, TextResolution::Canvas}) {
    for (const bool saveMode : {false, true}) {
      painter.emplace(boxes, resolution);
      Set({Caption(u"x", 0, 10, 5)}, saveMode);
      const PixmapHolder holder = Draw(5);
      const Rect box = Drawn(holder);
      EXPECT_EQ(PixelAt(*holder, box.left + 20, box.top + 20), 0xFFFF0000u);
      // The right and bottom edges of what is drawn belong to the shadow alone; the outermost pixel is
      // smoothed.
      const std::uint32_t shadow = PixelAt(*holder, box.right - 2, box.bottom - 30);
      EXPECT_EQ(shadow & 0xFFFFFF, 0x000002u) << saveMode;
      EXPECT_NEAR(shadow >> 24, saveMode ? 0x80 : 0xFF, 1) << saveMode;
    }
  }
  // At least a pixel wide, and stretched like the canvas.
  painter.emplace(boxes);
  Set({Caption(u"x", 0, 10, 5)});
  for (const auto& [width, height, right, below] : {std::tuple{300, 200, 1, 1}, {1080, 1920, 1, 4}}) {
    const PixmapHolder holder = Draw(5, 0, width, height);
    const Rect box = Drawn(holder);
    EXPECT_EQ(PixelAt(*holder, box.right - right, box.bottom - 9) & 0xFFFFFF, 0x000002u) << width;
    EXPECT_EQ(PixelAt(*holder, box.left + 3, box.bottom - below) & 0xFFFFFF, 0x000002u) << width;
  }
  // Of a picture too, below which four rows of it are seen.
  vrx::drawing::PangoTextRenderer letters;
  painter.emplace(letters);
  Set({Caption(u"😀", 0, 10, 5)});
  const PixmapHolder frame = Draw(5, 0, 1080, 1920);
  const Rect face = Drawn(frame);
  EXPECT_EQ(PixelAt(*frame, (face.left + face.right) / 2, face.bottom - 3), 0xFF000002u);
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
      CaptionItem before = Caption(u"WWWWWWWW\nmore\nand more", 0, 10, 10 - layout);
      if (layout % 3 == 0) before.outline = before.boxOpacity = 30;
      painter.emplace(boxes, TextResolution::Canvas);
      Set({next}, saveMode);
      const PixmapHolder expected = Draw(25);
      Set({before, next}, saveMode);
      Draw(5);
      EXPECT_EQ(std::memcmp(Draw(25)->data, expected->data, expected->size), 0) << layout;
    }
  }
  // Nor its lines, nor those of a frame of another shape.
  info.captionInfo.keepShape = true;
  const CaptionItem next = Caption(u"next", 20, 30, 5);
  std::vector<PixmapHolder> expected;
  for (const auto& [width, height] : {Size{192, 108}, {108, 192}}) {
    painter.emplace(boxes);
    Set({next});
    expected.push_back(Draw(25, 0, width, height));
  }
  Set({Caption(u"two\nlines", 0, 10, 5)});
  Draw(5, 0, 192, 108);
  painter->SetCaptionItems({&next, 1});
  for (const PixmapHolder& picture : expected) {
    const PixmapHolder drawn = Draw(25, 0, picture->width, picture->height);
    EXPECT_EQ(std::memcmp(drawn->data, picture->data, picture->size), 0) << picture->width;
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

TEST_F(CaptionPainterTest, SharpLettersStandWhereTheStretchedCanvasHasThem) {
  vrx::drawing::PangoTextRenderer letters;
  const std::initializer_list<const char16_t*> texts = {
      u"Hxg", u"A longer caption that wraps on the canvas, for it is too long for a line", u"a\nbb\n\nc"};
  std::int32_t layout = 0;
  for (const Size& frame : kFrameSizes) {
    const std::int32_t width = frame.width, height = frame.height;
    for (const char16_t* text : texts) {
      layout = layout % 9 + 1;
      info.captionInfo.keepShape = layout % 2 == 0;
      CaptionItem caption = Caption(text, 0, 10, layout);
      caption.fontName = u"DejaVu Sans";
      caption.isBalanced = layout % 3 == 0;
      caption.margin = layout % 4 == 0 ? 90 : 0;
      const auto drawn = [&](TextResolution resolution) {
        painter.emplace(letters, resolution);
        Set({caption});
        return Drawn(Draw(5, 0, width, height));
      };
      const Rect sharp = drawn(TextResolution::Frame), stretched = drawn(TextResolution::Canvas);
      // Half a pixel of smoothing, and the canvas's own pixels where they are larger than the frame's.
      const double near = 2 + 3.0 * std::max(width / 1920.0, height / 1080.0);
      const auto expectNear = [&](std::int32_t a, std::int32_t b) {
        EXPECT_NEAR(a, b, near) << layout << " on " << width << "x" << height;
      };
      expectNear(sharp.left, stretched.left);
      expectNear(sharp.top, stretched.top);
      expectNear(sharp.right, stretched.right);
      expectNear(sharp.bottom, stretched.bottom);
    }
  }
}

TEST_F(CaptionPainterTest, KeptShapeScalesLettersAlikeInsideTheMargin) {
  info.captionInfo.keepShape = true;
  for (const auto& [width, height] : kFrameSizes) {
    const std::int32_t shorter = std::min(width, height), longer = std::max(width, height);
    const double factor = std::min(shorter - 20.0, (longer - 20.0) * shorter / longer) / 1080;
    CaptionItem caption = Caption(u"xxxx", 0, 10, 5);  // a box of 239 by 80
    painter.emplace(boxes);
    Set({caption});
    const Rect box = Drawn(Draw(5, 0, width, height));
    EXPECT_NEAR(static_cast<double>(box.Width()), 239 * factor + 2 * factor, 2) << width << "x" << height;
    EXPECT_NEAR(static_cast<double>(box.Height()), 80 * factor + 2 * factor, 2) << width << "x" << height;
    EXPECT_NEAR(box.left + box.right, width, 3 + 2 * factor) << width << "x" << height;
    caption.layoutType = 9;  // in the corner of the canvas, 20 above its edge
    Set({caption});
    const Rect corner = Drawn(Draw(5, 0, width, height));
    EXPECT_NEAR(corner.right, (width + factor * 1080 * width / shorter) / 2, 3) << width << "x" << height;
    EXPECT_NEAR(corner.bottom, (height + factor * 1080 * height / shorter) / 2 - 20 * factor, 3) << height;
  }
}

TEST_F(CaptionPainterTest, OptionsOfACaptionAreDrawnInBothWays) {
  // At a frame of this size a pixel of the canvas is one of the frame.
  constexpr std::int32_t kWidth = 1940, kHeight = 1100;
  for (const TextResolution resolution : {TextResolution::Frame, TextResolution::Canvas}) {
    const auto drawn = [&](const CaptionItem& caption) {
      painter.emplace(boxes, resolution);
      Set({caption});
      return Draw(5, 0, kWidth, kHeight);
    };
    CaptionItem caption = Caption(u"x", 0, 10);
    const Rect plain = Drawn(drawn(caption));
    caption.outline = 30;  // reaches beyond the line
    caption.outlineColor = 0x00FF00;
    PixmapHolder frame = drawn(caption);
    EXPECT_EQ(Drawn(frame), (Rect{plain.left - 30, plain.top - 30, plain.right + 30, plain.bottom + 30}));
    EXPECT_EQ(PixelAt(*frame, plain.left - 4, plain.top + 20), 0xFF00FF00u);
    EXPECT_EQ(PixelAt(*frame, plain.left + 4, plain.top + 20), 0xFFFF0000u);
    caption.outline = 5;
    caption.layoutType = 4;  // on the canvas's edge, which cuts what is drawn on it
    EXPECT_EQ(Drawn(drawn(caption)).left, resolution == TextResolution::Frame ? 10 - 2 - 5 : 10);
    caption.layoutType = 5;
    caption.outline = -5;
    EXPECT_EQ(Drawn(drawn(caption)), plain);
    caption.outline = 1e300;  // as wide as the letters are high
    EXPECT_EQ(Drawn(drawn(caption)).Width(), plain.Width() + 2 * 100);

    caption.outline = 0;
    caption.boxOpacity = 40;
    caption.text = u"x\nx";
    frame = drawn(caption);
    const Rect box = Drawn(frame);
    EXPECT_EQ(PixelAt(*frame, box.left, box.top), 0x660B0E12u);
    EXPECT_EQ(box, (Rect{plain.left - 30, plain.top - 20 - 60 - 10, plain.left + 60 + 30,
                         plain.top - 20 + 180 + 10}));
    caption.boxOpacity = 200;
    EXPECT_EQ(PixelAt(*drawn(caption), box.left, box.top), 0xFF0B0E12u);

    caption.boxOpacity = 0;
    caption.text = u"x";
    caption.layoutType = 9;
    caption.margin = -100;
    EXPECT_EQ(Drawn(drawn(caption)).right, kWidth - 10 - 1);
    caption.margin = 100;
    const Rect inset = Drawn(drawn(caption));
    EXPECT_EQ(inset.right, kWidth - 10 - 100 - 1);
    EXPECT_EQ(inset.bottom, kHeight - 10 - 100 - 20);
    caption.margin = 1e9;  // leaves some room
    EXPECT_FALSE(Drawn(drawn(caption)).IsEmpty());

    // Thirty-two characters fit on a line; the lines become even and break no word.
    caption = Caption(u"aaaa bbbb cccc dddd eeee ffff gggg hhhh", 0, 10, 5);
    const std::int64_t wide = Drawn(drawn(caption)).Width();
    caption.isBalanced = true;
    const std::int64_t even = Drawn(drawn(caption)).Width();
    EXPECT_NEAR(static_cast<double>(wide), 29 * 60 + 1, 60);
    EXPECT_NEAR(static_cast<double>(even), 19 * 60 + 1, 2);
    caption.layoutType = 3;
    EXPECT_EQ(Drawn(drawn(caption)).right, kWidth - 10 - 1);
    caption.text = u"aaaaaaaaaaaaaaaaaaaaaaaaaaaaaa bbbb";
    EXPECT_NEAR(static_cast<double>(Drawn(drawn(caption)).Width()), 30 * 60 + 1, 2);
  }
}

TEST_F(CaptionPainterTest, BoldAndItalicLettersDiffer) {
  vrx::drawing::PangoTextRenderer letters;
  CaptionItem caption = Caption(u"lll", 0, 10);
  caption.fontName = u"DejaVu Sans";
  const auto width = [&] {
    painter.emplace(letters);
    Set({caption});
    return Drawn(Draw(5)).Width();
  };
  const std::int64_t plain = width();
  caption.isBold = true;
  const std::int64_t bold = width();
  caption.isItalic = true;
  EXPECT_GT(bold, plain + 5);
  EXPECT_GT(width(), bold + 5);
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
