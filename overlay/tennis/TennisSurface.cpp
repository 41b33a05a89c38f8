#include "overlay/tennis/TennisSurface.h"

#include <algorithm>

#include "imaging/pixmap/XpPixmapOverlay.h"

namespace vrx::overlay {

using namespace drawing;

TennisSurface::TennisSurface(XpPixmap32& target, TextRenderer& text, bool saveMovieMode)
    : m_target(target), m_text(text), m_canvas(target.GetBitmapHandle()), m_saveMovieMode(saveMovieMode) {}

void TennisSurface::Overlay(const PainterPicture& picture, const Rect& rect) {
  if (!picture) return;
  if (const auto* straight = dynamic_cast<const XpPixmap32*>(picture.Get())) {
    OverlaySmoothPixmap(m_target, rect.left, rect.top, Saturated(rect.Width()), Saturated(rect.Height()),
                        *straight, straight->width, straight->height);
  } else {
    m_canvas.StretchBlt(rect, picture->GetBitmapHandle(), {0, 0, picture->width, picture->height});
  }
  Touch(rect);
}

void TennisSurface::Blend(const PainterPicture& picture, const Rect& rect) {
  if (m_saveMovieMode) return Overlay(picture, rect);
  if (!picture) return;
  m_canvas.AlphaBlend(rect, picture->GetBitmapHandle(), {0, 0, picture->width, picture->height});
  Touch(rect);
}

void TennisSurface::Text(std::u16string_view text, const Font& font, ColorRef color, const Rect& rect,
                         std::uint32_t format) {
  m_text.Draw(m_canvas, text, font, color, rect, format);
  Touch(rect);
}

void TennisSurface::VerticalLine(Point top, std::int32_t bottom, ColorRef color) {
  m_canvas.DrawLine(top, {top.x, bottom}, {color, 1});
  Touch({top.x, std::min(top.y, bottom), top.x + 1, std::max(top.y, bottom) + 1});
}

void TennisSurface::Touch(const Rect& rect) {
  const Rect visible = Intersect(rect, m_canvas.GetClipBox());
  if (visible.IsEmpty()) return;
  if (m_touched.IsEmpty()) {
    m_touched = visible;
    return;
  }
  m_touched = {std::min(m_touched.left, visible.left), std::min(m_touched.top, visible.top),
               std::max(m_touched.right, visible.right), std::max(m_touched.bottom, visible.bottom)};
}

}  // namespace vrx::overlay
