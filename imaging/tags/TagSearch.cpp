#include "imaging/tags/TagSearch.h"

#include <algorithm>
#include <array>
#include <vector>

#include "imaging/tags/TagLayout.h"
#include "imaging/tags/TagNames.h"
#include "imaging/tags/TagReading.h"
#include "imaging/tags/XpTiffTagData.h"

namespace vrx::imaging {
namespace {

constexpr std::uint32_t kLeastNoteSize = 5;
constexpr std::uint32_t kGreatestNoteSize = 65536;
constexpr std::size_t kNoteMarkSize = 2;  // of the signature, which tell a note with one from one without

std::optional<std::uint16_t> EntryCount(StreamWindow& window, const StoredIfd& ifd) {
  std::array<std::uint8_t, kIfdCountSize> head;
  if (!window.Read(ifd.position, head)) return std::nullopt;
  return Get16(head.data(), ifd.bigEndian);
}

bool Matches(const StreamWindow& window, const EntryQuery& query, std::uint32_t type, std::uint32_t count,
             std::int64_t target) {
  return (type == query.type || (query.secondType != 0 && type == query.secondType)) &&
         count >= query.leastCount && count <= query.greatestCount &&
         (query.noRangeCheck || target < window.GetSize());
}

}  // namespace

std::int64_t StoredIfd::CountOf(std::uint32_t index) const {
  return position + kIfdCountSize + std::int64_t{index} * kEntrySize + kEntryCountAt;
}
std::int64_t StoredIfd::ValueFieldOf(std::uint32_t index) const {
  return position + kIfdCountSize + std::int64_t{index} * kEntrySize + kEntryValueAt;
}

std::optional<StoredIfd> FirstIfd(StreamWindow& window, std::int64_t base) {
  TiffHeader header;
  if (!ReadTiffHeader(window, base, header)) return std::nullopt;
  if (!window.Holds(header.ifd, kIfdCountSize + 1)) return std::nullopt;
  return StoredIfd{header.ifd, base, header.bigEndian};
}

std::optional<StoredIfd> NextIfd(StreamWindow& window, const StoredIfd& ifd) {
  const std::optional<std::uint16_t> count = EntryCount(window, ifd);
  std::array<std::uint8_t, kIfdNextSize> field;
  if (!count || !window.Read(ifd.position + kIfdCountSize + std::int64_t{*count} * kEntrySize, field)) {
    return std::nullopt;
  }
  const std::int64_t position = ifd.base + std::int64_t{Get32(field.data(), ifd.bigEndian)};
  const bool isNew = position >= ifd.base + kTiffHeaderSize && position != ifd.position;
  if (!isNew || !window.Holds(position, kIfdCountSize)) return std::nullopt;
  return StoredIfd{position, ifd.base, ifd.bigEndian};
}

std::optional<FoundEntry> SearchEntry(StreamWindow& window, const StoredIfd& ifd, const EntryQuery& query) {
  const std::optional<std::uint16_t> stored = EntryCount(window, ifd);
  if (!stored) return std::nullopt;
  const std::int64_t first = ifd.position + kIfdCountSize;
  const std::int64_t count = std::min<std::int64_t>(*stored, (window.GetSize() - first) / kEntrySize);
  std::vector<std::uint8_t> block(static_cast<std::size_t>(count) * kEntrySize);
  if (!window.Read(first, block)) return std::nullopt;
  for (std::uint32_t i = 0; i < static_cast<std::uint32_t>(count); ++i) {
    const std::uint8_t* entry = block.data() + std::size_t{i} * kEntrySize;
    if (Get16(entry, ifd.bigEndian) != query.tag) continue;
    const std::int64_t target = ifd.base + std::int64_t{Get32(entry + kEntryValueAt, ifd.bigEndian)};
    if (Matches(window, query, Get16(entry + 2, ifd.bigEndian), Get32(entry + kEntryCountAt, ifd.bigEndian),
                target)) {
      return FoundEntry{i, target};
    }
  }
  return std::nullopt;
}

std::optional<StoredIfd> ExifIfd(StreamWindow& window, const StoredIfd& first) {
  const auto found =
      SearchEntry(window, first, {.tag = kTagExifIfd, .type = XpTiffLong, .secondType = kStoredIfdType});
  if (!found || found->target < first.base + kTiffHeaderSize) return std::nullopt;
  return StoredIfd{found->target, first.base, first.bigEndian};
}

std::optional<StoredIfd> MakerIfd(StreamWindow& window, const StoredIfd& first, bool requireSignature) {
  const std::optional<StoredIfd> exif = ExifIfd(window, first);
  if (!exif) return std::nullopt;
  const auto note = SearchEntry(window, *exif,
                                {.tag = kTagMakerNote,
                                 .type = XpTiffUndefined,
                                 .leastCount = kLeastNoteSize,
                                 .greatestCount = kGreatestNoteSize});
  std::array<std::uint8_t, kNoteSignatureSize> block;
  if (!note || note->target < first.base + kTiffHeaderSize || !window.Read(note->target, block)) {
    return std::nullopt;
  }
  if (std::equal(block.begin(), block.begin() + kNoteMarkSize, kNoteDsc.begin())) {
    const bool ownOffsets = block[kNoteVersionAt] >= kNoteOwnOffsets;
    return StoredIfd{note->target + kNoteSignatureSize, ownOffsets ? note->target : first.base,
                     first.bigEndian};
  }
  if (requireSignature) return std::nullopt;
  return StoredIfd{note->target, first.base, first.bigEndian};
}

std::int64_t FindEntry(XpAbstractFile& stream, std::int64_t ifd, bool bigEndian, std::int64_t base,
                       const EntryQuery& query, std::uint32_t* index) {
  StreamWindow window(stream);
  const auto found = SearchEntry(window, {ifd, base, bigEndian}, query);
  if (!found) return 0;
  if (index != nullptr) *index = found->index;
  return found->target;
}

}  // namespace vrx::imaging
