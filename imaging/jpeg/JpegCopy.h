// Writing a JPEG picture again with other application segments and without decoding it to pixels. Used where
// the tags of a file no longer fit their place.
#pragma once

#include <cstdint>
#include <span>

#include "foundation/file/XpAbstractFile.h"
#include "imaging/jpeg/JpegDecoder.h"
#include "imaging/jpeg/JpegSegments.h"
#include "vrx/XpResult.h"

namespace vrx::imaging {

/// Writes the start marker, `segments` in their order and the bytes of the coded picture as they are.
XpResult CopyCodedPicture(XpAbstractFile& source, const CodedPicture& picture,
                          std::span<const JpegSegment> segments, XpAbstractFile& target);

/// Writes the picture whose head `decoder` has read: `segments` come first, then its coefficients, coded
/// again with Huffman tables of their own. Unlike CopyCodedPicture, this leaves out segments between the
/// tables of the picture. XpErrImageInvalid for a picture that is damaged; the code of a failed write.
XpResult CopyCoefficients(JpegDecoder& decoder, std::span<const JpegSegment> segments,
                          XpAbstractFile& target);

/// Appends bytes of the source to the target.
XpResult CopyBytes(XpAbstractFile& source, std::int64_t start, std::int64_t count, XpAbstractFile& target);

}  // namespace vrx::imaging
