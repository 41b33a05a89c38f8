// A text that is laid out in one resolution and drawn in another: the lines break as on the canvas that a
// document's sizes are meant for, and the edges are those of the frame. Used by the painters of captions and
// of the speed graph.
#pragma once

#include <cstdint>
#include <string_view>

#include "drawing/Color.h"
#include "drawing/Geometry.h"

namespace vrx::drawing {

struct Font;

/// From the pixels of the layout to those of the bitmap that is drawn on: x' = left + x * xFactor, and so for
/// y. Without factors above zero, and with one beyond any frame's, nothing is drawn.
struct TextScale {
  double xFactor = 1.0;
  double yFactor = 1.0;
  double left = 0.0;
  double top = 0.0;
  bool IsUsable() const;
  friend bool operator==(const TextScale&, const TextScale&) = default;
};

/// The pixels of the bitmap that a rectangle of the layout touches.
Rect ScaledOutwards(const Rect& rect, const TextScale& scale);

/// `rect` in pixels of the layout, as TextRenderer::Draw takes it.
struct ScaledText {
  std::u16string_view text;
  const Font& font;
  Rect rect;
  std::uint32_t format = 0;
  TextScale scale;
};

struct TextInk {
  ColorRef color = 0;
  double outline = 0.0;       // drawn around the letters as well, pixels of the layout, see LimitOutline
  std::uint8_t alpha = 255;   // of the whole
  Point offset;               // moves the drawn picture as it is, pixels of the bitmap
  bool isSilhouette = false;  // glyphs with colours of their own get `color` too
};

inline constexpr double kWidestOutline = 100.0;
/// The outline that letters get: from 0 to the widest, and no wider than their em size, since it would hide
/// them. A text of more than 2048 code units gets none: no frame shows as many, and drawing them takes
/// seconds.
double LimitOutline(double outline, double emPixels, std::u16string_view text);

}  // namespace vrx::drawing
