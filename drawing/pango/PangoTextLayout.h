// A text laid out into lines, and the coverage of what is seen of it. Used by PangoTextRenderer only.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "drawing/Coverage.h"
#include "drawing/pango/PangoFonts.h"

namespace vrx::drawing {

class PangoTextLayout {
 public:
  /// `wrapWidth` in pixels, 0 or less for lines that don't wrap.
  PangoTextLayout(PangoFonts& fonts, std::u16string_view text, const Font& font, std::int32_t wrapWidth,
                  std::uint32_t format);

  const std::vector<Size>& GetLineSizes() const { return m_sizes; }
  /// Some glyphs bring their own colours, so the coverage depends on the text's colour.
  bool IsColored() const { return m_colored; }

  /// Where ink falls, for the first `lineCount` lines in a rectangle of `rectWidth`; relative to the
  /// rectangle's left edge and the first line's top.
  Rect InkBox(std::size_t lineCount, std::int64_t rectWidth, std::uint32_t format) const;
  /// The part of the text inside `box`, which must not be empty. Null when there is no memory for it.
  std::shared_ptr<const Coverage> Render(const Rect& box, std::size_t lineCount, std::int64_t rectWidth,
                                         std::uint32_t format, ColorRef color) const;

 private:
  struct Line {
    PangoLayoutLine* line;  // owned by the layout
    std::int32_t ascent;    // from the line's top to its baseline, pixels
    Rect ink;               // relative to the line's start on the baseline
  };
  void Measure();
  void Paint(cairo_t* context, const Rect& box, std::size_t lineCount, std::int64_t rectWidth,
             std::uint32_t format) const;

  PangoOwned<PangoLayout> m_layout;
  std::vector<Line> m_lines;
  std::vector<Size> m_sizes;
  double m_emPixels = 0;
  bool m_smooth;
  bool m_colored = false;
};

}  // namespace vrx::drawing
