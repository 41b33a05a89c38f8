// The frame of all still-picture codecs: reading a picture, its size, thumbnail, tags and colour profile, and
// editing single tags in a stored file. Users pick a codec and work through this class.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "foundation/file/XpFile.h"
#include "foundation/memory/XpSharedPtr.h"
#include "foundation/time/XpDateTime.h"
#include "imaging/icc/IccProfile.h"
#include "imaging/pixmap/XpPixmap.h"
#include "imaging/tags/TagReading.h"
#include "imaging/tags/XpTiffTagManager.h"
#include "vrx/XpResult.h"
#include "vrx/XpString.h"

struct XpImageSize {
  std::int32_t width = 0;  // pixels
  std::int32_t height = 0;
  friend bool operator==(const XpImageSize&, const XpImageSize&) = default;
};

class XpImageProgress {
 public:
  /// 0 to 100. A result other than 0 asks to stop, and the reading ends with XpErrImageCancelled.
  virtual std::int32_t Report(std::int32_t percent) = 0;

 protected:
  ~XpImageProgress() = default;
};

/// How a picture is wanted. Thumbnails use `forceStereo` and `outRotation` only.
struct XpImageReading {
  bool forceStereo = false;             // two pictures side by side, of which the left is wanted
  XpImageProgress* progress = nullptr;  // borrowed; may be null
  bool toSrgb = false;                  // bring a picture that is marked as Adobe RGB to sRGB
  bool applyOrientation = false;        // turn the picture upright
  /// Takes the quarter turns, counter-clockwise, that bring the picture upright, whether or not it was
  /// turned. May be null.
  std::int32_t* outRotation = nullptr;
};

/// The size with the aspect of `whole` that fits `target`, in whole pixels; 0 by 0 when a height is 0.
XpImageSize FitImageSize(XpImageSize whole, XpImageSize target);

/// A function with a path opens the file and calls the one with a stream; a picture in a stream begins at
/// `offset`. Each leaves its result in `status`. An object is used by one thread and for one stream at a
/// time.
class XpImageIo {
 public:
  using Picture = std::unique_ptr<XpPixmap24NoHandle>;

  virtual ~XpImageIo() = default;

  // The picture, or null. `target` has positive sides; `scale` divides both sides and is 1, 2, 4 or 8.
  virtual Picture LoadFitted(XpString path, XpImageSize target, const XpImageReading& reading);
  virtual Picture Load(XpString path, std::int32_t scale, const XpImageReading& reading);
  virtual Picture Read(XpAbstractFile& stream, std::int64_t offset, std::int32_t scale,
                       const XpImageReading& reading);
  /// Decodes at the coarsest scale that covers the target, then resamples to fit it.
  virtual Picture ReadFitted(XpAbstractFile& stream, std::int64_t offset, XpImageSize target,
                             const XpImageReading& reading);
  virtual Picture LoadThumbnail(XpString path, const XpImageReading& reading);

  // The size of the picture when upright, and as it is stored.
  virtual XpResult GetImageSize(XpString path, XpImageSize& size, bool forceStereo);
  virtual XpResult ReadImageSize(XpAbstractFile& stream, std::int64_t offset, XpImageSize& size,
                                 bool forceStereo);
  virtual XpResult GetStoredImageSize(XpString path, XpImageSize& size, bool forceStereo);
  virtual XpResult ReadStoredImageSize(XpAbstractFile& stream, std::int64_t offset, XpImageSize& size,
                                       bool forceStereo);
  virtual XpResult GetImageSizeByName(XpString path, XpImageSize& size, bool forceStereo);

  /// Null when the picture has no tags.
  virtual XpSharedPtr<XpTiffTagManager> LoadTags(XpString path);
  virtual XpSharedPtr<XpTiffTagManager> ReadTags(XpAbstractFile& stream, std::int64_t offset);
  /// Null when the picture has no profile or one that cannot be read.
  virtual std::unique_ptr<vrx::imaging::icc_profile> ReadIccProfile(XpAbstractFile& stream,
                                                                    std::int64_t offset);
  virtual std::unique_ptr<vrx::imaging::icc_profile> LoadIccProfile(XpString path);

  // Edits in place, of which each but SetModifyDate also makes now the date of the last change. A file is on
  // the disk before they return. XpErrFileNotFound without a file; XpErrAccessDenied for a read-only one;
  // otherwise as the functions of TagEdits.h.
  virtual XpResult SetRotation(XpString path, std::uint32_t quarterTurns);
  virtual XpResult WriteRotation(XpAbstractFile& stream, std::int64_t offset, std::uint32_t quarterTurns);
  virtual XpResult SetModifyDate(XpString path, const XpDateTime& date, bool setFileTime);
  virtual XpResult WriteModifyDate(XpAbstractFile& stream, std::int64_t offset, const XpDateTime& date,
                                   bool setFileTime);
  virtual XpResult SetOriginalDate(XpString path, const XpDateTime& date);
  virtual XpResult WriteOriginalDate(XpAbstractFile& stream, std::int64_t offset, const XpDateTime& date);
  virtual XpResult SetRating(XpString path, std::uint32_t rating);

  virtual Picture ReadThumbnail(XpAbstractFile& stream, std::int64_t offset,
                                const XpImageReading& reading) = 0;
  /// How the maker note is read, as XpTagModeKnownNotes and its like.
  virtual std::int32_t GetTagReadMode() const { return XpTagModeKnownNotes; }
  virtual XpResult SeekToTiffHeader(XpAbstractFile& stream, std::int64_t offset);
  virtual XpResult ReadDimensions(XpAbstractFile& stream, std::int64_t offset, XpImageSize& size, bool stored,
                                  bool forceStereo);

  /// Cuts the position out of the tags; its bytes stay in the file, where nothing leads to them.
  virtual XpResult StripGps(XpString path);
  virtual XpResult WriteStrippedGps(XpAbstractFile& stream, std::int64_t offset);

  XpResult status = XpOk;
  /// Why the last reading gave no picture, or only a part of one, in words, where more is known than the
  /// status says.
  XpString problem;
  /// What ReadTags does with a damaged tag; the listing of tags asks for the others.
  vrx::imaging::OnBadTag onBadTag = vrx::imaging::OnBadTag::EndIfd;

 protected:
  /// XpErrFileNotFound for nothing or a folder, XpErrNotAFile for a device and its like, which merely opening
  /// could change, XpErrAccessDenied for a file that is read-only.
  static XpResult CheckEditable(const XpString& path);
  /// Runs an edit on the file at `path`; what was written is on the disk when this returns.
  XpResult EditFile(const XpString& path, const std::function<XpResult(XpFile&)>& edit);
  XpResult Fail(XpResult result) { return status = result; }
  /// Brings the stream to the TIFF header, of which the position is given, or fails.
  XpResult FindTiffHeader(XpAbstractFile& stream, std::int64_t offset, std::int64_t& base);
  bool RequiresNoteSignature() const { return GetTagReadMode() != XpTagModeAllNotes; }
};
