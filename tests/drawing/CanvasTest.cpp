#include "drawing/Canvas.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "imaging/pixmap/XpPixmapBlock.h"
#include "tests/drawing/Sheet.h"
#include "tests/imaging/RandomPixmap.h"

namespace vrx::drawing {
namespace {

constexpr ColorRef kOrange = MakeColor(0xFF, 0x73, 0x00);

int CountSet(const Sheet& sheet) {
  int count = 0;
  for (std::int32_t i = 0; i < sheet.pixmap.width * sheet.pixmap.height; ++i) {
    count += sheet.IsSet(i % sheet.pixmap.width, i / sheet.pixmap.width);
  }
  return count;
}

/// Each pixel whose centre lies within half the width of a segment, tested one by one.
bool IsOnStroke(const std::vector<Point>& points, std::int32_t width, std::int32_t x, std::int32_t y) {
  const double shift = width % 2 == 0 ? -0.5 : 0;
  for (std::size_t i = 1; i < points.size(); ++i) {
    const double ax = points[i - 1].x + shift, ay = points[i - 1].y + shift;
    const double dx = points[i].x + shift - ax, dy = points[i].y + shift - ay;
    const double square = dx * dx + dy * dy;
    const double t = square == 0 ? 0 : std::clamp(((x - ax) * dx + (y - ay) * dy) / square, 0.0, 1.0);
    if (std::hypot(x - ax - t * dx, y - ay - t * dy) <= width / 2.0 + 1e-6) return true;
  }
  return false;
}

TEST(CanvasTest, WidePensDrawRoundedLinesOfTheirExactColourAndNothingElse) {
  std::mt19937 random(5);
  for (int round = 0; round < 200; ++round) {
    Sheet sheet(67, 41);
    const std::int32_t width = Between(random, 2, 12);
    std::vector<Point> points(static_cast<std::size_t>(Between(random, 2, 5)));
    for (Point& p : points) p = {Between(random, -30, 90), Between(random, -30, 70)};
    sheet.canvas.DrawPolyline(points, {kOrange, width});
    for (std::int32_t y = 0; y < 41; ++y) {
      for (std::int32_t x = 0; x < 67; ++x) {
        const std::uint32_t expected = IsOnStroke(points, width, x, y) ? 0xFFFF7300u : 0u;
        ASSERT_EQ(sheet.At(x, y), expected)
            << "round " << round << " width " << width << " at " << x << "," << y;
      }
    }
  }
}

TEST(CanvasTest, ThinLinesHaveOnePixelAStepOnTheLineAndLeaveTheEndOut) {
  std::mt19937 random(6);
  for (int round = 0; round < 300; ++round) {
    const Point from{Between(random, 0, 40), Between(random, 0, 40)},
        to{Between(random, 0, 40), Between(random, 0, 40)};
    SCOPED_TRACE(testing::Message() << from.x << "," << from.y << " to " << to.x << "," << to.y);
    Sheet whole(41, 41);
    const std::int32_t width = Between(random, -1, 1);  // all of them draw the thinnest line
    whole.canvas.DrawLine(from, to, {kOrange, width});
    EXPECT_EQ(CountSet(whole), std::max(std::abs(to.x - from.x), std::abs(to.y - from.y)));
    EXPECT_FALSE(whole.IsSet(to.x, to.y));
    if (from != to) {
      EXPECT_EQ(whole.At(from.x, from.y), 0xFFFF7300u);
    }
    const double length = std::hypot(to.x - from.x, to.y - from.y);
    for (std::int32_t y = 0; y < 41; ++y) {
      for (std::int32_t x = 0; x < 41; ++x) {
        if (!whole.IsSet(x, y)) continue;
        const double across =
            std::abs((to.x - from.x) * (y - from.y) - (to.y - from.y) * (x - from.x)) / length;
        ASSERT_LE(across, 0.5 + 1e-9) << "beside the line at " << x << "," << y;
      }
    }
    // A smaller canvas shows the same pixels of it.
    Sheet part(20, 20);
    part.canvas.DrawLine({from.x - 10, from.y - 10}, {to.x - 10, to.y - 10}, {kOrange, 1});
    for (std::int32_t y = 0; y < 20; ++y) {
      for (std::int32_t x = 0; x < 20; ++x) ASSERT_EQ(part.At(x, y), whole.At(x + 10, y + 10));
    }
  }
}

TEST(CanvasTest, EllipsesFillTheirBoundsSymmetricallyWithAClosedEdge) {
  for (std::int32_t width = 1; width < 34; ++width) {
    for (std::int32_t height : {1, 2, 3, 8, width, 29}) {
      SCOPED_TRACE(testing::Message() << width << "x" << height);
      Sheet sheet(40, 40);
      sheet.canvas.DrawEllipse({3 + width, 4 + height, 3, 4}, {MakeColor(255, 255, 255), 1}, Brush{kOrange});
      for (std::int32_t y = 0; y < 40; ++y) {
        for (std::int32_t x = 0; x < 40; ++x) {
          if (!sheet.IsSet(x, y)) continue;
          ASSERT_EQ(sheet.At(x, y), sheet.At(2 * 3 + width - 1 - x, y)) << x << "," << y;
          ASSERT_EQ(sheet.At(x, y), sheet.At(x, 2 * 4 + height - 1 - y)) << x << "," << y;
          if (sheet.At(x, y) != 0xFFFF7300u) continue;
          for (const Point n : {Point{x - 1, y}, Point{x + 1, y}, Point{x, y - 1}, Point{x, y + 1}}) {
            ASSERT_TRUE(sheet.IsSet(n.x, n.y)) << "a hole in the edge at " << n.x << "," << n.y;
          }
        }
      }
      EXPECT_EQ(sheet.Ink(), (Rect{3, 4, 3 + width, 4 + height}));
    }
  }
  Sheet ring(40, 40);
  ring.canvas.DrawEllipse({5, 5, 35, 35}, {kOrange, 4}, std::nullopt);
  for (const auto& [x, isSet] : {std::pair{20, false}, {2, false}, {3, true}, {6, true}, {7, false}}) {
    EXPECT_EQ(ring.IsSet(x, 20), isSet) << x;
  }
  ring.canvas.DrawEllipse({9, 9, 9, 20}, {kOrange, 1}, Brush{kOrange});
  EXPECT_FALSE(ring.IsSet(9, 15));
}

TEST(CanvasTest, PolygonsFillLikeRectanglesAndByTheEvenOddRule) {
  Sheet a(30, 30), b(30, 30);
  a.canvas.FillRect({-5, 3, 12, 50}, {kOrange});
  const Point corners[] = {{-5, 3}, {12, 3}, {12, 50}, {-5, 50}};
  b.canvas.FillPolygon(corners, {kOrange});
  EXPECT_TRUE(SamePicture(BytesOf(a.pixmap), b.pixmap));
  EXPECT_EQ(CountSet(a), 12 * 27);
  const Point twice[] = {{2, 2},   {28, 2},  {28, 28}, {2, 28},  {2, 2},
                         {10, 10}, {20, 10}, {20, 20}, {10, 20}, {10, 10}};
  Sheet frame(30, 30);
  frame.canvas.FillPolygon(twice, {kOrange});
  EXPECT_FALSE(frame.IsSet(15, 15));
  EXPECT_EQ(CountSet(frame), 26 * 26 - 10 * 10);
}

TEST(CanvasTest, ExtremeShapesStayInsideTheBitmap) {
  constexpr std::int32_t kMax = INT32_MAX, kMin = INT32_MIN;
  Sheet sheet(16, 16);
  Canvas nowhere;
  for (Canvas* canvas : {&sheet.canvas, &nowhere}) {
    for (std::int32_t width : {1, 7, kMax, kMin}) {
      for (std::int32_t a : {kMin, -1, 5, kMax}) {
        for (std::int32_t b : {kMin, 0, 300, kMax}) {
          const Point points[] = {{a, b}, {b, a}, {a, a}, {b, b}, {kMax, kMin}};
          canvas->DrawPolyline(points, {kOrange, width});
          canvas->FillPolygon(points, {kOrange});
          canvas->FillRect({a, b, b, a}, {kOrange});
          canvas->DrawEllipse({a, a, b, b}, {kOrange, width}, Brush{kOrange});
        }
      }
    }
  }
  Sheet diagonal(16, 16);
  diagonal.canvas.DrawLine({-1000000, -1000000}, {1000000, 1000000}, {kOrange, 1});
  EXPECT_EQ(CountSet(diagonal), 16);
  EXPECT_TRUE(diagonal.IsSet(9, 9));
}

std::uint8_t Scaled255(unsigned product) { return static_cast<std::uint8_t>((product + 127) / 255); }

std::array<std::uint8_t, 4> BlendedPlainly(std::array<std::uint8_t, 4> d, std::array<std::uint8_t, 4> s,
                                           unsigned constant, bool perPixel) {
  if (!perPixel) s[3] = 255;
  for (auto& byte : s) byte = Scaled255(byte * constant);
  for (std::size_t c = 0; c < 4; ++c) {
    d[c] = static_cast<std::uint8_t>(std::min(255, s[c] + Scaled255(d[c] * (255u - s[3]))));
  }
  return d;
}

TEST(CanvasTest, PicturesComposeLikeThePlainLoopInEveryFormatAndScale) {
  std::mt19937 random(7);
  for (int round = 0; round < 600; ++round) {
    XpPixmap32 wide, wideSource;
    XpPixmap24 narrow, narrowSource;
    const bool dest24 = random() % 3 == 0, source24 = random() % 3 == 0;
    XpPixmapBase& dest = dest24 ? static_cast<XpPixmapBase&>(narrow) : wide;
    XpPixmapBase& source = source24 ? static_cast<XpPixmapBase&>(narrowSource) : wideSource;
    const auto [dw, dh] = kOddSizes[random() % kOddSizes.size()];
    const auto [sw, sh] = kOddSizes[random() % kOddSizes.size()];
    ASSERT_EQ(dest.Allocate(dw, dh), XpOk);
    ASSERT_EQ(source.Allocate(sw, sh), XpOk);
    FillRandom(dest, random);
    FillRandom(source, random);
    Rect from{Between(random, 0, sw - 1), Between(random, 0, sh - 1), 0, 0};
    from.right = Between(random, from.left + 1, sw);
    from.bottom = Between(random, from.top + 1, sh);
    Rect to{Between(random, -dw, dw), Between(random, -dh, dh), 0, 0};
    to.right = to.left + (round % 2 == 0 ? Between(random, 1, 2 * dw) : from.right - from.left);
    to.bottom = to.top + (round % 2 == 0 ? Between(random, 1, 2 * dh) : from.bottom - from.top);
    const auto constant = static_cast<std::uint8_t>(random() % 2 == 0 ? 255 : random());
    const bool perPixel = random() % 4 != 0;
    const auto key = MakeColor(1, 2, 3);
    for (std::uint32_t i = 0; i + 2 < source.size; i += source24 ? 9 : 12)
      source.data[i] = 3, source.data[i + 1] = 2, source.data[i + 2] = 1;
    const int kind = round % 3;
    const Block block{to.left,   to.top,   to.right - to.left,     to.bottom - to.top,
                      from.left, from.top, from.right - from.left, from.bottom - from.top};
    const Bytes expected =
        ComposedPlainly(dest, source, block, [&](unsigned char* under, const unsigned char* over) {
          std::array<std::uint8_t, 4> d{0, 0, 0, 255}, s = d;
          std::copy_n(under, dest24 ? 3 : 4, d.begin());
          std::copy_n(over, source24 ? 3 : 4, s.begin());
          const bool isKey = s[0] == 3 && s[1] == 2 && s[2] == 1;
          if (kind == 0) d = BlendedPlainly(d, s, constant, perPixel);
          if (kind == 1 && !isKey) d = {s[0], s[1], s[2], 255};
          if (kind == 2) d = s;
          std::copy_n(d.begin(), dest24 ? 3 : 4, under);
        });
    Canvas canvas(dest.GetBitmapHandle());
    const bool drawn = kind == 0   ? canvas.AlphaBlend(to, source.GetBitmapHandle(), from, constant, perPixel)
                       : kind == 1 ? canvas.TransparentBlt(to, source.GetBitmapHandle(), from, key)
                                   : canvas.StretchBlt(to, source.GetBitmapHandle(), from);
    ASSERT_TRUE(drawn);
    ASSERT_TRUE(SamePicture(expected, dest)) << "round " << round << " kind " << kind << " at " << block;
  }
}

TEST(CanvasTest, PicturesThatCannotBeComposedAreRefused) {
  Sheet dest(8, 8), source(4, 4);
  FillPixmap(source.pixmap, 1, 2, 3, 255);
  const XpBitmapHandle handle = source.pixmap.GetBitmapHandle();
  EXPECT_FALSE(dest.canvas.AlphaBlend({0, 0, 4, 4}, nullptr, {0, 0, 4, 4}));
  EXPECT_FALSE(dest.canvas.AlphaBlend({0, 0, 4, 4}, handle, {0, 0, 5, 4}));
  EXPECT_FALSE(dest.canvas.AlphaBlend({0, 0, 4, 4}, handle, {-1, 0, 4, 4}));
  EXPECT_FALSE(dest.canvas.AlphaBlend({4, 0, 0, 4}, handle, {0, 0, 4, 4}));
  EXPECT_FALSE(dest.canvas.StretchBlt({0, 0, 4, 4}, handle, {2, 2, 2, 2}));
  EXPECT_FALSE(dest.canvas.AlphaBlend({0, 0, 4, 4}, dest.pixmap.GetBitmapHandle(), {0, 0, 4, 4}));
  EXPECT_FALSE(Canvas().StretchBlt({0, 0, 4, 4}, handle, {0, 0, 4, 4}));
  EXPECT_EQ(CountSet(dest), 0);
  EXPECT_TRUE(dest.canvas.AlphaBlend({INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX}, handle, {0, 0, 4, 4}));
  EXPECT_EQ(CountSet(dest), 64);
}

}  // namespace
}  // namespace vrx::drawing
