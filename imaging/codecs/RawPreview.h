// Where the JPEG preview of a RAW file lies. The codec decodes, measures and copies it from there.
#pragma once

#include <cstdint>

#include "imaging/tags/XpTiffTagManager.h"
#include "vrx/XpResult.h"

namespace vrx::imaging {

struct RawPreview {
  std::int64_t offset = 0;   // from the TIFF header; never 0 once found
  std::uint32_t length = 0;  // bytes; 0 when the tags do not say
};

/// Named by IFD 0 or else by IFD 1. XpErrImageNoData without one; an offset of 0 and one that is not a LONG
/// name none.
XpResult FindRawPreview(const XpTiffTagManager& tags, RawPreview& preview);

}  // namespace vrx::imaging
