// The segment that says of which kind a picture of a special format is.
#pragma once

#include <cstdint>

#include "imaging/jpeg/JpegDecoder.h"
#include "vrx/XpResult.h"

namespace vrx::imaging {

bool IsSpfSegment(const JpegSegment& segment);
/// `kind` is 0 on failure: XpErrImageInvalid without a value in the segment's index.
XpResult ReadSpfKind(const JpegSegment& segment, std::uint32_t& kind);

}  // namespace vrx::imaging
