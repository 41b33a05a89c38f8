#include "imaging/codecs/JpegThumbnail.h"

#include <algorithm>
#include <string_view>

#include "imaging/jpeg/JpegSegments.h"
#include "imaging/resample/XpPixmapResample.h"
#include "imaging/tags/TagNames.h"

namespace vrx::imaging {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::string_view kResourceMark = "8BIM";
constexpr std::size_t kResourceHeadBytes = 6;  // the mark and a 16-bit id
constexpr unsigned kThumbnailId = 0x040C;
constexpr unsigned kJpegFormat = 1;
constexpr std::size_t kFormatAt = 2;             // low half of the format, in the thumbnail's data
constexpr std::size_t kThumbnailHeadBytes = 28;  // before the JPEG bytes
constexpr XpImageSize kExifThumbnail{160, 120};

unsigned Big16(Bytes bytes, std::size_t at) { return static_cast<unsigned>(bytes[at] << 8 | bytes[at + 1]); }
std::size_t Big32(Bytes bytes, std::size_t at) {
  return std::size_t{Big16(bytes, at)} << 16 | Big16(bytes, at + 2);
}

/// The JPEG bytes in the data of a resource, which may claim to be longer than the segment.
Bytes ThumbnailIn(Bytes data, std::size_t size) {
  const std::size_t length = std::min(size, data.size());
  if (size <= kThumbnailHeadBytes || length < kThumbnailHeadBytes + 2) return {};
  const bool isJpeg = Big16(data, kFormatAt) == kJpegFormat && data[kThumbnailHeadBytes] == 0xFF &&
                      data[kThumbnailHeadBytes + 1] == 0xD8;
  return isJpeg ? data.subspan(kThumbnailHeadBytes, length - kThumbnailHeadBytes) : Bytes();
}

/// Goes through the resources of one segment.
Bytes FindInResources(Bytes rest) {
  while (rest.size() > kResourceHeadBytes) {
    if (!std::ranges::equal(rest.first(kResourceMark.size()), kResourceMark)) return {};
    const unsigned id = Big16(rest, kResourceMark.size());
    rest = rest.subspan(kResourceHeadBytes);
    const std::size_t name = (std::size_t{rest[0]} + 2) / 2 * 2;  // with its length byte, padded
    if (rest.size() < name + 4) return {};
    const std::size_t size = Big32(rest, name);
    rest = rest.subspan(name + 4);
    if (id == kThumbnailId) {
      if (const Bytes found = ThumbnailIn(rest, size); !found.empty()) return found;
    }
    const std::size_t padded = size + size % 2;
    if (padded > rest.size()) return {};
    rest = rest.subspan(padded);
  }
  return {};
}

Bytes FindInExif(const std::vector<JpegSegment>& segments, const XpTiffTagManager& tags) {
  const auto exif = std::ranges::find_if(
      segments, [](const JpegSegment& segment) { return IsSegment(segment, kExifSegment, kExifName); });
  const XpTiffTagIFD* second = tags.GetIfd(1);
  if (exif == segments.end() || second == nullptr || !second->HasTag(kTagThumbnailOffset, false)) return {};
  const std::uint64_t start = std::uint64_t{kExifHeadBytes} + second->GetLong(kTagThumbnailOffset, 0, false);
  return start < exif->body.size() ? exif->body.subspan(static_cast<std::size_t>(start)) : Bytes();
}

}  // namespace

Bytes FindThumbnail(const std::vector<JpegSegment>& segments, const XpTiffTagManager* tags) {
  for (const JpegSegment& segment : segments) {
    if (!IsSegment(segment, kPhotoshopSegment, kPhotoshopName)) continue;
    const Bytes found = FindInResources(segment.body.subspan(kPhotoshopName.size()));
    if (!found.empty()) return found;
  }
  return tags == nullptr ? Bytes() : FindInExif(segments, *tags);
}

XpResult CropLetterbox(XpPixmap24NoHandle& thumbnail, XpImageSize whole) {
  const XpImageSize size{thumbnail.width, thumbnail.height};
  if (size != kExifThumbnail || whole.width <= 0 || whole.height <= 0) return XpOk;
  const XpImageSize fit = FitImageSize(whole, kExifThumbnail);
  if (fit == kExifThumbnail) return XpOk;
  const std::int32_t left = (size.width - fit.width) / 2;
  const std::int32_t top = (size.height - fit.height) / 2;
  return CropPixmap(thumbnail, left, top, left + fit.width, top + fit.height);
}

}  // namespace vrx::imaging
