// The codec of the cameras' RAW files (.krw, .krq, .kr2, .krf): TIFF structures with sensor data, which are
// not decoded, and a JPEG preview, which is shown in their place. Edits change single values in place.
#pragma once

#include <cstdint>

#include "imaging/codecs/XpImageIo.h"
#include "imaging/tags/GpsTags.h"

/// How the maker note is read depends on the name of the file: functions with a path look at it first, those
/// with a stream keep what the last one found.
class XpImageIoRAW : public XpImageIo {
 public:
  Picture LoadFitted(XpString path, XpImageSize target, const XpImageReading& reading) override;
  Picture Load(XpString path, std::int32_t scale, const XpImageReading& reading) override;
  /// The preview, turned by its own orientation and, on demand, by that of the RAW file. `scale` may be any
  /// divisor from 1 on; a picture that it would leave no pixel of keeps its size. XpErrImageNoData without a
  /// preview.
  Picture Read(XpAbstractFile& stream, std::int64_t offset, std::int32_t scale,
               const XpImageReading& reading) override;
  /// A preview that is smaller than the target keeps its size.
  Picture ReadFitted(XpAbstractFile& stream, std::int64_t offset, XpImageSize target,
                     const XpImageReading& reading) override;
  Picture LoadThumbnail(XpString path, const XpImageReading& reading) override;
  XpResult GetImageSize(XpString path, XpImageSize& size, bool forceStereo) override;
  XpResult GetStoredImageSize(XpString path, XpImageSize& size, bool forceStereo) override;
  XpSharedPtr<XpTiffTagManager> LoadTags(XpString path) override;
  /// XpErrImageNotProvided for files whose kind may not be edited.
  XpResult SetRotation(XpString path, std::uint32_t quarterTurns) override;
  XpResult SetOriginalDate(XpString path, const XpDateTime& date) override;
  /// The preview fitted into 160 by 120 pixels, also where it is smaller; it is not turned.
  Picture ReadThumbnail(XpAbstractFile& stream, std::int64_t offset, const XpImageReading& reading) override;
  std::int32_t GetTagReadMode() const override { return tagReadMode; }
  XpResult SeekToTiffHeader(XpAbstractFile& stream, std::int64_t offset) override;
  /// Of the picture that the sensor data hold. XpErrImageInvalid when the tags do not say.
  XpResult ReadDimensions(XpAbstractFile& stream, std::int64_t offset, XpImageSize& size, bool stored,
                          bool forceStereo) override;
  /// XpErrImageNoData for a .krf file, which has no place for a rating.
  XpResult SetRating(XpString path, std::uint32_t rating) override;
  /// XpErrImageNoData for a file of version 0x301 or older.
  XpResult StripGps(XpString path) override;

  /// The bytes of the preview, a JPEG file, go to `out`. XpErrImageNoData without one; XpErrEndOfFile, and
  /// nothing goes there, when it does not lie in the stream as a whole.
  XpResult CopyPreview(XpAbstractFile& stream, XpAbstractFile& out);
  /// In a file of its own at `path`, which is replaced. XpErrImageArgument when that is the stream's own
  /// file.
  XpResult SavePreview(XpAbstractFile& stream, XpString path);
  /// When turned by the orientation of the RAW file.
  XpResult GetPreviewSize(XpString path, XpImageSize& size, bool forceStereo);
  /// Such as 0x302, by the maker note; 0x100 for the first camera, 0 when there is none. The name does not
  /// matter.
  std::uint32_t GetRawVersion(XpString path);
  /// A .krw of the first camera, which is not edited.
  bool IsEarlyBody(XpString path);
  /// Puts the position into the place that the file has for it: the same tags with values of the same size.
  /// XpErrImageNoData when the file's version has no such place or the tags differ, XpErrImageMismatch when a
  /// value differs in type or size, or a text that has to stay, XpErrImageUnusable when something else lies
  /// in that place. The file is not touched then. Otherwise now becomes the date of the last change.
  XpResult ReplaceGps(XpString path, const XpGPSRecord& record);
  /// The same in a stream, whatever its version.
  XpResult WriteGps(XpAbstractFile& stream, std::int64_t offset, const XpGPSRecord& record);

  std::int32_t tagReadMode = XpTagModeNoNotes;

 private:
  void SetTagModeByName(const XpString& path);
  bool IsEditable(const XpString& path);
  /// Turned by its own orientation only; `orientation` is that of the RAW file.
  Picture DecodePreview(XpAbstractFile& stream, std::int64_t offset, const XpImageReading& reading,
                        std::uint16_t& orientation);
  Picture ReadPreview(XpAbstractFile& stream, std::int64_t offset, const XpImageReading& reading);
  Picture Resized(Picture picture, XpImageSize size);
};
