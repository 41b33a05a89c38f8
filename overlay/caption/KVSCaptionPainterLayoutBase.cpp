#include "overlay/caption/KVSCaptionPainterLayoutBase.h"

#include <algorithm>
#include <limits>

const vrx::drawing::Font& KVSCaptionPainterLayoutBase::SetFont(const XpString& face, std::int32_t size) {
  fontName = face;
  fontSize = size;
  // The smallest integer has no opposite.
  fontHeight = -std::max(size, -std::numeric_limits<std::int32_t>::max());
  font = {};
  font.face = face;
  font.height = fontHeight;
  return font;
}
