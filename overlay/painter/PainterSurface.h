// Draws the parts of an overlay on a pixmap and remembers where something was drawn. The painters of pictures
// and texts use it.
#pragma once

#include <string_view>

#include "drawing/TextRenderer.h"
#include "imaging/pixmap/XpPixmap.h"
#include "overlay/resources/PictureRenditions.h"

namespace vrx::overlay {

class PainterSurface {
 public:
  /// All of it must outlive the surface.
  PainterSurface(XpPixmap32& target, drawing::TextRenderer& text, PictureRenditions& renditions);

  XpPixmap32& GetTarget() { return m_target; }
  drawing::TextRenderer& GetText() { return m_text; }
  PictureRenditions& GetRenditions() { return m_renditions; }
  /// For shapes; report what they cover with Touch.
  drawing::Canvas& GetCanvas() { return m_canvas; }

  /// Lays a whole picture into the rectangle by its straight alpha, also when no movie is saved: the
  /// premultiplied rule would show bright rims around it. An empty picture draws nothing.
  void Overlay(const PainterPicture& picture, const drawing::Rect& rect);
  void Text(std::u16string_view text, const drawing::Font& font, drawing::ColorRef color,
            const drawing::Rect& rect, std::uint32_t format);
  /// Of a width of one pixel, downwards.
  void VerticalLine(drawing::Point top, std::int32_t bottom, drawing::ColorRef color);

  void Touch(const drawing::Rect& rect);
  /// Everything outside is as it was; empty when nothing was drawn. Lies inside the target.
  const drawing::Rect& GetTouched() const { return m_touched; }

 private:
  XpPixmap32& m_target;
  drawing::TextRenderer& m_text;
  PictureRenditions& m_renditions;
  drawing::Canvas m_canvas;
  drawing::Rect m_touched;
};

}  // namespace vrx::overlay
