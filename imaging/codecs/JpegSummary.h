// What there is to know of a JPEG file before its pixels: sizes, orientation, profile, further pictures and
// segments. For listings.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "imaging/codecs/XpImageIo.h"

namespace vrx::imaging {

struct JpegSegmentSummary {
  std::string marker;       // "APP1", "COM"
  std::string name;         // what the body begins with, such as "Exif"; empty for none
  std::uint32_t bytes = 0;  // of the body
};

struct JpegSummary {
  XpImageSize size;              // when upright
  XpImageSize storedSize;        // of the frame
  std::int32_t orientation = 0;  // the tag, 1 to 8; 0 without one
  std::int32_t frames = 1;       // pictures in the file that are no part of another one
  bool hasProfile = false;
  std::string profile;                       // its name in UTF-8; empty when it has none that can be read
  std::vector<JpegSegmentSummary> segments;  // before the coded picture, in the file's order
};

/// Of the picture at the start of the stream. Codes as those of XpImageIoJpeg.
XpResult SummarizeJpeg(XpAbstractFile& stream, JpegSummary& summary);

}  // namespace vrx::imaging
