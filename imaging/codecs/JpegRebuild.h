// Writes a JPEG file again with a new rating in the maker note of the cameras. The coded picture stays as it
// is; the tags are brought up to date, and the pictures after it move along.
#pragma once

#include <cstdint>

#include "foundation/file/XpAbstractFile.h"
#include "foundation/time/XpDateTime.h"
#include "imaging/tags/XpTiffTagManager.h"
#include "vrx/XpResult.h"

namespace vrx::imaging {

struct JpegRebuild {
  XpAbstractFile& source;
  std::int64_t tiffHeader;  // its position in the source
  XpTiffTagManager& tags;   // of the source; brought up to date
  std::uint32_t rating;
  XpDateTime now;  // local time
};

/// Writes the new file from the start of `target`, which is empty and can be read. Codes as those of
/// XpImageIoJpeg::SetRating.
XpResult RebuildJpeg(const JpegRebuild& rebuild, XpAbstractFile& target);

}  // namespace vrx::imaging
