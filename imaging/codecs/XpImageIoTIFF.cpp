#include "imaging/codecs/XpImageIoTIFF.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "foundation/file/XpFile.h"
#include "foundation/text/XpPath.h"
#include "imaging/codecs/AdobeRgbMark.h"
#include "imaging/codecs/TiffRows.h"
#include "imaging/codecs/TiffStart.h"
#include "imaging/codecs/TiffStrips.h"
#include "imaging/codecs/TiffTagAppend.h"
#include "imaging/codecs/UprightPicture.h"
#include "imaging/codecs/XpImageIoPNG.h"
#include "imaging/resample/AdobeRgb.h"
#include "imaging/resample/XpPixmapResample.h"
#include "imaging/tags/TagEdits.h"
#include "imaging/tags/TagNames.h"

using namespace vrx::imaging;

namespace {

using Picture = XpImageIo::Picture;

constexpr char16_t kWideGamutName[] = u"Wide Gamut RGB";
constexpr std::int64_t kBlockBytes = 128 * 1024;  // read at once, at least a row
constexpr std::int32_t kRowsPerReport = 256;
constexpr std::int32_t kDone = 100;  // percent
constexpr std::uint32_t kMostSide = std::numeric_limits<std::int32_t>::max();

/// Reads rows of a picture one after another, each from where its strip has it.
class RowReader {
 public:
  RowReader(XpAbstractFile& stream, const TiffStrips& strips, XpPixmap24NoHandle& picture)
      : m_stream(stream),
        m_picture(picture),
        m_convert(FindTiffRowConversion(strips.form)),
        m_rowBytes(strips.form.BytesPerPixel() * strips.size.width),
        m_blockRows(std::max<std::int64_t>(kBlockBytes / m_rowBytes, 1)),
        m_block(static_cast<std::size_t>(m_blockRows * m_rowBytes)) {}

  std::int32_t RowsRead() const { return m_row; }

  /// The whole rows of a strip, but none after the last row of the picture. False when `isStopped` says so.
  template <class IsStopped>
  bool ReadStrip(const TiffStrip& strip, IsStopped isStopped) {
    const std::int64_t rows = std::min<std::int64_t>(strip.bytes / m_rowBytes, m_picture.height - m_row);
    m_stream.Seek(strip.position, XpSeekStart);
    for (std::int64_t done = 0; done < rows;) {
      const std::int64_t count = std::min(rows - done, m_blockRows);
      ReadBlock(count);
      if (isStopped()) return false;
      done += count;
    }
    return true;
  }

 private:
  /// What cannot be read shows as zeros.
  void ReadBlock(std::int64_t rows) {
    std::uint64_t read = 0;
    m_stream.Read(m_block.data(), static_cast<std::uint64_t>(rows * m_rowBytes), &read);
    const auto end = m_block.begin() + static_cast<std::ptrdiff_t>(rows * m_rowBytes);
    std::fill(m_block.begin() + static_cast<std::ptrdiff_t>(read), end, std::uint8_t{0});
    const std::uint8_t* samples = m_block.data();
    for (std::int64_t i = 0; i < rows; ++i, samples += m_rowBytes) {
      m_convert(samples, m_picture.width, m_picture.GetPlane(0)->Row(m_row++));
    }
  }

  XpAbstractFile& m_stream;
  XpPixmap24NoHandle& m_picture;
  TiffRowConversion m_convert;
  std::int64_t m_rowBytes;
  std::int64_t m_blockRows;
  std::vector<std::uint8_t> m_block;
  std::int32_t m_row = 0;
};

/// Null without one, or with one that cannot be read, which `result` says.
std::unique_ptr<icc_profile> ProfileIn(const XpTiffTagManager& tags, XpResult& result) {
  const XpTiffTagIFD* first = tags.GetIfd(0);
  XpTiffTagDataBase* data = first == nullptr ? nullptr : first->FindTag(kTagIccProfile, false);
  result = XpErrImageNoData;
  if (data == nullptr) return nullptr;
  XpMemoryFile bytes;
  bytes.Attach(data->GetData(), static_cast<std::int64_t>(data->GetByteSize()), false);
  auto profile = std::make_unique<icc_profile>();
  result = profile->Read(bytes);
  return result == XpOk ? std::move(profile) : nullptr;
}

/// Without a profile the colours stay.
void ToSrgb(XpPixmap24NoHandle& picture, const XpTiffTagManager& tags) {
  if (!HasUncalibratedColours(tags)) return;
  XpResult ignored = XpOk;
  const auto profile = ProfileIn(tags, ignored);
  if (profile == nullptr) return;
  const XpString name = profile->FindTag("desc").GetTextDescription().text.ToWide();
  if (XpCompareNoCase(name, kWideGamutName) == 0) {
    ConvertWideGamutRgbToSrgb(picture);
  } else {
    ConvertAdobeRgbToSrgb(picture);
  }
}

}  // namespace

void XpImageIoTIFF::NoteMarks(const XpTiffTagIFD& first) {
  orientation = first.GetShort(kTagOrientation, false);
  isUncalibrated = first.GetShort(kTagColorSpace, true) == kUncalibrated;
}

Picture XpImageIoTIFF::ReadStrips(XpAbstractFile& stream, std::int64_t offset, XpImageProgress* progress) {
  orientation = 0;
  missingBytes = 0;
  isUncalibrated = false;
  const XpSharedPtr<XpTiffTagManager> tags = ReadTags(stream, offset);
  if (tags.Get() == nullptr) return nullptr;
  if (tags->GetIfd(0) != nullptr) NoteMarks(*tags->GetIfd(0));
  std::int64_t streamBytes = 0;
  if (Fail(stream.Stat(nullptr, nullptr, nullptr, &streamBytes)) != XpOk) return nullptr;
  TiffStrips strips;
  const XpResult found = FindTiffStrips(*tags, offset, streamBytes, strips, missingBytes);
  if (Fail(found == XpErrImageNoData ? XpErrImageInvalid : found) != XpOk) return nullptr;
  auto picture = std::make_unique<XpPixmap24NoHandle>();
  if (Fail(picture->Allocate(strips.size.width, strips.size.height)) != XpOk) return nullptr;
  RowReader rows(stream, strips, *picture);
  std::int32_t nextReport = 0;
  const auto isStopped = [&] {
    const bool isDone = rows.RowsRead() == picture->height;
    if (progress == nullptr || (rows.RowsRead() < nextReport && !isDone)) return false;
    nextReport = rows.RowsRead() + kRowsPerReport;
    const std::int64_t percent = std::int64_t{rows.RowsRead()} * kDone / picture->height;
    return progress->Report(static_cast<std::int32_t>(percent)) != 0;
  };
  for (const TiffStrip& strip : strips.strips) {
    if (rows.ReadStrip(strip, isStopped)) continue;
    Fail(XpErrImageCancelled);
    return nullptr;
  }
  return picture;
}

Picture XpImageIoTIFF::ReadPixels(XpAbstractFile& stream, std::int64_t offset, XpImageSize target,
                                  const XpImageReading& reading) {
  problem = XpString();
  Picture picture = ReadStrips(stream, offset, reading.progress);
  if (reading.outRotation != nullptr) {
    *reading.outRotation = static_cast<std::int32_t>(QuarterTurnsOf(orientation));
  }
  if (status == XpErrMalformedRecord) {
    const std::string bytes = std::to_string(missingBytes);
    problem = XpNarrowString("its pixels reach " + bytes + " bytes past the end of the file").ToWide();
  }
  if (picture != nullptr || status != XpErrImageKind) return picture;
  XpImageIoPNG loader;
  picture = loader.ReadFitted(stream, offset, target, {});
  problem = loader.problem;
  Fail(loader.status);
  return picture;
}

Picture XpImageIoTIFF::TurnPicture(Picture picture, const XpTiffTagManager& tags) {
  const XpTiffTagIFD* first = tags.GetIfd(0);
  if (first == nullptr) return picture;
  picture = TurnUpright(std::move(picture), first->GetShort(kTagOrientation, false));
  if (picture == nullptr) Fail(XpErrOutOfMemory);
  return picture;
}

Picture XpImageIoTIFF::Read(XpAbstractFile& stream, std::int64_t offset, std::int32_t scale,
                            const XpImageReading& reading) {
  if (scale != 1 && scale != 2 && scale != 4 && scale != 8) {
    Fail(XpErrImageArgument);
    return nullptr;
  }
  Picture picture = ReadPixels(stream, offset, {}, reading);
  if (picture == nullptr) return nullptr;
  XpSharedPtr<XpTiffTagManager> tags;
  if (reading.applyOrientation) tags = ReadTags(stream, offset);
  if (tags.Get() != nullptr) picture = TurnPicture(std::move(picture), *tags);
  if (picture == nullptr) return nullptr;
  if (scale != 1 && picture->width >= scale && picture->height >= scale &&
      Fail(ResizePixmap(*picture, picture->width / scale, picture->height / scale)) != XpOk) {
    return nullptr;
  }
  if (reading.toSrgb && tags.Get() != nullptr) ToSrgb(*picture, *tags);
  return picture;
}

Picture XpImageIoTIFF::LoadFitted(XpString path, XpImageSize target, const XpImageReading& reading) {
  Picture picture;
  XpSharedPtr<XpTiffTagManager> tags;
  {
    XpFile file(path);
    if (Fail(file.Open(XpOpenRead, XpShareRead)) != XpOk) return nullptr;
    picture = ReadPixels(file, 0, target, reading);
    if (picture == nullptr) return nullptr;
    if (reading.applyOrientation) tags = ReadTags(file, 0);
  }
  if (tags.Get() != nullptr) picture = TurnPicture(std::move(picture), *tags);
  if (picture == nullptr) return nullptr;
  const XpImageSize fit = FitImageSize({picture->width, picture->height}, target);
  if (Fail(ResizePixmap(*picture, fit.width, fit.height)) != XpOk) return nullptr;
  if (reading.toSrgb && tags.Get() != nullptr) ToSrgb(*picture, *tags);
  return picture;
}

std::unique_ptr<icc_profile> XpImageIoTIFF::ReadIccProfile(XpAbstractFile& stream, std::int64_t offset) {
  const XpSharedPtr<XpTiffTagManager> tags = ReadTags(stream, offset);
  if (tags.Get() == nullptr) {
    Fail(XpErrImageInvalid);
    return nullptr;
  }
  XpResult result = XpOk;
  auto profile = ProfileIn(*tags, result);
  Fail(result);
  return profile;
}

XpResult XpImageIoTIFF::SetRating(XpString path, std::uint32_t rating) {
  return EditFile(path, [&](XpFile& file) { return StoreRating(file, rating); });
}

XpResult XpImageIoTIFF::StoreRating(XpFile& file, std::uint32_t rating) {
  const XpSharedPtr<XpTiffTagManager> tags = ReadTags(file, 0);
  if (tags.Get() == nullptr) return XpErrImageInvalid;
  XpTiffTagIFD* maker = tags->GetMakerIfd();
  if (maker == nullptr) return tags->HasLosses() ? XpErrImageInvalid : XpErrImageNoData;
  if (maker->HasTag(kTagMakerRating, false)) {
    return TouchDates(file, PatchRating(file, 0, rating, true), 0);
  }
  if (tags->HasLosses()) return XpErrImageInvalid;
  maker->SetLong(kTagMakerRating, rating);
  return TouchDates(file, AppendFirstIfd(file, *tags), 0);
}

Picture XpImageIoTIFF::ReadThumbnail(XpAbstractFile&, std::int64_t, const XpImageReading&) {
  Fail(XpErrImageNotProvided);
  return nullptr;
}

XpResult XpImageIoTIFF::SeekToTiffHeader(XpAbstractFile& stream, std::int64_t offset) {
  return Fail(SeekToTiffStart(stream, offset));
}

XpResult XpImageIoTIFF::ReadDimensions(XpAbstractFile& stream, std::int64_t offset, XpImageSize& size,
                                       bool stored, bool) {
  const XpSharedPtr<XpTiffTagManager> tags = ReadTags(stream, offset);
  if (tags.Get() == nullptr) return Fail(XpErrImageInvalid);
  const XpTiffTagIFD* first = tags->GetIfd(0);
  if (first == nullptr) return Fail(XpErrImageNoData);
  std::uint32_t width = 0, height = 0;
  if (Fail(ReadShortOrLong(*first, kTagImageWidth, width)) != XpOk) return status;
  if (Fail(ReadShortOrLong(*first, kTagImageLength, height)) != XpOk) return status;
  if (std::max(width, height) > kMostSide) return Fail(XpErrImageInvalid);
  size = {static_cast<std::int32_t>(width), static_cast<std::int32_t>(height)};
  if (!stored && IsSideways(first->GetShort(kTagOrientation, false))) std::swap(size.width, size.height);
  return status;
}
