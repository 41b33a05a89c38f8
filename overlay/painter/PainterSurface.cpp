#include "overlay/painter/PainterSurface.h"

#include <algorithm>

#include "imaging/pixmap/XpPixmapOverlay.h"

namespace vrx::overlay {

using namespace drawing;

PainterSurface::PainterSurface(XpPixmap32& target, TextRenderer& text, PictureRenditions& renditions)
    : m_target(target), m_text(text), m_renditions(renditions), m_canvas(target.GetBitmapHandle()) {}

void PainterSurface::Overlay(const PainterPicture& picture, const Rect& rect) {
  const std::int32_t width = Saturated(rect.Width()), height = Saturated(rect.Height());
  const XpPixmap32* rendition = m_renditions.Get(picture, width, height);
  if (rendition == nullptr) return;
  OverlaySmoothPixmap(m_target, rect.left, rect.top, width, height, *rendition, width, height);
  Touch(rect);
}

void PainterSurface::Text(std::u16string_view text, const Font& font, ColorRef color, const Rect& rect,
                          std::uint32_t format) {
  m_text.Draw(m_canvas, text, font, color, rect, format);
  Touch(rect);
}

void PainterSurface::VerticalLine(Point top, std::int32_t bottom, ColorRef color) {
  m_canvas.DrawLine(top, {top.x, bottom}, {color, 1});
  Touch({top.x, std::min(top.y, bottom), top.x + 1, std::max(top.y, bottom) + 1});
}

void PainterSurface::Touch(const Rect& rect) {
  const Rect visible = Intersect(rect, m_canvas.GetClipBox());
  m_touched = Unite(m_touched, visible);
}

}  // namespace vrx::overlay
