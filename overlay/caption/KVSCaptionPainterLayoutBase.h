// The font and the sizes that the caption painter draws with.
#pragma once

#include <cstdint>

#include "drawing/Color.h"
#include "drawing/TextRenderer.h"
#include "vrx/XpString.h"

class KVSCaptionPainterLayoutBase {
 public:
  KVSCaptionPainterLayoutBase(std::int32_t kind, std::int32_t frameWidth, std::int32_t frameHeight)
      : layoutKind(kind), width(frameWidth), height(frameHeight) {}
  KVSCaptionPainterLayoutBase(const KVSCaptionPainterLayoutBase&) = delete;
  KVSCaptionPainterLayoutBase& operator=(const KVSCaptionPainterLayoutBase&) = delete;
  virtual ~KVSCaptionPainterLayoutBase() = default;

  /// A font of regular weight with an em of `size` pixels; 0 is the system's usual height, and a negative
  /// size is a line height. Owned by the layout.
  const vrx::drawing::Font& SetFont(const XpString& face, std::int32_t size);

  std::int32_t layoutKind;  // nothing depends on it
  std::int32_t width;       // of the frame, pixels
  std::int32_t height;      // of the frame, pixels
  XpString fontName;
  double fontSize = 0.0;
  std::int32_t fontHeight = 0;
  vrx::drawing::ColorRef textColor = 0;
  vrx::drawing::Font font;
};
