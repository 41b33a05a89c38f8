// The colours of CIE Lab pictures in TIFF files. The library's own conversion shows their white yellow and
// their shadows black.
#pragma once

#include <tiffio.h>

namespace vrx::imaging {

/// Gives an opened picture of Lab colours a conversion of ours to sRGB; others stay as they are.
void UseLabColours(TIFFRGBAImage& image);

}  // namespace vrx::imaging
