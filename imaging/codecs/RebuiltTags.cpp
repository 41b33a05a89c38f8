#include "imaging/codecs/RebuiltTags.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "foundation/file/XpMemoryFile.h"
#include "imaging/jpeg/JpegSegments.h"
#include "imaging/tags/ExifVersion.h"
#include "imaging/tags/TagEdits.h"
#include "imaging/tags/TagNames.h"
#include "imaging/tags/TagWriting.h"

namespace vrx::imaging {

namespace {

constexpr std::uint32_t kDateBytes = 20;      // with the terminator
constexpr std::uint32_t kLeastDatesTag = 72;  // bytes of the maker note's tag that holds a copy of the date
constexpr std::size_t kDateAt = 6;            // in that tag
constexpr std::size_t kKeptIfds = 2;
// Of the maker note's own sub-IFD; they describe what a rewrite does not keep.
constexpr std::array<std::uint16_t, 4> kDroppedSubTags{0x0002, 0x0080, 0x0088, 0x0089};
constexpr std::uint16_t kJpegCompression = 6;
constexpr std::uint32_t kScreenResolution = 72;
constexpr std::uint16_t kInches = 2;

/// The bytes of a date in a value; null unless it is long enough.
char* DateIn(XpTiffTagDataBase* value, std::uint32_t leastBytes, std::size_t at) {
  if (value == nullptr || value->GetByteSize() < leastBytes) return nullptr;
  return static_cast<char*>(value->GetData()) + at;
}

void SetDates(XpTiffTagManager& tags, XpTiffTagIFD& maker, const XpDateTime& now) {
  const std::string date = ExifDate(now);
  if (date.empty()) return;
  XpTiffTagIFD& first = *tags.GetIfd(0);
  const char* old = DateIn(first.FindTag(kTagDateTime, false), kDateBytes, 0);
  char* copy = DateIn(maker.FindTag(kTagMakerDates, false), kLeastDatesTag, kDateAt);
  if (old != nullptr && copy != nullptr && std::memcmp(old, copy, kDateBytes) == 0) {
    std::memcpy(copy, date.c_str(), kDateBytes);
  }
  first.SetAscii(kTagDateTime, date);
  XpTiffTagIFD* second = tags.GetIfd(1);
  if (second != nullptr && second->HasTag(kTagDateTime, false)) second->SetAscii(kTagDateTime, date);
}

void RemoveTag(XpTiffTagIFD& ifd, std::uint16_t tag) {
  for (std::size_t i = ifd.GetTagCount(); i-- > 0;) {
    if (ifd.GetTagAt(i)->tag == tag) ifd.RemoveTagAt(i);
  }
}

/// The part of the source that the thumbnail tags name; nothing when a tag is missing or 0.
struct ThumbnailPlace {
  std::uint32_t start = 0;  // from the TIFF header
  std::uint32_t length = 0;
};

ThumbnailPlace TakeThumbnail(XpTiffTagManager& tags) {
  const XpTiffTagIFD* second = tags.GetIfd(1);
  if (second == nullptr) return {};
  const ThumbnailPlace place{second->GetLong(kTagThumbnailOffset, 0, false),
                             second->GetLong(kTagThumbnailSize, 0, false)};
  if (place.start != 0 && place.length != 0) return place;
  tags.root->ifds.resize(1);
  return {};
}

/// The thumbnail follows the tree, whose length does not depend on the value of its offset.
XpResult DescribeThumbnail(XpTiffTagManager& tags, std::uint32_t length) {
  XpTiffTagIFD& second = *tags.GetIfd(1);
  second.SetShort(kTagCompression, kJpegCompression);
  second.SetRational(kTagXResolution, kScreenResolution, 1);
  second.SetRational(kTagYResolution, kScreenResolution, 1);
  second.SetShort(kTagResolutionUnit, kInches);
  second.SetLong(kTagThumbnailSize, length);
  second.SetLong(kTagThumbnailOffset, 0);
  XpMemoryFile trial;
  std::int64_t treeBytes = 0;
  if (const XpResult result = WriteTagTree(trial, tags, treeBytes)) return result;
  second.SetLong(kTagThumbnailOffset, static_cast<std::uint32_t>(treeBytes));
  return XpOk;
}

}  // namespace

XpResult PrepareRebuiltTags(XpTiffTagManager& tags, std::uint32_t rating, const XpDateTime& now) {
  XpTiffTagIFD* maker = tags.GetMakerIfd();
  if (maker == nullptr) return XpErrImageNoData;
  SetDates(tags, *maker, now);
  RaiseExifVersion(tags);
  if (maker->HasTag(kTagMakerPreview, false)) maker->SetUndefined(kTagMakerPreview, nullptr, 0);
  if (XpTiffTagIFD* sub = tags.GetMakerSubIfd()) {
    for (const std::uint16_t tag : kDroppedSubTags) RemoveTag(*sub, tag);
  }
  if (tags.root->ifds.size() > kKeptIfds) tags.root->ifds.resize(kKeptIfds);
  maker->SetLong(kTagMakerRating, rating);
  return XpOk;
}

XpResult BuildExifBlock(XpAbstractFile& source, std::int64_t tiffHeader, XpTiffTagManager& tags,
                        std::vector<std::uint8_t>& block) {
  const ThumbnailPlace thumbnail = TakeThumbnail(tags);
  if (thumbnail.length > kMostSegmentBytes) return XpErrImageUnusable;
  if (thumbnail.length > 0) {
    if (const XpResult result = DescribeThumbnail(tags, thumbnail.length)) return result;
  }
  XpMemoryFile memory;
  constexpr std::array<char, kExifHeadBytes> kHead{'E', 'x', 'i', 'f', 0, 0};
  if (const XpResult result = memory.Write(kHead.data(), kHead.size(), nullptr)) return result;
  std::int64_t treeBytes = 0;
  if (const XpResult result = WriteTagTree(memory, tags, treeBytes)) return result;
  const auto written = static_cast<std::size_t>(memory.GetSize());
  if (written + thumbnail.length > kMostSegmentBytes) return XpErrImageUnusable;
  const auto* bytes = static_cast<const std::uint8_t*>(memory.GetData());
  block.assign(bytes, bytes + written);
  block.resize(written + thumbnail.length);
  if (thumbnail.length > 0) {
    if (const XpResult result = source.Seek(tiffHeader + thumbnail.start, XpSeekStart)) return result;
    if (const XpResult result = ReadExactly(source, &block[written], thumbnail.length)) return result;
  }
  // Kept even, where the segment has room, so that what follows lies at even places.
  if (block.size() % 2 != 0 && block.size() < kMostSegmentBytes) block.push_back(0xFF);
  return XpOk;
}

}  // namespace vrx::imaging
