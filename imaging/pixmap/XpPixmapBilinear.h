// Shrinking 24-bit pictures with smoothing, and giving them an alpha channel. Used by the painter of still
// pictures.
#pragma once

#include <cstdint>
#include <memory>

#include "imaging/pixmap/XpPixmap.h"

/// Copies the whole source, scaled bilinearly in 11-bit fixed point, to a block of the destination, clipped
/// to it. Both must be 24-bit and not the same pixmap, else nothing happens; a size below 1 copies nothing,
/// and the source's own size is a plain copy.
void StretchPixmapBilinear(XpPixmapBase& destination, std::int32_t destX, std::int32_t destY,
                           std::int32_t destWidth, std::int32_t destHeight, const XpPixmapBase& source);

/// The same picture with alpha 255. Null for an empty or another than a 24-bit pixmap, and when there is no
/// memory.
std::unique_ptr<XpPixmap32> MakeOpaquePixmap32(const XpPixmapBase& source);
