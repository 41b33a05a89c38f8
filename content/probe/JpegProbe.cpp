#include "content/probe/JpegProbe.h"

#include <array>
#include <cstdint>
#include <utility>

#include "content/probe/DeepCheck.h"
#include "imaging/codecs/XpImageIoJpeg.h"
#include "imaging/tags/TagNames.h"

namespace vrx::formats {
namespace {

// Values of an SPF segment.
constexpr std::uint32_t kSpfKind257 = 257;
constexpr std::uint32_t kSpfKind258 = 258;

// A picture of at least this shape is a wide panorama, unless it is a mere strip.
constexpr std::int64_t kWideLength = 3424;
constexpr std::int64_t kWideBreadth = 1920;
constexpr std::int64_t kStripBreadth = 1079;

bool IsWide(std::int64_t length, std::int64_t breadth) {
  return breadth > kStripBreadth && breadth * kWideLength / kWideBreadth <= length;
}

/// The record of a panorama in the maker note: a mark that is not 0, the size of the picture, and two corners
/// of a rectangle in it.
bool HasPanoramaRecord(const XpTiffTagIFD& maker, XpImageSize size) {
  std::array<std::int64_t, 8> record{};
  const XpTiffTagDataBase* value = maker.FindTag(imaging::kTagMakerPanorama, false);
  if (value == nullptr || value->GetType() != XpTiffLong || value->count < record.size()) return false;
  for (std::uint32_t i = 0; i < record.size(); ++i) {
    record[i] = maker.GetLong(imaging::kTagMakerPanorama, i, false);
  }
  const std::int64_t w = size.width, h = size.height;
  return record[0] != 0 && record[1] == w && record[2] == h && record[4] < w && record[6] <= w &&
         record[5] < h && record[7] <= h;
}

/// The codec turns the size upright; cameras write the record for the picture as it is stored.
void UndoQuarterTurn(const XpTiffTagManager& tags, XpImageSize& size) {
  const XpTiffTagIFD* first = tags.GetIfd(0);
  const std::uint16_t orientation =
      first == nullptr ? std::uint16_t{0} : first->GetShort(imaging::kTagOrientation, false);
  if (orientation == 6 || orientation == 8) std::swap(size.width, size.height);
}

FormatCode CodeOfSpf(std::uint32_t kind) {
  if (kind == kSpfKind257) return kSpf257;
  return kind == kSpfKind258 ? kSpf258 : kSpf;
}

}  // namespace

bool IsPanorama(XpImageSize size, const XpTiffTagManager& tags, bool& isWide) {
  isWide = false;
  const XpTiffTagIFD* maker = tags.GetMakerIfd();
  if (maker != nullptr && HasPanoramaRecord(*maker, size)) return true;
  isWide = IsWide(size.width, size.height) || IsWide(size.height, size.width);
  return isWide;
}

bool HoldsPanorama(XpImageIo& codec, XpAbstractFile& file, const XpTiffTagManager& tags) {
  XpImageSize size;
  if (codec.ReadImageSize(file, 0, size, false) != XpOk) return false;
  UndoQuarterTurn(tags, size);
  bool isWide = false;
  return IsPanorama(size, tags, isWide);
}

FormatCode CheckJpeg(XpAbstractFile& file, XpSharedPtr<XpTiffTagManager> tags) {
  XpImageIoJpeg codec;
  // Without the profile and the XMP bytes, which the codec's own function would also look for.
  if (tags.Get() == nullptr) tags = codec.XpImageIo::ReadTags(file, 0);
  if (tags.Get() == nullptr) return kJpegPlain;
  const XpTiffTagIFD* maker = tags->GetMakerIfd();
  if (maker != nullptr && maker->GetUndefinedByte(imaging::kTagMakerSpecialKind, 0, true) != 0) {
    return kJpegMarked;
  }
  bool hasSpf = false;
  std::uint32_t kind = 0;
  codec.FindSpfSegment(file, hasSpf, kind);  // a damaged segment is one of another kind
  if (hasSpf) return CodeOfSpf(kind);
  return HoldsPanorama(codec, file, *tags) ? kJpegPanorama : kJpegPlain;
}

}  // namespace vrx::formats
