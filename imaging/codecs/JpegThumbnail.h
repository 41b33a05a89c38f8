// Finds the small picture that a JPEG file carries in its segments. The JPEG codec decodes what is found.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "imaging/codecs/XpImageIo.h"
#include "imaging/jpeg/JpegDecoder.h"

namespace vrx::imaging {

/// The bytes of the JPEG thumbnail in the image resources of a picture editor, else of the one that IFD 1 of
/// the Exif block leads to. Empty when there is none. `tags` are those of the picture, or null.
std::span<const std::uint8_t> FindThumbnail(const std::vector<JpegSegment>& segments,
                                            const XpTiffTagManager* tags);

/// Cuts off the black bars of a thumbnail of 160 by 120 pixels of a picture with another aspect.
XpResult CropLetterbox(XpPixmap24NoHandle& thumbnail, XpImageSize whole);

}  // namespace vrx::imaging
