#include "drawing/TextRenderer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <set>
#include <string>
#include <thread>

#include "drawing/BoxTextRenderer.h"
#include "drawing/pango/PangoTextRenderer.h"
#include "imaging/pixmap/XpPixmapBlock.h"
#include "tests/drawing/Sheet.h"
#include "tests/imaging/RandomPixmap.h"

namespace vrx::drawing {
namespace {

constexpr ColorRef kColor = MakeColor(200, 100, 50);
constexpr std::uint32_t kCaption = DT_EDITCONTROL | DT_NOPREFIX | DT_WORDBREAK | DT_VCENTER;

Font FontOf(std::int32_t height, bool smooth = true) {
  Font font;
  font.face = u"DejaVu Sans";
  font.height = height;
  font.smooth = smooth;
  return font;
}

bool Contains(const Rect& outer, const Rect& inner) { return Intersect(outer, inner) == inner; }

/// What painters rely on, for both renderers.
class AnyTextRendererTest : public testing::TestWithParam<const char*> {
 protected:
  static std::unique_ptr<TextRenderer> Make() {
    if (std::string(GetParam()) == "box") return std::make_unique<BoxTextRenderer>();
    return std::make_unique<PangoTextRenderer>();
  }
  std::unique_ptr<TextRenderer> renderer = Make();
};
INSTANTIATE_TEST_SUITE_P(Both, AnyTextRendererTest, testing::Values("box", "pango"),
                         [](const auto& renderer) { return std::string(renderer.param); });

TEST_P(AnyTextRendererTest, TextStaysInItsRectangleAndIsCutThere) {
  const Rect rect{50, 40, 150, 75};
  for (std::uint32_t align : {DT_LEFT, DT_CENTER, DT_RIGHT}) {
    for (std::uint32_t lines : {DT_WORDBREAK, DT_SINGLELINE, DT_SINGLELINE | DT_BOTTOM, DT_TOP}) {
      Sheet page;
      renderer->Draw(page.canvas, u"Text that is much too long\nfor it\nall", FontOf(-30), kColor, rect,
                     align | lines);
      const Rect ink = page.Ink();
      EXPECT_FALSE(ink.IsEmpty());
      EXPECT_TRUE(Contains(rect, ink)) << align << " " << lines << ": " << ink.left << "," << ink.top
                                       << " to " << ink.right << "," << ink.bottom;
    }
  }
  Sheet page;
  renderer->Draw(page.canvas, u"Text that is much too long", FontOf(-30), kColor, rect, DT_NOCLIP);
  EXPECT_GT(page.Ink().right, rect.right);
}

TEST_P(AnyTextRendererTest, AlignmentMovesTheTextByTheSpaceThatIsLeft) {
  const Rect rect{10, 10, 390, 190};
  const Font font = FontOf(-24);
  const Size size = renderer->Measure(u"Hxg", font, 380, DT_SINGLELINE);
  const auto inkOf = [&](std::uint32_t format) {
    Sheet page;
    renderer->Draw(page.canvas, u"Hxg", font, kColor, rect, format);
    return page.Ink();
  };
  const Rect base = inkOf(DT_SINGLELINE);
  const std::int32_t roomX = 380 - size.width, roomY = 180 - size.height;
  EXPECT_TRUE(Contains({10, 10, 10 + size.width, 10 + size.height}, base));
  struct Case {
    std::uint32_t format;
    std::int32_t dx, dy;
  };
  for (const Case& c : {Case{DT_CENTER, roomX / 2, 0}, Case{DT_RIGHT, roomX, 0},
                        Case{DT_VCENTER, 0, roomY / 2}, Case{DT_BOTTOM | DT_CENTER, roomX / 2, roomY}}) {
    EXPECT_EQ(inkOf(DT_SINGLELINE | c.format), Moved(base, c.dx, c.dy)) << c.format;
  }
  // Vertical alignment is for single lines only.
  EXPECT_EQ(inkOf(DT_VCENTER), base);
  EXPECT_EQ(inkOf(DT_BOTTOM | DT_RIGHT), Moved(base, roomX, 0));
}

TEST_P(AnyTextRendererTest, WordsWrapAtTheWidthAndLineFeedsAlways) {
  const Font font = FontOf(-20);
  const std::int32_t line = renderer->Measure(u"a", font, 0, 0).height;
  const auto linesOf = [&](std::u16string_view text, std::int32_t width, std::uint32_t format) {
    const Size size = renderer->Measure(text, font, width, format);
    EXPECT_EQ(size.height % line, 0);
    return size.height / line;
  };
  const std::int32_t word = renderer->Measure(u"mmmm", font, 0, 0).width;
  EXPECT_EQ(linesOf(u"mmmm mmmm mmmm", 10000, DT_WORDBREAK), 1);
  EXPECT_EQ(linesOf(u"mmmm mmmm mmmm", word + 2, DT_WORDBREAK), 3);
  EXPECT_EQ(linesOf(u"mmmm mmmm mmmm", word + 2, 0), 1);
  EXPECT_EQ(linesOf(u"mmmm mmmm mmmm", word + 2, DT_WORDBREAK | DT_SINGLELINE), 1);
  EXPECT_LE(renderer->Measure(u"mmmm mmmm mmmm", font, word + 2, DT_WORDBREAK).width, word + 2);
  // A word that is too long stays whole, except where text behaves as in an edit control.
  EXPECT_EQ(linesOf(u"mmmm", word * 3 / 5, DT_WORDBREAK), 1);
  EXPECT_GE(renderer->Measure(u"mmmm", font, word / 2, DT_WORDBREAK).width, word);
  EXPECT_EQ(linesOf(u"mmmm", word * 3 / 5, DT_WORDBREAK | DT_EDITCONTROL), 2);
  for (const char16_t* text : {u"a\nb\nc", u"a\r\nb\r\nc", u"a\rb\rc\n", u"a\u2028b\u2029c", u"\n\n\n"}) {
    EXPECT_EQ(linesOf(text, 1000, 0), 3);
    EXPECT_EQ(linesOf(text, 1000, DT_SINGLELINE), 1);
  }
  EXPECT_EQ(renderer->Measure(u"", font, 100, DT_WORDBREAK), (Size{0, line}));
}

TEST_P(AnyTextRendererTest, CalculatingMovesTheRectangleAndDrawsNothing) {
  Sheet page;
  Rect rect{7, 9, 300, 10};
  const Font font = FontOf(-20);
  const std::int32_t height = renderer->DrawText(page.canvas, u"99\n999", font, kColor, rect,
                                                 DT_CALCRECT | DT_NOPREFIX | DT_BOTTOM | DT_RIGHT);
  const Size size = renderer->Measure(u"99\n999", font, 293, 0);
  EXPECT_EQ(rect, (Rect{7, 9, 7 + size.width, 9 + size.height}));
  EXPECT_EQ(height, size.height);
  EXPECT_TRUE(page.Ink().IsEmpty());
  renderer->DrawText(page.canvas, u"99\n999", font, kColor, rect, DT_NOPREFIX);
  EXPECT_TRUE(Contains(rect, page.Ink()));
  EXPECT_FALSE(page.Ink().IsEmpty());
}

TEST_P(AnyTextRendererTest, AmpersandIsAMarkUnlessPrefixesAreOff) {
  const Font font = FontOf(-20);
  const auto width = [&](std::u16string_view text, std::uint32_t format) {
    return renderer->Measure(text, font, 0, format).width;
  };
  EXPECT_EQ(width(u"R&D", 0), width(u"RD", 0));
  EXPECT_EQ(width(u"R&&D", 0), width(u"R&D", DT_NOPREFIX));
  EXPECT_GT(width(u"R&D", DT_NOPREFIX), width(u"RD", DT_NOPREFIX));
}

TEST_P(AnyTextRendererTest, PartlyVisibleLastLineIsLeftOutInAnEditControl) {
  const Font font = FontOf(-20);
  const std::int32_t line = renderer->Measure(u"M", font, 0, 0).height;
  const Rect rect{0, 0, 400, line + line / 2 + 4};
  Sheet cut, whole;
  renderer->Draw(cut.canvas, u"M\nM", font, kColor, rect, kCaption);
  renderer->Draw(whole.canvas, u"M\nM", font, kColor, rect, DT_NOPREFIX | DT_WORDBREAK);
  EXPECT_LE(cut.Ink().bottom, line);
  EXPECT_GT(whole.Ink().bottom, line);
  Sheet large;
  renderer->Draw(large.canvas, u"M", FontOf(-300), kColor, {0, 0, 400, 200}, kCaption);
  EXPECT_FALSE(large.Ink().IsEmpty()) << "the first line always shows";
}

TEST_P(AnyTextRendererTest, SmoothTextIsStraightAlphaOverClearAndBlendsOverOpaquePixels) {
  for (const ColorRef color : {kColor, ColorRef{0}}) {
    Sheet clear, opaque, sparse;
    XpPixmap24 narrow;
    ASSERT_EQ(narrow.Allocate(400, 200), XpOk);
    FillPixmap(opaque.pixmap, 10, 220, 90, 255);
    FillPixmap(sparse.pixmap, 10, 220, 90, 100);
    FillPixmap(narrow, 10, 220, 90);
    for (const Canvas& canvas :
         {clear.canvas, opaque.canvas, sparse.canvas, Canvas(narrow.GetBitmapHandle())}) {
      renderer->Draw(canvas, u"Sway & 8\ngo", FontOf(-61), color, {5, 5, 395, 195}, DT_NOPREFIX);
    }
    const unsigned char text[3] = {BlueOf(color), GreenOf(color), RedOf(color)}, under[3] = {90, 220, 10};
    int partial = 0, full = 0;
    for (int i = 0; i < 400 * 200; ++i) {
      const unsigned char *overClear = clear.pixmap.data + i * 4, *overOpaque = opaque.pixmap.data + i * 4,
                          *overSparse = sparse.pixmap.data + i * 4;
      const int a = overClear[3];
      partial += a > 0 && a < 255;
      full += a == 255;
      ASSERT_EQ(overOpaque[3], 255) << i;
      const double mixedAlpha = a + 100.0 * (255 - a) / 255;
      ASSERT_NEAR(overSparse[3], mixedAlpha, 0.51) << i;
      for (int c = 0; c < 3; ++c) {
        ASSERT_EQ(overClear[c], a == 0 ? 0 : text[c]) << i;
        ASSERT_NEAR(overOpaque[c], (under[c] * (255 - a) + text[c] * a) / 255.0, 0.51) << i;
        const double mixed = (text[c] * a + under[c] * 100.0 * (255 - a) / 255) / mixedAlpha;
        ASSERT_NEAR(overSparse[c], mixed, 0.51) << i;
        ASSERT_EQ(narrow.data[i * 3 + c], overOpaque[c]) << i;
      }
    }
    EXPECT_GT(partial, 50);
    EXPECT_GT(full, 500);
  }
}

TEST_P(AnyTextRendererTest, UnsmoothedTextCoversNoPixelInPart) {
  for (std::int32_t height : {-9, -20, -86, -700}) {
    Sheet sheet;
    renderer->Draw(sheet.canvas, u"M+128 km", FontOf(height, false), kColor, {0, 0, 400, 200}, 0);
    EXPECT_FALSE(sheet.Ink().IsEmpty()) << height;
    for (std::int32_t i = 3; i < 400 * 200 * 4; i += 4) {
      ASSERT_TRUE(sheet.pixmap.data[i] == 0 || sheet.pixmap.data[i] == 255) << height;
    }
  }
}

TEST_P(AnyTextRendererTest, HostileTextsSizesAndRectanglesAreDrawnInsideTheCanvas) {
  const std::u16string marks(1 << 20, u'\u0301'), feeds(1 << 20, u'\n'), broken(3000, u'\xD83D');
  std::u16string words(1 << 20, u'w');
  for (std::size_t i = 0; i < words.size(); i += 6) words[i] = u' ';
  const std::u16string controls(u"a\0b\tc\x1b\x7f\xDC80\xDFFF\uFFFF\u202E\u200D", 12);
  constexpr std::int32_t kMax = INT32_MAX, kMin = INT32_MIN;
  const Rect rects[] = {{0, 0, 16, 16},          {9, 9, 9, 9},
                        {12, 12, 3, 3},          {kMin, kMin, kMax, kMax},
                        {kMax - 4, 0, kMax, 16}, {-5000, -5000, -4000, -4000}};
  for (const std::u16string& text : {marks, words, feeds, broken, controls}) {
    for (std::int32_t height : {0, 1, -1, -40, 10000, -10000, kMin, kMax}) {
      Sheet page(16, 16);
      Font font = FontOf(height);
      font.weight = height;
      const Size size = renderer->Measure(text, font, 16, kCaption);
      EXPECT_GE(size.width, 0);
      EXPECT_GE(size.height, 1);
      for (const Rect& rect : rects)
        renderer->Draw(page.canvas, text, font, kColor, rect, kCaption | DT_RIGHT);
      renderer->Draw(page.canvas, text, font, kColor, rects[0],
                     DT_SINGLELINE | DT_CENTER | DT_VCENTER | DT_NOCLIP);
    }
  }
  renderer->Draw(Canvas(), u"x", FontOf(-20), kColor, {0, 0, 9, 9}, 0);
}

TEST_P(AnyTextRendererTest, ScaledTextStandsWhereItsLayoutWouldBeAtThatScale) {
  const Font font = FontOf(-60);
  // Of several fonts, one of them of pictures; the first line is the longest.
  const std::u16string_view text = u"Hxא😀wH wraps";
  const Rect rect{20, 10, 380, 390};
  Sheet plain(400, 400);
  renderer->Draw(plain.canvas, text, font, kColor, rect, kCaption | DT_CENTER);
  const Rect ink = plain.Ink();
  for (const TextScale& scale :
       {TextScale{1, 1, 0, 0}, {0.5, 0.5, 7.25, 3.5}, {0.4, 1.75, 0, 20.6}, {2, 2, -40, 9}}) {
    Sheet page(800, 800);
    const ScaledText scaled{text, font, rect, kCaption | DT_CENTER, scale};
    const Rect touched = renderer->DrawScaled(page.canvas, scaled, {.color = kColor}, {0, 0, 800, 800});
    const Rect drawn = page.Ink();
    EXPECT_TRUE(Contains(touched, drawn));
    EXPECT_NEAR(drawn.left, scale.left + ink.left * scale.xFactor, 2.5);
    EXPECT_NEAR(drawn.top, scale.top + ink.top * scale.yFactor, 2.5);
    EXPECT_NEAR(drawn.right, scale.left + ink.right * scale.xFactor, 2.5);
    EXPECT_NEAR(drawn.bottom, scale.top + ink.bottom * scale.yFactor, 2.5);

    Sheet outlined(800, 800);
    renderer->DrawScaled(outlined.canvas, scaled, {.color = kColor, .outline = 8}, {0, 0, 800, 800});
    EXPECT_NEAR(outlined.Ink().left, std::max(drawn.left - 8 * scale.xFactor, 0.0), 1.5);
    EXPECT_NEAR(outlined.Ink().bottom, drawn.bottom + 8 * scale.yFactor, 1.5);
    Sheet widest(800, 800);  // as wide as the letters are high
    renderer->DrawScaled(widest.canvas, scaled, {.color = kColor, .outline = 99}, {0, 0, 800, 800});
    EXPECT_NEAR(widest.Ink().bottom, drawn.bottom + 60 * scale.yFactor, 1.5);
  }
}

TEST_P(AnyTextRendererTest, ScaledTextIsCutAtItsClipAloneAndMovedAsAPicture) {
  const Font font = FontOf(-40);
  const auto draw = [&](Sheet& page, const TextInk& ink, const Rect& clip) {
    return renderer->DrawScaled(page.canvas, {u"Hg", font, {0, 0, 9, 60}, kCaption, {1.5, 1.5, 30.4, 8.3}},
                                ink, clip);
  };
  constexpr Rect kAll{0, 0, 400, 200};
  Sheet whole, moved, faint, cut;
  const Rect touched = draw(whole, {.color = kColor}, kAll);
  EXPECT_GT(whole.Ink().Width(), 20);  // wider than its rectangle
  draw(moved, {.color = kColor, .offset = {3, 5}}, kAll);
  draw(faint, {.color = kColor, .alpha = 128}, kAll);
  const Rect clip{touched.left + 8, touched.top + 4, touched.right - 9, touched.bottom - 3};
  EXPECT_EQ(draw(cut, {.color = kColor}, clip), Intersect(touched, clip));
  // Of an outline, where the letter itself is not seen.
  Sheet outlined, piece;
  const TextInk outline{.color = kColor, .outline = 8};
  draw(outlined, outline, kAll);
  const std::int32_t end = outlined.Ink().top + 3;
  draw(piece, outline, {0, 0, 400, end});
  for (std::int32_t y = 0; y < 190; ++y) {
    for (std::int32_t x = 0; x < 390; ++x) {
      const std::uint32_t pixel = whole.At(x, y);
      ASSERT_EQ(moved.At(x + 3, y + 5), pixel) << x << "," << y;
      ASSERT_NEAR(faint.At(x, y) >> 24, (pixel >> 24) * 128 / 255.0, 1) << x << "," << y;
      const bool isInside = x >= clip.left && x < clip.right && y >= clip.top && y < clip.bottom;
      ASSERT_EQ(cut.At(x, y), isInside ? pixel : 0u) << x << "," << y;
      ASSERT_EQ(piece.At(x, y), y < end ? outlined.At(x, y) : 0u) << x << "," << y;
    }
  }
}

TEST_P(AnyTextRendererTest, HostileScalesAndOutlinesDrawInsideTheCanvasOrNothing) {
  const double nan = std::nan("");
  const std::u16string words(16384, u'w');
  for (const TextScale& scale : {TextScale{0, 1, 0, 0},
                                 {-1, 1, 0, 0},
                                 {nan, 1, 0, 0},
                                 {1, 1, nan, nan},
                                 {1e-9, 1e-9, 3, 3},
                                 {1e9, 1e9, 0, 0},
                                 {1, 1, 1e300, -1e300},
                                 {4, 4, -1e6, 0}}) {
    for (const double outline : {0.0, -5.0, 1e300, nan}) {
      for (const char16_t* text : {u"", u"Hg\n😀", words.c_str()}) {
        Sheet page(40, 30);
        const ScaledText scaled{text, FontOf(-30), {0, 0, 200, 100}, kCaption, scale};
        const Rect touched = renderer->DrawScaled(page.canvas, scaled, {.color = kColor, .outline = outline},
                                                  {0, 0, 999, 999});
        EXPECT_TRUE(touched.IsEmpty() || Contains({0, 0, 40, 30}, touched));
      }
    }
  }
}

TEST(PangoTextRendererTest, CachedTextHasThePixelsOfANewRenderer) {
  PangoTextRenderer kept({8, 1 << 20});
  for (const char16_t* text : {u"Caption one", u"Caption two\nwith lines", u"日本語 مرحبا 😀"}) {
    for (std::int32_t height : {-20, 20, -21}) {
      for (int style = 0; style < 5; ++style) {
        Font font = FontOf(height, style != 1);
        font.weight = style == 2 ? 700 : 400;
        font.italic = style == 3;
        font.underline = font.strikeOut = style == 4;
        const ColorRef color = style == 0 ? kColor : MakeColor(1, 2, 3);
        const Rect rect{20 - style, 10, 150, 60 + style};
        for (std::uint32_t format : {kCaption, kCaption | DT_CENTER, DT_RIGHT | DT_SINGLELINE | DT_BOTTOM}) {
          Sheet first, again, other;
          PangoTextRenderer fresh;
          kept.Draw(first.canvas, text, font, color, rect, format);
          kept.Draw(again.canvas, text, font, color, rect, format);
          fresh.Draw(other.canvas, text, font, color, rect, format);
          for (const Sheet* sheet : {&first, &again}) {
            ASSERT_TRUE(SamePicture(BytesOf(other.pixmap), sheet->pixmap))
                << "height " << height << " style " << style << " format " << format;
          }
        }
      }
    }
  }
}

/// Blended by what the pixel's area says, not by a few samples of it.
TEST(PangoTextRendererTest, ScaledLettersHaveTheEdgesOfTheirOutlines) {
  PangoTextRenderer renderer;
  // A block that fills its cell: 60 pixels of an em of 100, moved by fractions of a pixel.
  Font font = FontOf(-100);
  font.face = u"DejaVu Sans Mono";
  std::uint32_t topEdge = 0;
  const auto draw = [&](double left, double top = 10) {
    Sheet page;
    const Rect rect{0, 0, 300, 150};
    renderer.DrawScaled(page.canvas, {u"\u2588 x", font, rect, DT_SINGLELINE, {1, 1, left, top}},
                        {.color = kColor}, {0, 0, 400, 200});
    topEdge = page.At(80, page.Ink().top);
    return page.At(page.Ink().left, 80) >> 24;
  };
  const double whole = draw(50.0), quarter = draw(50.25), half = draw(50.5);
  EXPECT_NEAR(quarter - whole, -0.25 * 255, 2);
  EXPECT_NEAR(half - whole, -0.5 * 255, 2);
  const std::uint32_t onWholeRow = topEdge;
  draw(50.0, 10.4);
  EXPECT_EQ(topEdge, onWholeRow);  // as baselines lie on whole rows
}

TEST(PangoTextRendererTest, ScaledColorGlyphsKeepTheirColorsExceptInSilhouettes) {
  PangoTextRenderer renderer;
  const auto colors = [&](const TextInk& ink, std::u16string_view text = u"a😀") {
    Sheet page;
    renderer.DrawScaled(page.canvas, {text, FontOf(-60), {0, 0, 300, 150}, DT_SINGLELINE, {1.2, 1.2, 5, 5}},
                        ink, {0, 0, 400, 200});
    std::set<std::uint32_t> found;
    const Rect box = page.Ink();
    for (std::int32_t y = box.top; y < box.bottom; ++y) {
      for (std::int32_t x = box.left; x < box.right; ++x) {
        if (page.IsSet(x, y)) found.insert(page.At(x, y) & 0xFFFFFF);
      }
    }
    return found;
  };
  const std::set<std::uint32_t> found = colors({.color = kColor});
  EXPECT_GT(found.size(), 20u);
  EXPECT_TRUE(found.contains(0xC86432));
  EXPECT_EQ(colors({.color = kColor, .isSilhouette = true}), std::set<std::uint32_t>{0xC86432});
  EXPECT_TRUE(colors({.color = kColor, .outline = 5}, u"😀").empty());
}

TEST(PangoTextRendererTest, BrokenWordsGetNoHyphen) {
  PangoTextRenderer renderer;
  const std::u16string word(40, u'i');
  const auto widest = [&](std::u16string_view text, std::int32_t width) {
    return renderer.Measure(text, FontOf(-40), width, kCaption).width;
  };
  const std::int32_t letter = widest(u"ii", 0x7FFF) - widest(u"i", 0x7FFF);
  EXPECT_EQ(widest(word, 10 * letter + 2), widest(word.substr(0, 10), 0x7FFF));
}

TEST(PangoTextRendererTest, TextThatWasCutAtTheEdgeIsWholeWhereItFits) {
  PangoTextRenderer kept, fresh;
  Sheet narrow(60, 30), whole, expected;
  for (const auto& [renderer, sheet] : {std::pair{&kept, &narrow}, {&kept, &whole}, {&fresh, &expected}}) {
    renderer->Draw(sheet->canvas, u"Caption", FontOf(-40), kColor, {0, 0, 400, 200}, DT_SINGLELINE);
  }
  EXPECT_TRUE(SamePicture(BytesOf(expected.pixmap), whole.pixmap));
}

TEST(PangoTextRendererTest, CacheServesShadowsAndLaterFramesWithinItsLimits) {
  constexpr std::size_t kBytes = 1 << 20;
  PangoTextRenderer renderer({10, kBytes});
  Sheet sheet;
  for (int frame = 0; frame < 5; ++frame) {
    renderer.Draw(sheet.canvas, u"Caption", FontOf(-40), 0x020000, {0, 50, 400, 150}, kCaption | DT_CENTER);
    renderer.Draw(sheet.canvas, u"Caption", FontOf(-40), kColor, {-2, 48, 398, 148}, kCaption | DT_CENTER);
  }
  EXPECT_EQ(renderer.GetCacheUse().rendered, 1u);
  EXPECT_EQ(renderer.GetCacheUse().layouts, 1u);
  for (int i = 0; i < 60; ++i) {
    const std::u16string text(static_cast<std::size_t>(i + 1) * 20, static_cast<char16_t>(u'a' + i % 26));
    renderer.Draw(sheet.canvas, text, FontOf(-30), kColor, {0, 0, 400, 200}, kCaption);
    EXPECT_LE(renderer.GetCacheUse().layouts, 10u);
    EXPECT_LE(renderer.GetCacheUse().bytes, kBytes);
  }
}

TEST(PangoTextRendererTest, HeightsAreEmSizesOrLineHeightsAndAnUnknownFaceStillDraws) {
  PangoTextRenderer renderer;
  for (std::int32_t height : {16, 40, 100}) {
    EXPECT_NEAR(renderer.Measure(u"Hg", FontOf(height), 0, 0).height, height, 2);
    EXPECT_GT(renderer.Measure(u"Hg", FontOf(-height), 0, 0).height, height);
  }
  EXPECT_EQ(renderer.Measure(u"Hg", FontOf(0), 0, 0),
            renderer.Measure(u"Hg", FontOf(kDefaultLineHeight), 0, 0));
  for (const char16_t* face : {u"", u"No Such Face, Really", u"\xD800,,\n"}) {
    Sheet sheet;
    Font font = FontOf(-30);
    font.face = face;
    renderer.Draw(sheet.canvas, u"Text", font, kColor, {0, 0, 400, 200}, 0);
    EXPECT_FALSE(sheet.Ink().IsEmpty());
  }
}

TEST(PangoTextRendererTest, PaintersOnTwoThreadsGetTheSamePixelsAsOnOne) {
  const auto drawAll = [](TextRenderer& renderer, Sheet& page) {
    for (int i = 0; i < 30; ++i) {
      const std::u16string text = u"Speed " + std::u16string(1, static_cast<char16_t>(u'0' + i % 10));
      renderer.Draw(page.canvas, text, FontOf(-20 - i % 3), kColor, {i * 5, i * 5, 400, 200}, DT_SINGLELINE);
    }
  };
  Sheet expected, one, two;
  PangoTextRenderer alone, shared({4, 1 << 20});
  drawAll(alone, expected);
  std::thread other([&] { drawAll(shared, two); });
  drawAll(shared, one);
  other.join();
  EXPECT_TRUE(SamePicture(BytesOf(expected.pixmap), one.pixmap));
  EXPECT_TRUE(SamePicture(BytesOf(expected.pixmap), two.pixmap));
}

}  // namespace
}  // namespace vrx::drawing
