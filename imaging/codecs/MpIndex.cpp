#include "imaging/codecs/MpIndex.h"

#include <algorithm>

#include "foundation/file/XpMemoryFile.h"
#include "imaging/jpeg/JpegSegments.h"
#include "imaging/tags/TagEdits.h"
#include "imaging/tags/TagLayout.h"
#include "imaging/tags/TagReading.h"
#include "imaging/tags/XpTiffTagData.h"

namespace vrx::imaging {

namespace {

constexpr std::uint16_t kEntriesTag = 0xB002;
constexpr std::uint16_t kCountTag = 0xB001;
constexpr std::uint32_t kEntryBytes = 16;
constexpr std::size_t kUsableIfds = 2;
/// Bursts have some hundred pictures. Each takes a search for its head.
constexpr std::uint32_t kMostEntries = 1024;

const XpTiffTagDataBase* FindTable(const XpTiffTagIFD* first) {
  const XpTiffTagDataBase* table = first == nullptr ? nullptr : first->FindTag(kEntriesTag, false);
  return table == nullptr || table->GetType() != XpTiffUndefined ? nullptr : table;
}

std::uint32_t CountEntries(const XpTiffTagIFD& first, const XpTiffTagDataBase& table) {
  return std::min(first.GetLong(kCountTag, 0, false), table.count / kEntryBytes);
}

std::vector<MpEntry> ReadEntries(const std::uint8_t* bytes, std::uint32_t count, bool bigEndian) {
  std::vector<MpEntry> entries;
  entries.reserve(count);
  for (std::uint32_t i = 0; i < count; ++i, bytes += kEntryBytes) {
    entries.push_back({.number = i,
                       .attribute = Get32(bytes, bigEndian),
                       .size = Get32(bytes + kMpSizeAt, bigEndian),
                       .offset = Get32(bytes + kMpOffsetAt, bigEndian)});
  }
  return entries;
}

template <class Predicate>
const MpEntry* Find(const std::vector<MpEntry>& entries, std::int64_t number, Predicate isWanted) {
  for (const MpEntry& entry : entries) {
    if (isWanted(entry) && number-- == 0) return &entry;
  }
  return nullptr;
}

bool IsFrame(const MpEntry& entry) { return !entry.IsChild(); }

}  // namespace

const MpEntry* MpTable::Primary() const {
  return Find(entries, 0, [](const MpEntry& entry) { return entry.offset == 0; });
}

const MpEntry* MpTable::Representative() const {
  return Find(entries, 0, [](const MpEntry& entry) { return entry.IsRepresentative(); });
}

const MpEntry* MpTable::Frame(std::int64_t number) const { return Find(entries, number, IsFrame); }

const MpEntry* MpTable::Child(std::int64_t number) const {
  return Find(entries, number, [](const MpEntry& entry) { return entry.IsChild(); });
}

std::int64_t MpTable::CountFrames() const { return std::ranges::count_if(entries, IsFrame); }

MpTable ReadMpTable(const XpTiffTagManager& index) {
  const XpTiffTagIFD* first = index.GetIfd(0);
  const XpTiffTagDataBase* table = FindTable(first);
  if (table == nullptr) return {};
  const std::uint32_t count = std::min(CountEntries(*first, *table), kMostEntries);
  return {ReadEntries(static_cast<const std::uint8_t*>(table->GetData()), count, index.bigEndian)};
}

MpTable ReadUsableMpTable(const XpTiffTagManager* index) {
  return index != nullptr && index->GetIfdCount() == kUsableIfds ? ReadMpTable(*index) : MpTable();
}

std::int64_t MpIndex::PositionOf(const MpEntry& entry) const {
  return tableAt + static_cast<std::int64_t>(entry.number) * kEntryBytes;
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
  const XpTiffTagDataBase* table = FindTable(first);
  if (table == nullptr) return {};
  const EntryQuery query{
      .tag = kEntriesTag, .type = XpTiffUndefined, .leastCount = kEntryBytes, .greatestCount = table->count};
  const std::int64_t at = FindEntry(stream, header.ifd, header.bigEndian, kMpHeaderAt, query, nullptr);
  if (at == 0) return {};
  const std::uint32_t count = CountEntries(*first, *table);
  // A second entry for the same tag may lead elsewhere.
  if (at + std::int64_t{count} * kEntryBytes > static_cast<std::int64_t>(body.size())) return {};
  MpIndex index;
  index.entries = ReadEntries(body.data() + at, count, header.bigEndian);
  index.isBigEndian = header.bigEndian;
  index.tableAt = at - kMpHeaderAt;
  return index;
}

XpResult FindMpHeader(XpAbstractFile& stream, std::int64_t offset, std::int64_t& header) {
  std::int64_t body = 0;
  if (const XpResult result = FindAppSegment(stream, offset, kMpfSegment, kMpfName, body)) return result;
  header = body + kMpHeaderAt;
  return XpOk;
}

XpResult FindMpPicture(XpAbstractFile& stream, std::int64_t offset, std::int64_t header, const MpEntry& entry,
                       std::int64_t& start) {
  start = entry.offset == 0 ? offset : header + entry.offset;
  return entry.offset != 0 && start >= stream.GetSize() ? XpErrPastEnd : XpOk;
}

bool MpHeadBudget::Spend(std::int64_t start) {
  if (m_stream.Seek(start, XpSeekStart) != XpOk) return true;
  WalkAppSegments(m_stream);  // how far it came counts, not how it ended
  // A head that the file ends in is no longer than what the file has of it.
  m_left -= std::min(m_stream.Tell(), m_stream.GetSize()) - start;
  return m_left >= 0;
}

}  // namespace vrx::imaging
