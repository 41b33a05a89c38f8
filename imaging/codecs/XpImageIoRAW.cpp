#include "imaging/codecs/XpImageIoRAW.h"

#include <utility>

#include "content/formats/XpFormatChecker.h"
#include "foundation/file/XpCachedFile.h"
#include "foundation/file/XpReplaceFile.h"
#include "foundation/platform/FileSystem.h"
#include "imaging/codecs/AdobeRgbMark.h"
#include "imaging/codecs/GpsReplacement.h"
#include "imaging/codecs/RawPreview.h"
#include "imaging/codecs/RawSize.h"
#include "imaging/codecs/RawVersion.h"
#include "imaging/codecs/TiffStart.h"
#include "imaging/codecs/UprightPicture.h"
#include "imaging/codecs/XpImageIoJpeg.h"
#include "imaging/jpeg/JpegCopy.h"
#include "imaging/resample/AdobeRgb.h"
#include "imaging/resample/XpPixmapResample.h"
#include "imaging/tags/TagEdits.h"
#include "imaging/tags/TagNames.h"

using namespace vrx::imaging;
namespace formats = vrx::formats;

namespace {

using Picture = XpImageIo::Picture;

constexpr XpImageSize kThumbnail{160, 120};

std::uint16_t OrientationOf(const XpTiffTagManager& tags) {
  const XpTiffTagIFD* first = tags.GetIfd(0);
  return first == nullptr ? std::uint16_t{0} : first->GetShort(kTagOrientation, false);
}

void TurnSize(std::uint16_t orientation, XpImageSize& size) {
  if (IsSideways(orientation)) std::swap(size.width, size.height);
}

void GiveRotation(const XpImageReading& reading, std::uint32_t quarterTurns) {
  if (reading.outRotation != nullptr) *reading.outRotation = static_cast<std::int32_t>(quarterTurns);
}

}  // namespace

void XpImageIoRAW::SetTagModeByName(const XpString& path) {
  const formats::FormatCode code = XpFormatChecker::GetFormatFromName(path);
  const bool hasNote = code == formats::kKr2 || code == formats::kKrw || code == formats::kKrq;
  tagReadMode = hasNote ? XpTagModeAllNotes : XpTagModeNoNotes;
}

Picture XpImageIoRAW::LoadFitted(XpString path, XpImageSize target, const XpImageReading& reading) {
  SetTagModeByName(path);
  return XpImageIo::LoadFitted(path, target, reading);
}

Picture XpImageIoRAW::Load(XpString path, std::int32_t scale, const XpImageReading& reading) {
  SetTagModeByName(path);
  return XpImageIo::Load(path, scale, reading);
}

Picture XpImageIoRAW::LoadThumbnail(XpString path, const XpImageReading& reading) {
  SetTagModeByName(path);
  return XpImageIo::LoadThumbnail(path, reading);
}

XpResult XpImageIoRAW::GetImageSize(XpString path, XpImageSize& size, bool forceStereo) {
  SetTagModeByName(path);
  return XpImageIo::GetImageSize(path, size, forceStereo);
}

XpResult XpImageIoRAW::GetStoredImageSize(XpString path, XpImageSize& size, bool forceStereo) {
  SetTagModeByName(path);
  return XpImageIo::GetStoredImageSize(path, size, forceStereo);
}

XpSharedPtr<XpTiffTagManager> XpImageIoRAW::LoadTags(XpString path) {
  SetTagModeByName(path);
  return XpImageIo::LoadTags(path);
}

Picture XpImageIoRAW::DecodePreview(XpAbstractFile& stream, std::int64_t offset,
                                    const XpImageReading& reading, std::uint16_t& orientation) {
  orientation = 0;
  const XpSharedPtr<XpTiffTagManager> tags = ReadTags(stream, offset);
  if (tags.Get() == nullptr) return nullptr;
  orientation = OrientationOf(*tags);
  RawPreview preview;
  if (Fail(FindRawPreview(*tags, preview)) != XpOk) return nullptr;
  // The preview's own marks always count, those of the RAW file where the caller wants it.
  XpImageIoJpeg jpeg;
  Picture picture = jpeg.Read(stream, offset + preview.offset, 1,
                              {.forceStereo = reading.forceStereo,
                               .progress = reading.progress,
                               .toSrgb = true,
                               .applyOrientation = true});
  Fail(jpeg.status);
  if (picture != nullptr && reading.toSrgb && HasAdobeRgbMark(*tags)) ConvertAdobeRgbToSrgb(*picture);
  return picture;
}

Picture XpImageIoRAW::ReadPreview(XpAbstractFile& stream, std::int64_t offset,
                                  const XpImageReading& reading) {
  std::uint16_t orientation = 0;
  Picture picture = DecodePreview(stream, offset, reading, orientation);
  GiveRotation(reading, QuarterTurnsOf(orientation));
  if (picture == nullptr || !reading.applyOrientation) return picture;
  picture = TurnUpright(std::move(picture), orientation);
  if (picture == nullptr) Fail(XpErrOutOfMemory);
  return picture;
}

Picture XpImageIoRAW::Resized(Picture picture, XpImageSize size) {
  return Fail(ResizePixmap(*picture, size.width, size.height)) == XpOk ? std::move(picture) : nullptr;
}

Picture XpImageIoRAW::Read(XpAbstractFile& stream, std::int64_t offset, std::int32_t scale,
                           const XpImageReading& reading) {
  if (scale < 1) {
    Fail(XpErrImageArgument);
    return nullptr;
  }
  Picture picture = ReadPreview(stream, offset, reading);
  if (picture == nullptr) return nullptr;
  const XpImageSize scaled{picture->width / scale, picture->height / scale};
  return scaled.width > 0 && scaled.height > 0 ? Resized(std::move(picture), scaled) : std::move(picture);
}

Picture XpImageIoRAW::ReadFitted(XpAbstractFile& stream, std::int64_t offset, XpImageSize target,
                                 const XpImageReading& reading) {
  Picture picture = ReadPreview(stream, offset, reading);
  if (picture == nullptr) return nullptr;
  const XpImageSize whole{picture->width, picture->height};
  if (whole.width <= target.width && whole.height <= target.height) return picture;
  return Resized(std::move(picture), FitImageSize(whole, target));
}

Picture XpImageIoRAW::ReadThumbnail(XpAbstractFile& stream, std::int64_t offset,
                                    const XpImageReading& reading) {
  std::uint16_t ignoredOrientation = 0;
  Picture picture =
      DecodePreview(stream, offset, {.forceStereo = reading.forceStereo, .toSrgb = true}, ignoredOrientation);
  GiveRotation(reading, 0);
  if (picture == nullptr) return nullptr;
  const XpImageSize fit = FitImageSize({picture->width, picture->height}, kThumbnail);
  return Resized(std::move(picture), fit);
}

XpResult XpImageIoRAW::SeekToTiffHeader(XpAbstractFile& stream, std::int64_t offset) {
  return Fail(SeekToTiffStart(stream, offset));
}

XpResult XpImageIoRAW::ReadDimensions(XpAbstractFile& stream, std::int64_t offset, XpImageSize& size,
                                      bool stored, bool) {
  XpString path;
  if (stream.GetPathText(path) == XpOk && !path.IsEmpty()) SetTagModeByName(path);
  const XpSharedPtr<XpTiffTagManager> tags = ReadTags(stream, offset);
  if (tags.Get() == nullptr) return status;
  XpImageSize found;
  if (!FindRawSize(*tags, found)) return Fail(XpErrImageInvalid);
  if (!stored) TurnSize(OrientationOf(*tags), found);
  size = found;
  return Fail(XpOk);
}

XpResult XpImageIoRAW::GetPreviewSize(XpString path, XpImageSize& size, bool forceStereo) {
  SetTagModeByName(path);
  XpFile file(path);
  if (Fail(file.Open(XpOpenRead, XpShareRead)) != XpOk) return status;
  const XpSharedPtr<XpTiffTagManager> tags = ReadTags(file, 0);
  if (tags.Get() == nullptr) return status;
  RawPreview preview;
  if (Fail(FindRawPreview(*tags, preview)) != XpOk) return status;
  XpImageSize found;
  if (Fail(XpImageIoJpeg().ReadDimensions(file, preview.offset, found, true, forceStereo)) != XpOk)
    return status;
  TurnSize(OrientationOf(*tags), found);
  size = found;
  return status;
}

XpResult XpImageIoRAW::CopyPreview(XpAbstractFile& stream, XpAbstractFile& out) {
  const XpSharedPtr<XpTiffTagManager> tags = ReadTags(stream, 0);
  if (tags.Get() == nullptr) return status;
  RawPreview preview;
  if (Fail(FindRawPreview(*tags, preview)) != XpOk) return status;
  if (preview.length == 0) return Fail(XpErrImageNoData);
  if (preview.offset + preview.length > stream.GetSize()) return Fail(XpErrEndOfFile);
  return Fail(CopyBytes(stream, preview.offset, preview.length, out));
}

XpResult XpImageIoRAW::SavePreview(XpAbstractFile& stream, XpString path) {
  XpString source;
  if (stream.GetPathText(source) == XpOk && vrx::platform::IsSameFile(source, path)) {
    return Fail(XpErrImageArgument);
  }
  return Fail(XpReplaceFile(path, [&](XpAbstractFile& out) { return CopyPreview(stream, out); }));
}

std::uint32_t XpImageIoRAW::GetRawVersion(XpString path) {
  XpCachedFile file(path);
  if (Fail(file.Open(XpOpenRead, XpShareRead)) != XpOk) return 0;
  XpTiffTagManager tags;
  if (ReadTagTree(file, {.mode = XpTagModeAllNotes, .onBadTag = onBadTag}, tags)) return RawVersionOf(tags);
  Fail(XpErrImageInvalid);
  return 0;
}

bool XpImageIoRAW::IsEarlyBody(XpString path) {
  if (XpFormatChecker::GetFormatFromName(path) != formats::kKrw) return false;
  const XpSharedPtr<XpTiffTagManager> tags = LoadTags(path);
  return tags.Get() != nullptr && IsFromEarlyBody(*tags);
}

bool XpImageIoRAW::IsEditable(const XpString& path) {
  const formats::FormatCode code = XpFormatChecker::GetFormatFromName(path);
  return code == formats::kKr2 || code == formats::kKrq || (code == formats::kKrw && !IsEarlyBody(path));
}

XpResult XpImageIoRAW::SetRotation(XpString path, std::uint32_t quarterTurns) {
  return IsEditable(path) ? XpImageIo::SetRotation(path, quarterTurns) : Fail(XpErrImageNotProvided);
}

XpResult XpImageIoRAW::SetOriginalDate(XpString path, const XpDateTime& date) {
  return IsEditable(path) ? XpImageIo::SetOriginalDate(path, date) : Fail(XpErrImageNotProvided);
}

XpResult XpImageIoRAW::SetRating(XpString path, std::uint32_t rating) {
  if (XpFormatChecker::GetFormatFromName(path) == formats::kKrf) return Fail(XpErrImageNoData);
  SetTagModeByName(path);
  return XpImageIo::SetRating(path, rating);
}

XpResult XpImageIoRAW::StripGps(XpString path) {
  if (Fail(CheckEditable(path)) != XpOk) return status;
  if (GetRawVersion(path) < kRawVersionWithGpsPlace) return Fail(XpErrImageNoData);
  return XpImageIo::StripGps(path);
}

XpResult XpImageIoRAW::ReplaceGps(XpString path, const XpGPSRecord& record) {
  if (Fail(CheckEditable(path)) != XpOk) return status;
  if (GetRawVersion(path) < kRawVersionWithGpsPlace) return Fail(XpErrImageNoData);
  SetTagModeByName(path);
  return EditFile(path, [&](XpAbstractFile& file) { return WriteGps(file, 0, record); });
}

XpResult XpImageIoRAW::WriteGps(XpAbstractFile& stream, std::int64_t offset, const XpGPSRecord& record) {
  const XpSharedPtr<XpTiffTagManager> tags = ReadTags(stream, offset);
  if (tags.Get() == nullptr) return status;
  return Fail(TouchDates(stream, ReplaceGpsIfd(stream, offset, *tags, record), offset));
}
