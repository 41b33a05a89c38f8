#include "drawing/pango/GlyphOutlines.h"

namespace vrx::drawing {
namespace {

/// Calls `draw` with the font and the glyphs of each run that is or is not a picture; the current point is
/// the run's start.
template <class Draw>
void ForEachRun(cairo_t* context, const PangoLayoutLine& line, bool isPicture, Draw draw) {
  double x = 0.0;
  for (const GSList* at = line.runs; at != nullptr; at = at->next) {
    const auto* run = static_cast<const PangoGlyphItem*>(at->data);
    if (HasColorGlyphs(*run->glyphs) == isPicture) {
      cairo_move_to(context, x, -static_cast<double>(run->y_offset) / PANGO_SCALE);
      draw(run->item->analysis.font, run->glyphs);
    }
    x += static_cast<double>(pango_glyph_string_get_width(run->glyphs)) / PANGO_SCALE;
  }
}

}  // namespace

bool HasColorGlyphs(const PangoGlyphString& glyphs) {
  for (int i = 0; i < glyphs.num_glyphs; ++i) {
    if (glyphs.glyphs[i].attr.is_color) return true;
  }
  return false;
}

bool HasColorGlyphs(const PangoLayoutLine& line) {
  for (const GSList* run = line.runs; run != nullptr; run = run->next) {
    if (HasColorGlyphs(*static_cast<const PangoGlyphItem*>(run->data)->glyphs)) return true;
  }
  return false;
}

void AddOutlines(cairo_t* context, PangoLayoutLine* line) {
  if (!HasColorGlyphs(*line)) {
    cairo_move_to(context, 0, 0);
    pango_cairo_layout_line_path(context, line);
    return;
  }
  ForEachRun(context, *line, false, [&](PangoFont* font, PangoGlyphString* glyphs) {
    pango_cairo_glyph_string_path(context, font, glyphs);
  });
}

void ShowColorGlyphs(cairo_t* context, PangoLayoutLine* line) {
  ForEachRun(context, *line, true, [&](PangoFont* font, PangoGlyphString* glyphs) {
    pango_cairo_show_glyph_string(context, font, glyphs);
  });
}

}  // namespace vrx::drawing
