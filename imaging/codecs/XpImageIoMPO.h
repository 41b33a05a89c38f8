// The codec of multi-picture files, JPEG pictures one after another with an index in the first one, as the
// Multi-Picture Format (CIPA DC-007) defines them. It chooses the picture and leaves its reading to the JPEG
// codec; edits run over all pictures.
#pragma once

#include <cstdint>
#include <functional>

#include "imaging/codecs/XpImageIo.h"

namespace vrx::imaging {
struct MpEntry;
struct MpTable;
}  // namespace vrx::imaging

/// A frame is a picture that is no part of another one, counted from 0 in the order of the index. A usable
/// index has exactly two IFDs, and entries. What needs it is XpErrImageUnusable without one; readings tell
/// from that a file without any index, XpErrImageNoData, and one whose index has no TIFF header,
/// XpErrImageInvalid.
class XpImageIoMPO : public XpImageIo {
 public:
  /// The picture that the index marks as representative, else frame 0.
  Picture Read(XpAbstractFile& stream, std::int64_t offset, std::int32_t scale,
               const XpImageReading& reading) override;
  /// Of the first picture in the file.
  XpResult ReadImageSize(XpAbstractFile& stream, std::int64_t offset, XpImageSize& size,
                         bool forceStereo) override;
  /// Of the first picture in the file.
  XpSharedPtr<XpTiffTagManager> ReadTags(XpAbstractFile& stream, std::int64_t offset) override;
  /// Of the picture that Read would give.
  Picture ReadThumbnail(XpAbstractFile& stream, std::int64_t offset, const XpImageReading& reading) override;
  /// That of the index.
  XpResult SeekToTiffHeader(XpAbstractFile& stream, std::int64_t offset) override;

  // Each in every frame, in order, and once where two entries lead to one picture. The first failure ends the
  // edit, with the frames before it changed, and a frame without tags is one. A frame other than the first
  // that would lie past the end of the file is passed over by all but WriteStrippedGps.
  XpResult WriteRotation(XpAbstractFile& stream, std::int64_t offset, std::uint32_t quarterTurns) override;
  XpResult WriteModifyDate(XpAbstractFile& stream, std::int64_t offset, const XpDateTime& date,
                           bool setFileTime) override;
  XpResult WriteOriginalDate(XpAbstractFile& stream, std::int64_t offset, const XpDateTime& date) override;
  XpResult WriteStrippedGps(XpAbstractFile& stream, std::int64_t offset) override;
  /// In place, where the maker notes have a rating.
  XpResult SetRating(XpString path, std::uint32_t rating) override;

  /// Null for a negative frame.
  virtual Picture ReadThumbnailOfFrame(XpAbstractFile& stream, std::int64_t offset, std::int64_t frame,
                                       const XpImageReading& reading);
  /// The index of the file.
  virtual XpSharedPtr<XpTiffTagManager> ReadIndexTags(XpAbstractFile& stream, std::int64_t offset);

  // Leave the stream at the start of a picture. `index` is that of the file, or null to read it.
  /// XpErrImageArgument for a negative frame, XpErrImageUnusable for one past the last, XpErrPastEnd for one
  /// that would lie past the end of the file.
  XpResult SeekToFrame(XpAbstractFile& stream, std::int64_t offset, std::int64_t frame,
                       const XpTiffTagManager* index);
  XpResult SeekToRepresentative(XpAbstractFile& stream, std::int64_t offset, const XpTiffTagManager* index);
  /// 0 without a usable index.
  std::int64_t GetFrameCount(XpAbstractFile& stream, std::int64_t offset);

 private:
  enum class LostFrame { IsPassedOver, EndsTheEdit };
  /// With the position of the frame's TIFF header.
  using FrameEdit = std::function<XpResult(std::int64_t base)>;

  XpResult SeekToEntry(
      XpAbstractFile& stream, std::int64_t offset, const XpTiffTagManager* index,
      const std::function<const vrx::imaging::MpEntry*(const vrx::imaging::MpTable&)>& choose);
  XpResult SeekToShown(XpAbstractFile& stream, std::int64_t offset);
  /// What the function reads by a codec of JPEG files, whose status is taken over.
  template <class Reading>
  auto ReadByJpeg(const Reading& read);
  XpResult EditFrames(XpAbstractFile& stream, std::int64_t offset, LostFrame lost, const FrameEdit& edit);
};
