// Raises the Exif version of a tag tree to that of the tags which are written into it. Used when a JPEG file
// is rebuilt.
#pragma once

#include "imaging/tags/XpTiffTagManager.h"

namespace vrx::imaging {

/// A tree without a version becomes 2.31, an older one than 2.21 becomes 2.21, and the version of its GPS IFD
/// follows. A tree without an Exif IFD stays as it is.
void RaiseExifVersion(XpTiffTagManager& manager);

}  // namespace vrx::imaging
