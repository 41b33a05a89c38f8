// The glyphs of a laid-out line on a Cairo context whose scale is not that of the layout. Used by the text
// layout for text that is drawn at the frame's own resolution.
#pragma once

#include "drawing/pango/PangoHandles.h"

namespace vrx::drawing {

/// Adds the outlines of the line's glyphs to the path, with the line's start on the baseline at the origin of
/// the context. Glyphs that are pictures with colours of their own are left out, and with them the lines
/// through a text that holds any.
void AddOutlines(cairo_t* context, PangoLayoutLine* line);

/// Draws those pictures.
void ShowColorGlyphs(cairo_t* context, PangoLayoutLine* line);

bool HasColorGlyphs(const PangoGlyphString& glyphs);
bool HasColorGlyphs(const PangoLayoutLine& line);

}  // namespace vrx::drawing
