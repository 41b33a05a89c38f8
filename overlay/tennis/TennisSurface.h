// Draws the parts of the tennis overlay on a pixmap and remembers where something was drawn.
#pragma once

#include <string_view>

#include "drawing/TextRenderer.h"
#include "imaging/pixmap/XpPixmap.h"
#include "overlay/resources/PainterResources.h"

namespace vrx::overlay {

class TennisSurface {
 public:
  /// All of it must outlive the surface.
  TennisSurface(XpPixmap32& target, drawing::TextRenderer& text, bool saveMovieMode);

  XpPixmap32& GetTarget() { return m_target; }
  drawing::TextRenderer& GetText() { return m_text; }

  /// Lays a whole picture into the rectangle by its straight alpha. An empty picture draws nothing, and one
  /// without alpha covers the rectangle.
  void Overlay(const PainterPicture& picture, const drawing::Rect& rect);
  /// The same in a movie that is being saved; otherwise as premultiplied colours.
  void Blend(const PainterPicture& picture, const drawing::Rect& rect);
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
  drawing::Canvas m_canvas;
  bool m_saveMovieMode;
  drawing::Rect m_touched;
};

}  // namespace vrx::overlay
