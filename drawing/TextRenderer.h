// Text for the painters: measuring it and drawing it into a rectangle of a canvas. Painters hold a reference
// to this interface; the movie is made with PangoTextRenderer, tests can take BoxTextRenderer.
#pragma once

#include <cstdint>
#include <string_view>

#include "drawing/Canvas.h"
#include "drawing/Color.h"
#include "drawing/Geometry.h"
#include "drawing/ScaledText.h"
#include "drawing/TextFormat.h"
#include "vrx/XpString.h"

namespace vrx::drawing {

struct Font {
  XpString face;            // empty or unknown: the system's choice
  std::int32_t height = 0;  // pixels: negative the em size, positive the line height, 0 kDefaultLineHeight
  std::int32_t weight = 400;
  bool italic = false;
  bool underline = false;
  bool strikeOut = false;
  bool smooth = true;  // false: no pixel is covered in part
  friend bool operator==(const Font&, const Font&) = default;
};

inline constexpr std::int32_t kDefaultLineHeight = 16;  // pixels
/// What comes after this many code units of a text is neither measured nor drawn. Fonts of more than 32
/// pixels get fewer, in proportion: no frame shows as many.
inline constexpr std::size_t kMaxTextUnits = 16384;
/// Larger fonts are drawn at this em size.
inline constexpr std::int32_t kMaxEmPixels = 4096;

/// Safe to share between threads that draw on different canvases. Glyphs blend into opaque pixels by their
/// coverage; over transparent ones the result has the text's pure colour with the coverage as alpha. Pixels
/// that no glyph touches stay as they are, so a clear canvas keeps its zero bytes, and no pixel comes out
/// with a colour but alpha 0.
class TextRenderer {
 public:
  virtual ~TextRenderer() = default;

  /// Width of the widest line and height of all lines, in pixels. `width` is where DT_WORDBREAK wraps; the
  /// vertical and horizontal alignment bits have no influence. An empty text is one line high.
  virtual Size Measure(std::u16string_view text, const Font& font, std::int32_t width,
                       std::uint32_t format) = 0;

  /// The lines that Measure measures.
  virtual std::size_t CountLines(std::u16string_view text, const Font& font, std::int32_t width,
                                 std::uint32_t format) = 0;

  /// Draws into `rect`, clipped to it unless DT_NOCLIP is given. An empty or inverted `rect` draws nothing.
  /// With DT_EDITCONTROL, lines after the first that don't fit into the height are left out.
  virtual void Draw(const Canvas& canvas, std::u16string_view text, const Font& font, ColorRef color,
                    const Rect& rect, std::uint32_t format) = 0;

  /// Lays the text out as Draw does and draws the outlines of its glyphs at the resolution of the canvas.
  /// Only `clip`, in pixels of the canvas, cuts it. Lines under and through the text are not drawn. Baselines
  /// lie on whole rows. The result holds every pixel that was touched; empty when nothing was drawn.
  virtual Rect DrawScaled(const Canvas& canvas, const ScaledText& text, const TextInk& ink,
                          const Rect& clip) = 0;

  /// With DT_CALCRECT measures, and moves the right and bottom edges of `rect` to the text's; otherwise
  /// draws. The result is the height of the text.
  std::int32_t DrawText(const Canvas& canvas, std::u16string_view text, const Font& font, ColorRef color,
                        Rect& rect, std::uint32_t format);
};

}  // namespace vrx::drawing
