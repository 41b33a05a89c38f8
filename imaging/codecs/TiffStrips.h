// Where the pixels of a plain TIFF picture lie in its file, and what they are like. The TIFF codec reads
// along this.
#pragma once

#include <cstdint>
#include <vector>

#include "imaging/codecs/XpImageIo.h"
#include "imaging/tags/XpTiffTagManager.h"
#include "vrx/XpResult.h"

namespace vrx::imaging {

/// What the samples of a pixel are, as tags 0x0106, 0x0115 and 0x0102 of TIFF 6.0 give it.
struct TiffPixelForm {
  int samples = 1;           // 1 grey, 3 red, green and blue, 4 inks
  int bits = 8;              // of a sample, 8 or 16
  bool isInverted = false;   // grey, with 0 for white
  bool isBigEndian = false;  // samples of 16 bits

  std::int64_t BytesPerPixel() const { return std::int64_t{samples} * (bits / 8); }
};

struct TiffStrip {
  std::int64_t position = 0;  // in the stream
  std::int64_t bytes = 0;
};

struct TiffStrips {
  XpImageSize size;
  TiffPixelForm form;
  std::vector<TiffStrip> strips;  // rows from the top, without gaps
};

/// The value of IFD 0 with this number, SHORT or LONG. XpErrImageNoData when it has none of this type; a
/// value without elements counts as 0.
XpResult ReadShortOrLong(const XpTiffTagIFD& ifd, std::uint16_t tag, std::uint32_t& value);

/// From the tags of a file whose TIFF header is at `base` of a stream of `streamBytes`. XpErrImageKind for
/// pictures that are packed, tiled or of another form than above; XpErrImageNoData without a size;
/// XpErrMalformedRecord for a strip that reaches `missingBytes` past the end of the stream; XpErrOutOfMemory
/// for more pixels than are read anywhere here; XpErrImageInvalid when tags contradict each other, and for a
/// file that is far too short for its size.
XpResult FindTiffStrips(const XpTiffTagManager& tags, std::int64_t base, std::int64_t streamBytes,
                        TiffStrips& strips, std::int64_t& missingBytes);

}  // namespace vrx::imaging
