// Lays an overlay picture over a frame of the engine. Used by the frame callback.
#pragma once

#include <cstdint>

#include "imaging/pixmap/XpPixmap.h"
#include "overlay/callback/DrawnArea.h"

namespace vrx::overlay {

/// The overlay has its top row first and its colours not premultiplied; the frame has its bottom row first,
/// no padding and `size` / (width * height) bytes a pixel, of which the first three are blended. Per byte:
/// alpha 0 leaves the frame, 255 copies, otherwise (d * (255 - a) + s * a) / 255, truncated. Does nothing
/// without a buffer, without a picture, or when a frame's pixel has fewer than three bytes.
void BlendOverlay(const XpPixmap32& overlay, void* buffer, std::uint32_t size);

/// The same where `area` is known to hold everything that is drawn.
void BlendOverlay(const XpPixmap32& overlay, const DrawnArea& area, void* buffer, std::uint32_t size);

}  // namespace vrx::overlay
