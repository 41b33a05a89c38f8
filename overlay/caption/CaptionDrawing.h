// Draws a caption that has been laid out: its box, shadow, outline and letters. The caption painter draws at
// the frame's resolution, or as a picture of the canvas that is stretched over the frame.
#pragma once

#include <cstdint>
#include <string_view>

#include "imaging/pixmap/XpPixmap.h"
#include "imaging/pixmap/XpRowRange.h"
#include "overlay/caption/CaptionLayout.h"

namespace vrx::overlay {

struct CaptionLook {
  drawing::ColorRef textColor = 0;
  drawing::ColorRef outlineColor = 0;
  double outline = 0.0;  // pixels of the canvas
  std::uint8_t boxAlpha = 0;
  bool hasFaintShadow = false;  // of half strength
};

CaptionLook LookOf(const CaptionItem& caption, bool saveMovieMode);

/// Draws the outlines of the letters through the canvas's place on the frame, so that their edges are those
/// of the frame. The result holds all rows that were touched.
XpRowRange DrawSharpCaption(std::u16string_view text, const CaptionLayout& layout, const CaptionLook& look,
                            const CaptionCanvas& canvas, drawing::TextRenderer& renderer, XpPixmap32& frame);

/// Draws on a canvas of its own, which is then scaled into the frame by nearest neighbour.
class StretchedCaption {
 public:
  /// As DrawSharpCaption; without memory for the canvas nothing is drawn.
  XpRowRange Draw(std::u16string_view text, const CaptionLayout& layout, const CaptionLook& look,
                  const CaptionCanvas& canvas, drawing::TextRenderer& renderer, XpPixmap32& frame);

 private:
  bool EnsureCanvas(drawing::Size size);
  void Clear(XpRowRange rows);

  XpPixmap32 m_canvas;  // clear between captions
};

}  // namespace vrx::overlay
