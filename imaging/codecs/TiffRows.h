// Turns rows of samples as TIFF 6.0 stores them into rows of pixels. The TIFF codec asks for the way that
// fits a picture once.
#pragma once

#include <cstdint>

#include "imaging/codecs/TiffStrips.h"

namespace vrx::imaging {

/// `samples` are the bytes of `width` pixels; `bgr` has room for as many.
using TiffRowConversion = void (*)(const std::uint8_t* samples, std::int32_t width, unsigned char* bgr);

/// Samples of 16 bits lose the lower 8. Inks (cyan, magenta, yellow, black) are taken as ideal ones.
TiffRowConversion FindTiffRowConversion(const TiffPixelForm& form);

}  // namespace vrx::imaging
