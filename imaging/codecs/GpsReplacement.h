// Puts another position into the place that a RAW file has for it, without moving a byte of the rest.
#pragma once

#include "foundation/file/XpAbstractFile.h"
#include "imaging/tags/GpsTags.h"
#include "imaging/tags/XpTiffTagManager.h"
#include "vrx/XpResult.h"

namespace vrx::imaging {

/// `tags` are those of the stream, whose TIFF header stands at `base`; sorts its GPS IFD. Nothing is written
/// unless all holds:
/// there is one GPS IFD, and the record makes the same tags of the same size together (XpErrImageNoData);
/// IFD 0 leads to no other one, and nothing but this IFD and its values lies where it would be written
/// (XpErrImageUnusable); that lies within the stream (XpErrImageInvalid); and each value has the type, count
/// and size of the old one, and satellites, map datum, method and area are the same (XpErrImageMismatch).
XpResult ReplaceGpsIfd(XpAbstractFile& stream, std::int64_t base, const XpTiffTagManager& tags,
                       const XpGPSRecord& record);

}  // namespace vrx::imaging
