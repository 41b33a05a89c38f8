#include "drawing/pango/GlyphOutlines.h"

namespace vrx::drawing {
namespace {

double Pixels(int units) { return static_cast<double>(units) / PANGO_SCALE; }

/// Calls `visit(font, glyph)` for each glyph of the line from left to right, with the context's current point
/// where the glyph begins. Only for pictures, or only for outlines.
template <class Visit>
void ForEachGlyph(cairo_t* context, const PangoLayoutLine& line, bool isPicture, Visit visit) {
  int x = 0;
  for (const GSList* at = line.runs; at != nullptr; at = at->next) {
    const auto* run = static_cast<const PangoGlyphItem*>(at->data);
    for (int i = 0; i < run->glyphs->num_glyphs; ++i) {
      PangoGlyphInfo& info = run->glyphs->glyphs[i];
      if ((info.attr.is_color != 0) == isPicture) {
        PangoGlyphString glyph{};
        glyph.num_glyphs = 1;
        glyph.glyphs = &info;
        cairo_move_to(context, Pixels(x), -Pixels(run->y_offset));
        visit(run->item->analysis.font, &glyph);
      }
      x += info.geometry.width;
    }
  }
}

}  // namespace

bool HasColorGlyphs(const PangoLayoutLine& line) {
  for (const GSList* at = line.runs; at != nullptr; at = at->next) {
    const PangoGlyphString* glyphs = static_cast<const PangoGlyphItem*>(at->data)->glyphs;
    for (int i = 0; i < glyphs->num_glyphs; ++i) {
      if (glyphs->glyphs[i].attr.is_color) return true;
    }
  }
  return false;
}

void ForEachOutline(cairo_t* context, const PangoLayoutLine& line, const std::function<void()>& use) {
  ForEachGlyph(context, line, false, [&](PangoFont* font, PangoGlyphString* glyph) {
    pango_cairo_glyph_string_path(context, font, glyph);
    use();
  });
}

void ShowColorGlyphs(cairo_t* context, const PangoLayoutLine& line) {
  ForEachGlyph(context, line, true, [&](PangoFont* font, PangoGlyphString* glyph) {
    pango_cairo_show_glyph_string(context, font, glyph);
  });
}

}  // namespace vrx::drawing
