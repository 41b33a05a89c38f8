// A clear overlay with a canvas on it, and what was drawn there, for the tests of drawings.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "drawing/Canvas.h"

namespace vrx::drawing {

/// 0xAARRGGBB
inline std::uint32_t PixelAt(const XpPixmap32& pixmap, std::int32_t x, std::int32_t y) {
  std::uint32_t pixel = 0;
  std::memcpy(&pixel, pixmap.GetPlane(0)->Row(y) + x * 4, sizeof pixel);
  return pixel;
}

/// The smallest rectangle with all pixels that aren't four zero bytes.
inline Rect InkOf(const XpPixmap32& pixmap) {
  Rect ink{INT32_MAX, INT32_MAX, INT32_MIN, INT32_MIN};
  const unsigned char* p = pixmap.data;
  for (std::int32_t y = 0; y < pixmap.height; ++y) {
    for (std::int32_t x = 0; x < pixmap.width; ++x, p += 4) {
      if ((p[0] | p[1] | p[2] | p[3]) == 0) continue;
      ink = {std::min(ink.left, x), std::min(ink.top, y), std::max(ink.right, x + 1),
             std::max(ink.bottom, y + 1)};
    }
  }
  return ink.right == INT32_MIN ? Rect() : ink;
}

struct Sheet {
  explicit Sheet(std::int32_t width = 400, std::int32_t height = 200) {
    EXPECT_EQ(pixmap.Allocate(width, height), XpOk);
    canvas.Bind(pixmap.GetBitmapHandle());
  }
  std::uint32_t At(std::int32_t x, std::int32_t y) const { return PixelAt(pixmap, x, y); }
  bool IsSet(std::int32_t x, std::int32_t y) const { return At(x, y) != 0; }
  Rect Ink() const { return InkOf(pixmap); }

  XpPixmap32 pixmap;
  Canvas canvas;
};

}  // namespace vrx::drawing
