// The pictures of a multi-picture file as its index has them, with what can be said of each. For listings,
// and for taking pictures out of the file.
#pragma once

#include <cstdint>
#include <vector>

#include "foundation/file/XpAbstractFile.h"
#include "imaging/codecs/MpIndex.h"
#include "imaging/codecs/XpImageIo.h"
#include "vrx/XpResult.h"

namespace vrx::imaging {

struct MpPictureSummary {
  MpEntry entry;
  std::int64_t frame = -1;  // counted as XpImageIoMPO does; -1 for a part of another picture
  /// XpErrPastEnd when it would begin past the end of the file, XpErrImageInvalid when it has no bytes or no
  /// JPEG picture begins there. The members below are then 0.
  XpResult result = XpOk;
  std::int64_t start = 0;  // position of the stream
  std::int64_t size = 0;   // bytes that the file holds of it
  XpImageSize storedSize;  // 0 by 0 when it cannot be read

  bool IsCut() const { return result == XpOk && size < entry.size; }
};

/// Of the file that the stream holds. Unlike the codec, this takes any number of IFDs in the index: some
/// writers leave the second one out. XpErrImageNoData without an index, XpErrImageInvalid for one without a
/// TIFF header, XpErrImageUnusable for one without entries.
XpResult SummarizeMpFile(XpAbstractFile& stream, std::vector<MpPictureSummary>& pictures);

}  // namespace vrx::imaging
