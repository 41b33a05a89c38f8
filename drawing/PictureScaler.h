// Brings a picture to another size with smooth edges. Painters use it once for a picture and a frame size.
#pragma once

#include <cstdint>
#include <memory>

#include "imaging/pixmap/XpPixmap.h"

namespace vrx::drawing {

/// `source` has straight alpha or none. The copy has straight alpha, and pixels that cannot be seen have no
/// colour. Its edges are those of the source: nothing fades towards them. Null for an empty source, a size
/// below 1 or beyond what a picture can have, and without memory.
std::unique_ptr<XpPixmap32> ScalePicture(const XpPixmapBase& source, std::int32_t width, std::int32_t height);

}  // namespace vrx::drawing
