// Shapes and pictures drawn in place on the memory of a pixmap. Painters draw everything but text with this,
// and hand it to a TextRenderer for the text.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "drawing/Color.h"
#include "drawing/Geometry.h"
#include "imaging/pixmap/XpBitmap.h"

namespace vrx::drawing {

/// Borrows the memory: it must not be drawn on after its pixmap is released or allocated again. Everything is
/// clipped to the bitmap. Shapes have the exact colour asked for, no smoothing, and alpha 255; coordinates
/// beyond +-2^26 count as that. A canvas has no lock and belongs to one thread at a time.
class Canvas {
 public:
  /// A null handle gives a canvas on which nothing is drawn.
  explicit Canvas(XpBitmapHandle bitmap = nullptr) { Bind(bitmap); }
  void Bind(XpBitmapHandle bitmap);

  const XpBitmap& GetBitmap() const { return m_bitmap; }
  Rect GetClipBox() const { return {0, 0, m_bitmap.width, m_bitmap.height}; }

  /// A line of width 1 leaves out its end point, so that joined lines touch each pixel once; a wider one has
  /// round ends. Of an even width, the odd row or column lies left of and above the line.
  void DrawLine(Point from, Point to, const Pen& pen);
  /// The lines between neighbouring points; fewer than two points draw nothing.
  void DrawPolyline(std::span<const Point> points, const Pen& pen);
  /// The ellipse that fills `bounds`: the pen on its edge, the brush inside. Without a brush the inside
  /// stays.
  void DrawEllipse(Rect bounds, const Pen& pen, const std::optional<Brush>& brush);
  void FillRect(const Rect& rect, const Brush& brush);
  /// Fills by the even-odd rule; like a rectangle, without the right and bottom edges.
  void FillPolygon(std::span<const Point> points, const Brush& brush);

  /// Composes `from` of `source`, scaled to `to` by nearest neighbour, as premultiplied colours: each byte,
  /// alpha included, becomes s * c / 255 + d * (255 - a * c / 255) / 255, rounded, at most 255, with the
  /// constant `alpha` c. Without `perPixel`, and for a 24-bit source, a is 255. False, and nothing drawn,
  /// when a rectangle is empty, `from` leaves the source, or the source is the canvas itself.
  bool AlphaBlend(const Rect& to, XpBitmapHandle source, const Rect& from, std::uint8_t alpha = 255,
                  bool perPixel = true);
  /// Copies the pixels whose colour is not `key`, and makes them opaque; otherwise like AlphaBlend.
  bool TransparentBlt(const Rect& to, XpBitmapHandle source, const Rect& from, ColorRef key);
  /// Copies all pixels, with the alpha of the source; a 24-bit source comes out opaque.
  bool StretchBlt(const Rect& to, XpBitmapHandle source, const Rect& from);

 private:
  void FillSpan(std::int64_t y, std::int64_t first, std::int64_t last, ColorRef color);
  void DrawThinLine(Point from, Point to, ColorRef color);
  void DrawWideLine(Point from, Point to, const Pen& pen);

  XpBitmap m_bitmap;
  std::vector<double> m_crossings;  // of one row of a polygon, kept between calls
};

}  // namespace vrx::drawing
