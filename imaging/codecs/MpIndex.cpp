#include "imaging/codecs/MpIndex.h"

#include <algorithm>

#include "foundation/file/XpMemoryFile.h"
#include "imaging/tags/TagEdits.h"
#include "imaging/tags/TagReading.h"
#include "imaging/tags/XpTiffTagData.h"

namespace vrx::imaging {

namespace {

constexpr std::uint16_t kEntriesTag = 0xB002;
constexpr std::uint16_t kCountTag = 0xB001;
constexpr std::uint32_t kEntryBytes = 16;
constexpr std::uint32_t kChildBit = 0x40000000;

std::uint32_t NumberAt(XpMemoryFile& stream, std::int64_t at, std::uint32_t order) {
  std::uint32_t value = 0;
  if (stream.Seek(at, XpSeekStart) != XpOk || stream.ReadUInt32(&value, order) != XpOk) return 0;
  return value;
}

}  // namespace

const MpEntry* MpIndex::Primary() const {
  const auto found = std::ranges::find_if(entries, [](const MpEntry& entry) { return entry.offset == 0; });
  return found == entries.end() ? nullptr : &*found;
}

const MpEntry* MpIndex::Child(std::size_t number) const {
  for (const MpEntry& entry : entries) {
    if (entry.isChild && number-- == 0) return &entry;
  }
  return nullptr;
}

std::optional<MpIndex> ReadMpIndex(std::span<const std::uint8_t> body) {
  XpMemoryFile stream;
  stream.Attach(const_cast<std::uint8_t*>(body.data()), static_cast<std::int64_t>(body.size()), false);
  TiffHeader header;
  XpTiffTagManager tags;
  StreamWindow window(stream);
  stream.Seek(kMpHeaderAt, XpSeekStart);
  if (!tags.Load(stream, XpTagModeNoNotes) || !ReadTiffHeader(window, kMpHeaderAt, header)) return {};
  const XpTiffTagIFD* first = tags.GetIfd(0);  // none when its offset leads into the header
  const XpTiffTagDataBase* table = first == nullptr ? nullptr : first->FindTag(kEntriesTag, false);
  if (table == nullptr || table->GetType() != XpTiffUndefined) return {};
  const EntryQuery query{
      .tag = kEntriesTag, .type = XpTiffUndefined, .leastCount = kEntryBytes, .greatestCount = table->count};
  std::int64_t at = FindEntry(stream, header.ifd, header.bigEndian, kMpHeaderAt, query, nullptr);
  if (at == 0) return {};
  const std::uint32_t order = header.bigEndian ? XpBigEndian : XpLittleEndian;
  const std::uint32_t count = std::min(first->GetLong(kCountTag, 0, false), table->count / kEntryBytes);
  // A second entry for the same tag may lead elsewhere.
  if (at + std::int64_t{count} * kEntryBytes > static_cast<std::int64_t>(body.size())) return {};
  MpIndex index{.isBigEndian = header.bigEndian};
  for (std::uint32_t i = 0; i < count; ++i, at += kEntryBytes) {
    index.entries.push_back({.isChild = (NumberAt(stream, at, order) & kChildBit) != 0,
                             .size = NumberAt(stream, at + kMpSizeAt, order),
                             .offset = NumberAt(stream, at + kMpOffsetAt, order),
                             .at = static_cast<std::uint32_t>(at - kMpHeaderAt)});
  }
  return index;
}

}  // namespace vrx::imaging
