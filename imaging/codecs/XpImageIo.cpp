#include "imaging/codecs/XpImageIo.h"

#include <algorithm>

#include "foundation/file/XpFile.h"
#include "foundation/platform/FileSystem.h"
#include "imaging/resample/XpPixmapResample.h"
#include "imaging/tags/TagEdits.h"

namespace edits = vrx::imaging;

namespace {

using Picture = XpImageIo::Picture;

constexpr std::int32_t kScales[] = {8, 4, 2};

/// The coarsest scale at which the picture still covers the target.
std::int32_t ScaleFor(XpImageSize whole, XpImageSize target) {
  if (target.width < 1 || target.height < 1) return 1;
  const std::int32_t ratio = std::max(whole.width / target.width, whole.height / target.height);
  const auto* scale = std::ranges::find_if(kScales, [ratio](std::int32_t s) { return ratio >= s; });
  return scale == std::end(kScales) ? 1 : *scale;
}

XpResult OpenForReading(XpFile& file) { return file.Open(XpOpenRead, XpShareRead); }

}  // namespace

XpImageSize FitImageSize(XpImageSize whole, XpImageSize target) {
  const std::int64_t w = whole.width, h = whole.height;
  if (w <= 0 || h <= 0 || target.height == 0) return {};
  if (w * target.height < h * target.width) {
    return {static_cast<std::int32_t>(w * target.height / h), target.height};
  }
  return {target.width, static_cast<std::int32_t>(h * target.width / w)};
}

Picture XpImageIo::LoadFitted(XpString path, XpImageSize target, const XpImageReading& reading) {
  XpFile file(path);
  if (Fail(OpenForReading(file)) != XpOk) return nullptr;
  return ReadFitted(file, 0, target, reading);
}

Picture XpImageIo::Load(XpString path, std::int32_t scale, const XpImageReading& reading) {
  XpFile file(path);
  if (Fail(OpenForReading(file)) != XpOk) return nullptr;
  return Read(file, 0, scale, reading);
}

Picture XpImageIo::Read(XpAbstractFile&, std::int64_t, std::int32_t, const XpImageReading&) {
  Fail(XpErrImageNotProvided);
  return nullptr;
}

Picture XpImageIo::ReadFitted(XpAbstractFile& stream, std::int64_t offset, XpImageSize target,
                              const XpImageReading& reading) {
  XpImageSize whole;
  if (Fail(ReadImageSize(stream, offset, whole, reading.forceStereo)) != XpOk) return nullptr;
  Picture picture = Read(stream, offset, ScaleFor(whole, target), reading);
  if (picture == nullptr) return nullptr;
  const XpImageSize fit = FitImageSize({picture->width, picture->height}, target);
  if (Fail(ResizePixmap(*picture, fit.width, fit.height)) != XpOk) return nullptr;
  return picture;
}

Picture XpImageIo::LoadThumbnail(XpString path, const XpImageReading& reading) {
  XpFile file(path);
  if (Fail(OpenForReading(file)) != XpOk) return nullptr;
  return ReadThumbnail(file, 0, reading);
}

XpResult XpImageIo::GetImageSize(XpString path, XpImageSize& size, bool forceStereo) {
  XpFile file(path);
  if (Fail(OpenForReading(file)) != XpOk) return status;
  return Fail(ReadImageSize(file, 0, size, forceStereo));
}

XpResult XpImageIo::ReadImageSize(XpAbstractFile& stream, std::int64_t offset, XpImageSize& size,
                                  bool forceStereo) {
  return Fail(ReadDimensions(stream, offset, size, false, forceStereo));
}

XpResult XpImageIo::GetStoredImageSize(XpString path, XpImageSize& size, bool forceStereo) {
  XpFile file(path);
  if (Fail(OpenForReading(file)) != XpOk) return status;
  return Fail(ReadStoredImageSize(file, 0, size, forceStereo));
}

XpResult XpImageIo::ReadStoredImageSize(XpAbstractFile& stream, std::int64_t offset, XpImageSize& size,
                                        bool forceStereo) {
  return Fail(ReadDimensions(stream, offset, size, true, forceStereo));
}

XpResult XpImageIo::GetImageSizeByName(XpString path, XpImageSize& size, bool forceStereo) {
  return GetImageSize(path, size, forceStereo);
}

XpSharedPtr<XpTiffTagManager> XpImageIo::LoadTags(XpString path) {
  XpFile file(path);
  if (Fail(OpenForReading(file)) != XpOk) return {};
  return ReadTags(file, 0);
}

XpSharedPtr<XpTiffTagManager> XpImageIo::ReadTags(XpAbstractFile& stream, std::int64_t offset) {
  if (Fail(SeekToTiffHeader(stream, offset)) != XpOk) return {};
  XpSharedPtr<XpTiffTagManager> tags(new XpTiffTagManager);
  if (edits::ReadTagTree(stream, {.mode = GetTagReadMode(), .onBadTag = onBadTag}, *tags)) return tags;
  Fail(XpErrImageInvalid);
  return {};
}

std::unique_ptr<vrx::imaging::icc_profile> XpImageIo::ReadIccProfile(XpAbstractFile&, std::int64_t) {
  Fail(XpErrImageNotProvided);
  return nullptr;
}

std::unique_ptr<vrx::imaging::icc_profile> XpImageIo::LoadIccProfile(XpString path) {
  XpFile file(path);
  if (Fail(OpenForReading(file)) != XpOk) return nullptr;
  return ReadIccProfile(file, 0);
}

XpResult XpImageIo::FindTiffHeader(XpAbstractFile& stream, std::int64_t offset, std::int64_t& base) {
  if (Fail(SeekToTiffHeader(stream, offset)) == XpOk) base = stream.Tell();
  return status;
}

XpResult XpImageIo::CheckEditable(const XpString& path) {
  vrx::platform::FileStatus state;
  if (vrx::platform::StatPath(path, vrx::platform::Links::Follow, state) || state.isDirectory) {
    return XpErrFileNotFound;
  }
  if (state.isSpecial) return XpErrNotAFile;
  return state.isReadOnly ? XpErrAccessDenied : XpOk;
}

XpResult XpImageIo::EditFile(const XpString& path, const std::function<XpResult(XpFile&)>& edit) {
  if (Fail(CheckEditable(path)) != XpOk) return status;
  XpFile file(path);
  if (Fail(file.Open(XpOpenReadWrite, XpShareRead)) != XpOk) return status;
  const XpResult edited = edit(file);
  const XpResult flushed = file.FlushToDisk();
  const XpResult closed = file.Close();
  if (edited != XpOk) return Fail(edited);
  return Fail(flushed != XpOk ? flushed : closed);
}

XpResult XpImageIo::SetRotation(XpString path, std::uint32_t quarterTurns) {
  return EditFile(path, [&](XpAbstractFile& file) { return WriteRotation(file, 0, quarterTurns); });
}

XpResult XpImageIo::WriteRotation(XpAbstractFile& stream, std::int64_t offset, std::uint32_t quarterTurns) {
  std::int64_t base = 0;
  if (FindTiffHeader(stream, offset, base) != XpOk) return status;
  return Fail(edits::TouchDates(stream, edits::PatchOrientation(stream, base, quarterTurns), base));
}

XpResult XpImageIo::SetModifyDate(XpString path, const XpDateTime& date, bool setFileTime) {
  return EditFile(path, [&](XpAbstractFile& file) { return WriteModifyDate(file, 0, date, setFileTime); });
}

XpResult XpImageIo::WriteModifyDate(XpAbstractFile& stream, std::int64_t offset, const XpDateTime& date,
                                    bool setFileTime) {
  std::int64_t base = 0;
  if (FindTiffHeader(stream, offset, base) != XpOk) return status;
  return Fail(edits::PatchDateTime(stream, base, date, setFileTime));
}

XpResult XpImageIo::SetOriginalDate(XpString path, const XpDateTime& date) {
  return EditFile(path, [&](XpAbstractFile& file) { return WriteOriginalDate(file, 0, date); });
}

XpResult XpImageIo::WriteOriginalDate(XpAbstractFile& stream, std::int64_t offset, const XpDateTime& date) {
  std::int64_t base = 0;
  if (FindTiffHeader(stream, offset, base) != XpOk) return status;
  return Fail(edits::TouchDates(stream, edits::PatchOriginalDate(stream, base, date), base));
}

XpResult XpImageIo::SetRating(XpString path, std::uint32_t rating) {
  return EditFile(path, [&](XpAbstractFile& file) {
    std::int64_t base = 0;
    if (FindTiffHeader(file, 0, base) != XpOk) return XpResult{status};
    return edits::TouchDates(file, edits::PatchRating(file, base, rating, RequiresNoteSignature()), base);
  });
}

XpResult XpImageIo::StripGps(XpString path) {
  return EditFile(path, [&](XpAbstractFile& file) { return WriteStrippedGps(file, 0); });
}

XpResult XpImageIo::WriteStrippedGps(XpAbstractFile& stream, std::int64_t offset) {
  std::int64_t base = 0;
  if (FindTiffHeader(stream, offset, base) != XpOk) return status;
  return Fail(edits::TouchDates(stream, edits::RemoveGpsPointer(stream, base), base));
}

XpResult XpImageIo::SeekToTiffHeader(XpAbstractFile&, std::int64_t) { return Fail(XpErrImageInvalid); }

XpResult XpImageIo::ReadDimensions(XpAbstractFile&, std::int64_t, XpImageSize&, bool, bool) {
  return Fail(XpErrImageNotProvided);
}
