// Where a TIFF file begins. The codecs of the formats that are TIFF structures use it.
#pragma once

#include <cstdint>

#include "foundation/file/XpAbstractFile.h"
#include "vrx/XpResult.h"

namespace vrx::imaging {

/// Leaves the stream at `offset`. XpErrImageInvalid unless a byte order mark of TIFF is there; else the
/// failure of the stream.
XpResult SeekToTiffStart(XpAbstractFile& stream, std::int64_t offset);

}  // namespace vrx::imaging
