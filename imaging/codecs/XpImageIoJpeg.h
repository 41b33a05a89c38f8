// The JPEG codec: decodes at full size or scaled down, upright and in sRGB on demand; reads tags, profile and
// thumbnail; changes the rating by rewriting the file without decoding it.
#pragma once

#include <cstdint>

#include "imaging/codecs/XpImageIo.h"
#include "imaging/jpeg/JpegDecoder.h"

/// Pictures of three colour components, or of one; others are XpErrImageInvalid. A truncated picture is
/// filled up.
class XpImageIoJpeg : public XpImageIo {
 public:
  Picture Read(XpAbstractFile& stream, std::int64_t offset, std::int32_t scale,
               const XpImageReading& reading) override;
  /// With the ICC profile as a tag of IFD 0, and with the XMP bytes.
  XpSharedPtr<XpTiffTagManager> ReadTags(XpAbstractFile& stream, std::int64_t offset) override;
  std::unique_ptr<vrx::imaging::icc_profile> ReadIccProfile(XpAbstractFile& stream,
                                                            std::int64_t offset) override;
  /// Rewrites the file with its tags brought up to date; the coded picture stays as it is. After a failure
  /// the file is as it was. XpErrImageNoData without a maker note that can hold a rating; XpErrImageInvalid
  /// when tags or picture are damaged, since the damage would be lost or spread; XpErrImageUnusable when
  /// the new tags do not fit a segment; XpErrImageNotProvided when data follow the picture that the tags know
  /// nothing of, since a rewrite would lose them.
  XpResult SetRating(XpString path, std::uint32_t rating) override;
  /// Turned upright in any case. Null with XpOk when the file has no thumbnail.
  Picture ReadThumbnail(XpAbstractFile& stream, std::int64_t offset, const XpImageReading& reading) override;
  XpResult SeekToTiffHeader(XpAbstractFile& stream, std::int64_t offset) override;
  XpResult ReadDimensions(XpAbstractFile& stream, std::int64_t offset, XpImageSize& size, bool stored,
                          bool forceStereo) override;

  /// Appends the bodies of all XMP segments, with their names.
  XpResult ReadXmp(XpAbstractFile& stream, std::int64_t offset, XpMemoryFile& xmp);
  /// From the start of the stream. `kind` is 0 when there is no such segment, or its index is damaged, which
  /// is XpErrImageInvalid.
  XpResult FindSpfSegment(XpAbstractFile& stream, bool& found, std::uint32_t& kind);
  /// With the stream at the TIFF header.
  XpResult RemoveGpsPointer(XpAbstractFile& stream);

  // What the last reading found, for the rest of the same call.
  std::uint16_t orientation = 0;  // the tag; 0 without one
  std::int32_t width = 0;         // pixels as stored; known when the picture has tags
  std::int32_t height = 0;
  bool isAdobeRgb = false;

 private:
  /// `tags` are those of the picture, whose marks are noted; null for the picture in another one.
  Picture Decode(XpAbstractFile& stream, std::int64_t offset, std::int32_t scale,
                 const XpImageReading& reading, const XpTiffTagManager* tags);
  Picture DecodeRows(vrx::imaging::JpegDecoder& decoder, std::int32_t scale, XpImageProgress* progress);
  Picture Upright(Picture picture);
  void ForgetMarks();
  void NoteMarks(const XpTiffTagManager* tags, const vrx::imaging::JpegDecoder& decoder);
};
