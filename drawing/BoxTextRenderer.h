// A text renderer without fonts: every character but a blank is a box, so that painters draw the same pixels
// on every machine. For tests of painters, and where there is no font.
#pragma once

#include "drawing/TextRenderer.h"

namespace vrx::drawing {

/// With an em size e, characters are (3e + 4) / 5 wide and lines e + e / 5 high, in whole pixels and at least
/// 1; a positive font height is the line height. A box leaves the cell's last column free and stands on the
/// baseline, e below the line's top, with a height of 4e / 5. In smooth text the box's edge has coverage
/// 128. Weight, slant and face have no influence; underlines are not drawn. Scaled boxes have their edges on
/// the nearest pixels and are at least one pixel large; an outline makes them larger.
class BoxTextRenderer final : public TextRenderer {
 public:
  Size Measure(std::u16string_view text, const Font& font, std::int32_t width, std::uint32_t format) override;
  std::size_t CountLines(std::u16string_view text, const Font& font, std::int32_t width,
                         std::uint32_t format) override;
  void Draw(const Canvas& canvas, std::u16string_view text, const Font& font, ColorRef color,
            const Rect& rect, std::uint32_t format) override;
  Rect DrawScaled(const Canvas& canvas, const ScaledText& text, const TextInk& ink,
                  const Rect& clip) override;
};

}  // namespace vrx::drawing
