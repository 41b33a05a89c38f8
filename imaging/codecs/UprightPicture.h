// Turns pictures as their orientation tag says. The codecs of all formats that have the tag use it.
#pragma once

#include <cstdint>
#include <memory>

#include "imaging/pixmap/XpPixmap.h"

namespace vrx::imaging {

/// Whether width and height change places when a picture with this value of the tag is shown upright.
constexpr bool IsSideways(std::uint16_t orientation) { return orientation >= 5 && orientation <= 8; }

/// The picture turned by the tag's value; as it is for values that do not turn it, which includes those of
/// mirrored pictures. Null when no memory is left for the result. `picture` is not null.
std::unique_ptr<XpPixmap24NoHandle> TurnUpright(std::unique_ptr<XpPixmap24NoHandle> picture,
                                                std::uint16_t orientation);

}  // namespace vrx::imaging
