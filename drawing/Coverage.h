// A drawn text as it is kept and laid on a canvas: how much of each pixel its glyphs cover. Used by the text
// renderers.
#pragma once

#include <cstdint>
#include <vector>

#include "drawing/Color.h"
#include "drawing/Geometry.h"
#include "imaging/pixmap/XpBitmap.h"

namespace vrx::drawing {

/// Rows from the top without padding: one byte of coverage a pixel, or blue, green, red, alpha where glyphs
/// bring their own colours.
struct Coverage {
  Rect box;  // relative to where the text begins
  bool colored = false;
  std::vector<unsigned char> bytes;
};

/// Lays `coverage` on the bitmap with its origin at `origin`, inside `clip`. `color` is that of the text; a
/// coloured coverage brings its own. `alpha` is that of the whole.
void Compose(const XpBitmap& bitmap, const Coverage& coverage, Point origin, const Rect& clip, ColorRef color,
             std::uint8_t alpha = 255);

/// Lays one colour on `count` pixels by their coverage. `dest` has the bytes per pixel of `format`.
void ComposeRow(unsigned char* dest, XpBitmapFormat format, const unsigned char* coverage, std::size_t count,
                ColorRef color);

}  // namespace vrx::drawing
