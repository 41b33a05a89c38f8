// Brings 24-bit pictures to another size, in place. The codecs decode at a coarse scale and come to the exact
// size with it.
#pragma once

#include <cstdint>

#include "imaging/pixmap/XpPixmap.h"
#include "vrx/XpResult.h"

/// Replaces the pixels by the picture scaled to the new size: means of blocks at half and a third of the
/// size, else the width first and then the height, each by exact areas where it shrinks and by cubic
/// interpolation where it grows. The result is the same on every machine. XpErrFailed, and nothing changes,
/// for an empty pixmap and for sides outside 1 to 16,777,216 pixels, before or after. XpErrOutOfMemory, and
/// nothing changes, without memory for both pictures.
XpResult ResamplePixmap(XpPixmap24NoHandle& pixmap, std::int32_t newWidth, std::int32_t newHeight);

/// ResamplePixmap where the size is not right already; XpOk for an empty pixmap that shall be 0 by 0.
XpResult ResizePixmap(XpPixmap24NoHandle& pixmap, std::int32_t newWidth, std::int32_t newHeight);

/// Keeps the block from (left, top) up to but not including (right, bottom). XpErrFailed, and nothing
/// changes, for a block that is empty or not wholly inside the pixmap. XpErrOutOfMemory as for
/// ResamplePixmap.
XpResult CropPixmap(XpPixmap24NoHandle& pixmap, std::int32_t left, std::int32_t top, std::int32_t right,
                    std::int32_t bottom);
