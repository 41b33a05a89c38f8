#include "imaging/codecs/XpImageIoJpeg.h"

#include <algorithm>
#include <memory>

#include "foundation/file/XpFile.h"
#include "foundation/file/XpReplaceFile.h"
#include "foundation/text/XpPath.h"
#include "imaging/codecs/AdobeRgbMark.h"
#include "imaging/codecs/JpegRebuild.h"
#include "imaging/codecs/JpegThumbnail.h"
#include "imaging/codecs/OpenedJpeg.h"
#include "imaging/codecs/SpfSegment.h"
#include "imaging/codecs/StereoSegment.h"
#include "imaging/codecs/UprightPicture.h"
#include "imaging/jpeg/JpegSegments.h"
#include "imaging/resample/AdobeRgb.h"
#include "imaging/resample/XpPixmapResample.h"
#include "imaging/tags/TagEdits.h"
#include "imaging/tags/TagNames.h"

using namespace vrx::imaging;

namespace {

using Picture = XpImageIo::Picture;

// The segments that each operation keeps.
constexpr int kStereoOnly[] = {kStereoSegment};
constexpr int kForThumbnail[] = {kExifSegment, kStereoSegment, kPhotoshopSegment};
constexpr int kForSize[] = {kExifSegment, kStereoSegment};
constexpr int kForTags[] = {kXmpSegment, kIccSegment};
constexpr int kIccOnly[] = {kIccSegment};
constexpr int kXmpOnly[] = {kXmpSegment};
constexpr int kSpfOnly[] = {kSpfSegment};

constexpr std::int32_t kRowsPerReport = 256;
constexpr std::int32_t kDone = 100;  // percent

bool IsStereoFile(const XpAbstractFile& stream) {
  XpString path;
  return stream.GetPathText(path) == XpOk && XpCompareNoCase(XpPathExtension(path), u".JPS") == 0;
}

/// Joins the parts of a profile in the order of the file. False when there are none.
bool JoinIccProfile(const std::vector<JpegSegment>& segments, XpMemoryFile& profile) {
  bool found = false;
  for (const JpegSegment& segment : segments) {
    if (!IsSegment(segment, kIccSegment, kIccName)) continue;
    found = true;
    if (segment.body.size() <= kIccHeadBytes) continue;
    const auto part = segment.body.subspan(kIccHeadBytes);
    profile.Write(part.data(), part.size(), nullptr);
  }
  return found;
}

void JoinXmp(const std::vector<JpegSegment>& segments, XpMemoryFile& xmp) {
  for (const JpegSegment& segment : segments) {
    if (!IsSegment(segment, kXmpSegment, kXmpName)) continue;
    xmp.Write(segment.body.data(), segment.body.size(), nullptr);
  }
}

void Halve(StereoLayout layout, std::int32_t& width, std::int32_t& height) {
  if (layout == StereoLayout::HalfWidth) width /= 2;
  if (layout == StereoLayout::HalfHeight) height /= 2;
}

/// The left or upper picture of a stereo pair.
XpResult CropStereo(XpPixmap24NoHandle& picture, const std::vector<JpegSegment>& segments,
                    bool isStereoFile) {
  StereoLayout layout = isStereoFile ? StereoLayout::HalfWidth : StereoLayout::Whole;
  for (const JpegSegment& segment : segments) {
    if (ReadStereoSegment(segment, layout) == XpOk) break;
  }
  std::int32_t width = picture.width, height = picture.height;
  Halve(layout, width, height);
  if (width == picture.width && height == picture.height) return XpOk;
  return CropPixmap(picture, 0, 0, width, height);
}

/// The orientation in the first Exif segment; 0 without one.
std::uint16_t OrientationIn(const JpegSegment& exif) {
  const auto block = exif.body.subspan(std::min<std::size_t>(kExifHeadBytes, exif.body.size()));
  XpMemoryFile stream;
  stream.Attach(const_cast<std::uint8_t*>(block.data()), static_cast<std::int64_t>(block.size()), false);
  XpTiffTagManager tags;
  if (!tags.Load(stream, XpTagModeKnownNotes) || tags.GetIfd(0) == nullptr) return 0;
  return tags.GetIfd(0)->GetShort(kTagOrientation, false);
}

}  // namespace

void XpImageIoJpeg::ForgetMarks() {
  orientation = 0;
  width = height = 0;
  isAdobeRgb = false;
}

void XpImageIoJpeg::NoteMarks(const XpTiffTagManager* tags, const JpegDecoder& decoder) {
  if (tags == nullptr || tags->GetIfd(0) == nullptr) return;
  if (tags->HasIfds()) {
    width = static_cast<std::int32_t>(decoder.Width());
    height = static_cast<std::int32_t>(decoder.Height());
  }
  orientation = tags->GetIfd(0)->GetShort(kTagOrientation, true);
  isAdobeRgb = HasAdobeRgbMark(*tags);
}

Picture XpImageIoJpeg::DecodeRows(JpegDecoder& decoder, std::int32_t scale, XpImageProgress* progress) {
  const JpegForm form{.scale = static_cast<unsigned>(scale), .isSmooth = scale == 1};
  if (!decoder.Start(form)) return nullptr;
  auto picture = std::make_unique<XpPixmap24NoHandle>();
  const std::int32_t rows = decoder.OutputHeight();
  if (Fail(picture->Allocate(decoder.OutputWidth(), rows)) != XpOk) return nullptr;
  const auto isStopped = [&](std::int32_t percent) {
    return progress != nullptr && progress->Report(percent) != 0 && Fail(XpErrImageCancelled) != XpOk;
  };
  for (std::int32_t y = 0; decoder.HasMoreRows(); ++y) {
    if (!decoder.ReadRow(picture->GetPlane(0)->Row(y))) return nullptr;
    const bool reports = y % kRowsPerReport == 0;
    if (reports && isStopped(static_cast<std::int32_t>(std::int64_t{y} * kDone / rows))) return nullptr;
  }
  if (isStopped(kDone)) return nullptr;
  return picture;
}

Picture XpImageIoJpeg::Decode(XpAbstractFile& stream, std::int64_t offset, std::int32_t scale,
                              const XpImageReading& reading, const XpTiffTagManager* tags) {
  OpenedJpeg jpeg(stream, offset, kStereoOnly);
  if (Fail(jpeg.Result()) != XpOk) return nullptr;
  NoteMarks(tags, jpeg.Decoder());
  Picture picture = DecodeRows(jpeg.Decoder(), scale, reading.progress);
  if (picture != nullptr) {
    Fail(CropStereo(*picture, jpeg.Segments(), reading.forceStereo || IsStereoFile(stream)));
    if (status == XpOk && !jpeg.Decoder().Finish()) picture.reset();
  }
  if (picture == nullptr && status == XpOk) Fail(jpeg.Failure());
  return status == XpOk ? std::move(picture) : nullptr;
}

Picture XpImageIoJpeg::Upright(Picture picture) {
  Picture upright = TurnUpright(std::move(picture), orientation);
  if (upright == nullptr) Fail(XpErrOutOfMemory);
  return upright;
}

Picture XpImageIoJpeg::Read(XpAbstractFile& stream, std::int64_t offset, std::int32_t scale,
                            const XpImageReading& reading) {
  ForgetMarks();
  if (scale != 1 && scale != 2 && scale != 4 && scale != 8) {
    Fail(XpErrImageArgument);
    return nullptr;
  }
  const XpSharedPtr<XpTiffTagManager> tags = ReadTags(stream, offset);
  Picture picture = Decode(stream, offset, scale, reading, tags.Get());
  if (picture != nullptr && reading.toSrgb && isAdobeRgb) ConvertAdobeRgbToSrgb(*picture);
  if (picture != nullptr && reading.applyOrientation) picture = Upright(std::move(picture));
  if (reading.outRotation != nullptr)
    *reading.outRotation = static_cast<std::int32_t>(QuarterTurnsOf(orientation));
  return picture;
}

Picture XpImageIoJpeg::ReadThumbnail(XpAbstractFile& stream, std::int64_t offset,
                                     const XpImageReading& reading) {
  ForgetMarks();
  const XpSharedPtr<XpTiffTagManager> tags = ReadTags(stream, offset);
  Picture picture;
  {
    OpenedJpeg jpeg(stream, offset, kForThumbnail);
    if (Fail(jpeg.Result()) != XpOk) return nullptr;
    NoteMarks(tags.Get(), jpeg.Decoder());
    const auto bytes = FindThumbnail(jpeg.Segments(), tags.Get());
    if (!bytes.empty()) {
      XpMemoryFile view;
      view.Attach(const_cast<std::uint8_t*>(bytes.data()), static_cast<std::int64_t>(bytes.size()), false);
      picture = Decode(view, 0, 1, {.forceStereo = reading.forceStereo}, nullptr);
    }
  }
  if (picture != nullptr && Fail(CropLetterbox(*picture, {width, height})) != XpOk) picture.reset();
  if (picture != nullptr) picture = Upright(std::move(picture));
  if (reading.outRotation != nullptr)
    *reading.outRotation = static_cast<std::int32_t>(QuarterTurnsOf(orientation));
  if (picture != nullptr && isAdobeRgb) ConvertAdobeRgbToSrgb(*picture);
  return picture;
}

XpResult XpImageIoJpeg::ReadDimensions(XpAbstractFile& stream, std::int64_t offset, XpImageSize& size,
                                       bool stored, bool forceStereo) {
  OpenedJpeg jpeg(stream, offset, kForSize);
  if (Fail(jpeg.Result()) != XpOk) return status;
  size = {static_cast<std::int32_t>(jpeg.Decoder().Width()),
          static_cast<std::int32_t>(jpeg.Decoder().Height())};
  if (stored) return status;
  bool isSideways = false;
  for (const JpegSegment& segment : jpeg.Segments()) {
    StereoLayout layout = StereoLayout::Whole;
    if (ReadStereoSegment(segment, layout) == XpOk) {
      Halve(layout, size.width, size.height);
      return status;
    }
    if (!IsSegment(segment, kExifSegment, kExifName)) continue;
    const std::uint16_t turn = OrientationIn(segment);
    isSideways = IsSideways(turn);
    if (isSideways) std::swap(size.width, size.height);
    break;
  }
  if (forceStereo || IsStereoFile(stream)) (isSideways ? size.height : size.width) /= 2;
  return status;
}

XpSharedPtr<XpTiffTagManager> XpImageIoJpeg::ReadTags(XpAbstractFile& stream, std::int64_t offset) {
  XpSharedPtr<XpTiffTagManager> tags = XpImageIo::ReadTags(stream, offset);
  if (tags.Get() == nullptr) return tags;
  OpenedJpeg jpeg(stream, offset, kForTags);
  if (jpeg.Result() != XpOk) return tags;  // the tags are there whatever the picture is like
  XpMemoryFile profile;
  XpTiffTagIFD* first = tags->GetIfd(0);
  if (first != nullptr && JoinIccProfile(jpeg.Segments(), profile)) {
    first->SetUndefined(kTagIccProfile, profile.GetData(), static_cast<std::uint32_t>(profile.GetSize()));
  }
  JoinXmp(jpeg.Segments(), tags->xmp);
  return tags;
}

std::unique_ptr<icc_profile> XpImageIoJpeg::ReadIccProfile(XpAbstractFile& stream, std::int64_t offset) {
  OpenedJpeg jpeg(stream, offset, kIccOnly);
  if (Fail(jpeg.Result()) != XpOk) return nullptr;
  XpMemoryFile bytes;
  if (!JoinIccProfile(jpeg.Segments(), bytes)) {
    Fail(XpErrImageNoData);
    return nullptr;
  }
  auto profile = std::make_unique<icc_profile>();
  bytes.Seek(0, XpSeekStart);
  if (Fail(profile->Read(bytes)) != XpOk) return nullptr;
  return profile;
}

XpResult XpImageIoJpeg::SeekToTiffHeader(XpAbstractFile& stream, std::int64_t offset) {
  return Fail(SeekToExif(stream, offset));
}

XpResult XpImageIoJpeg::ReadXmp(XpAbstractFile& stream, std::int64_t offset, XpMemoryFile& xmp) {
  OpenedJpeg jpeg(stream, offset, kXmpOnly);
  if (Fail(jpeg.Result()) == XpOk) JoinXmp(jpeg.Segments(), xmp);
  return status;
}

XpResult XpImageIoJpeg::FindSpfSegment(XpAbstractFile& stream, bool& found, std::uint32_t& kind) {
  found = false;
  kind = 0;
  OpenedJpeg jpeg(stream, 0, kSpfOnly);
  if (Fail(jpeg.Result()) != XpOk) return status;
  const auto segment = std::ranges::find_if(jpeg.Segments(), IsSpfSegment);
  found = segment != jpeg.Segments().end();
  return found ? Fail(ReadSpfKind(*segment, kind)) : status;
}

XpResult XpImageIoJpeg::RemoveGpsPointer(XpAbstractFile& stream) {
  const std::int64_t base = stream.Tell();
  return Fail(TouchDates(stream, vrx::imaging::RemoveGpsPointer(stream, base), base));
}

XpResult XpImageIoJpeg::SetRating(XpString path, std::uint32_t rating) {
  if (Fail(CheckEditable(path)) != XpOk) return status;
  XpFile source(path);
  if (Fail(source.Open(XpOpenRead, XpShareRead)) != XpOk) return status;
  std::int64_t base = 0;
  if (FindTiffHeader(source, 0, base) != XpOk) return status;
  // Without the profile: it is a segment of its own, which is copied as one.
  const XpSharedPtr<XpTiffTagManager> tags = XpImageIo::ReadTags(source, 0);
  if (tags.Get() == nullptr) return Fail(XpErrImageNoData);
  const JpegRebuild rebuild{source, base, *tags, rating, XpDateTime::GetCurrentTime()};
  const auto write = [&](XpAbstractFile& target) -> XpResult {
    if (const XpResult result = RebuildJpeg(rebuild, target)) return result;
    if (const XpResult result = SeekToExif(target, 0)) return result;
    return TouchDates(target, XpOk, target.Tell(), rebuild.now);
  };
  // A picture exists once only, so it is never without a whole version of it.
  return Fail(XpReplaceFile(path, write, XpReplaceWay::RenameOnly));
}
