// A text laid out into lines, and the coverage of what is seen of it. Used by PangoTextRenderer only.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "drawing/Coverage.h"
#include "drawing/pango/PangoFonts.h"

namespace vrx::drawing {

/// The part of a layout that a coverage shows, and how. Places are relative to where the text begins: the
/// rectangle's left edge and the first line's top.
struct TextView {
  Rect box;  // pixels of the layout, or of the bitmap when scaled
  std::size_t lineCount = 0;
  std::int64_t rectWidth = 0;  // pixels of the layout
  std::uint32_t format = 0;
  ColorRef color = 0;  // counts where glyphs have colours of their own
  bool isScaled = false;
  TextScale scale;       // from where the text begins; its start is a fraction of a pixel
  double outline = 0.0;  // pixels of the layout
  bool isSilhouette = false;
  friend bool operator==(const TextView&, const TextView&) = default;
};

class PangoTextLayout {
 public:
  /// `fonts` must outlive the layout. `wrapWidth` in pixels, 0 or less for lines that don't wrap.
  PangoTextLayout(PangoFonts& fonts, std::u16string_view text, const Font& font, std::int32_t wrapWidth,
                  std::uint32_t format);

  const std::vector<Size>& GetLineSizes() const { return m_sizes; }
  double GetEmPixels() const { return m_emPixels; }
  /// Some glyphs bring their own colours, so the coverage depends on the text's colour.
  bool IsColored() const { return m_colored; }

  /// Where ink falls when the view is drawn; its `box` is not looked at.
  Rect InkBox(const TextView& view) const;
  /// What lies in the view's box, which must not be empty. Null when there is no memory for it.
  std::shared_ptr<const Coverage> Render(const TextView& view) const;

 private:
  struct Line {
    PangoLayoutLine* line;  // owned by the layout
    std::int32_t ascent;    // from the line's top to its baseline, pixels
    Rect ink;               // relative to the line's start on the baseline
  };
  void Measure();
  /// Calls `visit(line, left, baseline)` for each line of the view that has ink, in pixels of the layout.
  template <class Visit>
  void ForEachLine(const TextView& view, Visit visit) const;
  void Paint(cairo_t* context, const TextView& view) const;
  void PaintScaled(cairo_t* context, cairo_surface_t* surface, const TextView& view) const;

  OutlineRaster& m_raster;
  PangoOwned<PangoLayout> m_layout;
  std::vector<Line> m_lines;
  std::vector<Size> m_sizes;
  double m_emPixels = 0;
  bool m_smooth;
  bool m_colored = false;
};

}  // namespace vrx::drawing
