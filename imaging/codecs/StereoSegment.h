// The segment of a stereo JPEG file, which says how the two pictures share the frame.
#pragma once

#include <cstdint>

#include "imaging/jpeg/JpegDecoder.h"
#include "vrx/XpResult.h"

namespace vrx::imaging {

enum class StereoLayout { Whole, HalfWidth, HalfHeight };

/// Reads an APP3 segment. XpErrImageKind when it is another kind of segment or too short;
/// XpErrImageInvalid when its descriptor has not four bytes.
XpResult ReadStereoSegment(const JpegSegment& segment, StereoLayout& layout);

}  // namespace vrx::imaging
