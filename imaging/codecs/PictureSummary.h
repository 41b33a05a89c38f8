// What there is to know of a picture file before its pixels. Each format fills in what it has; listings print
// it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "foundation/file/XpAbstractFile.h"
#include "imaging/codecs/XpImageIo.h"

namespace vrx::imaging {

struct JpegSegmentSummary {
  std::string marker;       // "APP1", "COM"
  std::string name;         // what the body begins with, such as "Exif"; empty for none
  std::uint32_t bytes = 0;  // of the body
};

struct PictureSummary {
  XpImageSize size;              // when upright
  XpImageSize storedSize;        // as the pixels are stored
  std::int32_t orientation = 0;  // the tag, 1 to 8; 0 without one
  std::int32_t frames = 1;       // pictures in the file that are no part of another one
  bool isAnimation = false;
  bool hasProfile = false;
  std::string profile;                       // its name in UTF-8; empty when it has none that can be read
  std::optional<XpImageSize> preview;        // that stands for the picture, when upright
  std::vector<JpegSegmentSummary> segments;  // of a JPEG, before the coded picture, in the file's order
};

/// Of the file, which has a name, from its start. `codec` is one of its format; it may say more of a failure
/// in its `problem`.
using PictureSummarizer = XpResult (*)(XpAbstractFile& file, XpImageIo& codec, PictureSummary& summary);

XpResult SummarizeJpeg(XpAbstractFile& file, XpImageIo& codec, PictureSummary& summary);
XpResult SummarizeTiff(XpAbstractFile& file, XpImageIo& codec, PictureSummary& summary);
XpResult SummarizeRaw(XpAbstractFile& file, XpImageIo& codec, PictureSummary& summary);
XpResult SummarizeGif(XpAbstractFile& file, XpImageIo& codec, PictureSummary& summary);
/// For what the still-image loader reads: the size alone.
XpResult SummarizeLoaded(XpAbstractFile& file, XpImageIo& codec, PictureSummary& summary);

}  // namespace vrx::imaging
