#include "drawing/TextRenderer.h"

namespace vrx::drawing {

std::int32_t TextRenderer::DrawText(const Canvas& canvas, std::u16string_view text, const Font& font,
                                    ColorRef color, Rect& rect, std::uint32_t format) {
  const Size size = Measure(text, font, Saturated(rect.Width()), format);
  if ((format & DT_CALCRECT) != 0) {
    rect.right = Saturated(std::int64_t{rect.left} + size.width);
    rect.bottom = Saturated(std::int64_t{rect.top} + size.height);
  } else {
    Draw(canvas, text, font, color, rect, format);
  }
  return size.height;
}

}  // namespace vrx::drawing
