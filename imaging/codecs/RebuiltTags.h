// The tags of a JPEG file that is written again: what the maker note says of the old file is taken out, dates
// and versions are brought up to date, and the thumbnail follows the tree.
#pragma once

#include <cstdint>
#include <vector>

#include "foundation/file/XpAbstractFile.h"
#include "foundation/time/XpDateTime.h"
#include "imaging/tags/XpTiffTagManager.h"
#include "vrx/XpResult.h"

namespace vrx::imaging {

/// Prepares the tree for a new file. XpErrImageNoData without a maker note that was read as an IFD.
XpResult PrepareRebuiltTags(XpTiffTagManager& tags, std::uint32_t rating, const XpDateTime& now);

/// The body of the new Exif segment: the prepared tree and the thumbnail, which is read from `source` and
/// whose tags are set. XpErrImageUnusable when it does not fit a segment.
XpResult BuildExifBlock(XpAbstractFile& source, std::int64_t tiffHeader, XpTiffTagManager& tags,
                        std::vector<std::uint8_t>& block);

}  // namespace vrx::imaging
