// The glyphs of a laid-out line on a Cairo context whose scale is not that of the layout. Used by the text
// layout for text that is drawn at the frame's own resolution.
#pragma once

#include <functional>

#include "drawing/pango/PangoHandles.h"

namespace vrx::drawing {

/// Puts the outline of each of the line's glyphs on the context's path and calls `use` for it, with the
/// line's start on the baseline at the origin of the context. Glyphs that are pictures with colours of their
/// own are left out.
void ForEachOutline(cairo_t* context, const PangoLayoutLine& line, const std::function<void()>& use);

/// Draws those pictures.
void ShowColorGlyphs(cairo_t* context, const PangoLayoutLine& line);

bool HasColorGlyphs(const PangoLayoutLine& line);

}  // namespace vrx::drawing
