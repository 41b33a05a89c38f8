// The fonts of one text renderer: its own font map, so that renderers share nothing, and the fonts used last.
// Not locked: the renderer is.
#pragma once

#include "drawing/LruCache.h"
#include "drawing/TextRenderer.h"
#include "drawing/pango/OutlineRaster.h"
#include "drawing/pango/PangoHandles.h"

namespace vrx::drawing {

/// UTF-16 units of a face that are looked at.
inline constexpr std::size_t kMaxFaceUnits = 256;

class PangoFonts {
 public:
  PangoFonts();

  struct Entry {
    Font font;
    PangoOwned<PangoFontDescription> description;  // with the em size set
    double emPixels;
  };
  /// The entry is valid until the next call.
  const Entry& Resolve(const Font& font);
  /// Lays out with or without smoothing.
  PangoContext* GetContext(bool smooth) { return smooth ? m_smooth.get() : m_unsmoothed.get(); }

  OutlineRaster& GetRaster() { return m_raster; }

 private:
  double EmOfLineHeight(const PangoFontDescription* description, std::int32_t lineHeight);

  PangoOwned<PangoFontMap> m_map;
  PangoOwned<PangoContext> m_smooth;
  PangoOwned<PangoContext> m_unsmoothed;
  LruCache<Entry> m_entries;
  OutlineRaster m_raster;
};

}  // namespace vrx::drawing
