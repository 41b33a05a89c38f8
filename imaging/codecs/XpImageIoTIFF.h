// The codec of TIFF 6.0 files: reads those of plain rows itself, strip by strip, and leaves packed, tiled and
// palette pictures to the still-image loader. Stores a rating where the maker note has none yet.
#pragma once

#include <cstdint>

#include "imaging/codecs/XpImageIo.h"

/// Of a file with several pictures the first one.
class XpImageIoTIFF : public XpImageIo {
 public:
  Picture LoadFitted(XpString path, XpImageSize target, const XpImageReading& reading) override;
  /// A strip that reaches past the end of the file is XpErrMalformedRecord, see missingBytes. Colours are
  /// brought to sRGB only when the picture is turned upright too.
  Picture Read(XpAbstractFile& stream, std::int64_t offset, std::int32_t scale,
               const XpImageReading& reading) override;
  std::unique_ptr<vrx::imaging::icc_profile> ReadIccProfile(XpAbstractFile& stream,
                                                            std::int64_t offset) override;
  /// In place where the maker note has a rating; else the tags are written again after the end of the file,
  /// before anything leads there: whatever happens, one whole version of them is in use. XpErrImageNoData
  /// without a maker note; XpErrImageInvalid when tags are damaged, since the damage would be lost;
  /// XpErrValueDoesNotFit when the file is too large for 32-bit offsets.
  XpResult SetRating(XpString path, std::uint32_t rating) override;
  /// XpErrImageNotProvided.
  Picture ReadThumbnail(XpAbstractFile& stream, std::int64_t offset, const XpImageReading& reading) override;
  XpResult SeekToTiffHeader(XpAbstractFile& stream, std::int64_t offset) override;
  XpResult ReadDimensions(XpAbstractFile& stream, std::int64_t offset, XpImageSize& size, bool stored,
                          bool forceStereo) override;

  // What the last reading found.
  std::uint16_t orientation = 0;  // the tag
  std::int64_t missingBytes = 0;  // of a strip that reaches past the end of the file
  bool isUncalibrated = false;    // the colour space is none of the common ones

 private:
  /// Null with XpErrImageKind for pictures that are left to the loader.
  Picture ReadStrips(XpAbstractFile& stream, std::int64_t offset, XpImageProgress* progress);
  Picture ReadPixels(XpAbstractFile& stream, std::int64_t offset, XpImageSize target,
                     const XpImageReading& reading);
  Picture TurnPicture(Picture picture, const XpTiffTagManager& tags);
  void NoteMarks(const XpTiffTagIFD& first);
  XpResult StoreRating(XpFile& file, std::uint32_t rating);
};
