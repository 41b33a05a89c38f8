#include "content/moff/ReadVisitors.h"

#include <algorithm>
#include <array>
#include <span>

#include "content/moff/MoffTags.h"

namespace vrx::moff {
namespace {

[[noreturn]] void Throw(XpResult result) { throw result; }

/// The record at `index` of a table that was read as one block.
template <class Record>
Record RecordAt(std::span<const std::byte> table, std::uint32_t index) {
  return Decode<Record>(table.subspan(std::size_t{index} * Record::kSize).template first<Record::kSize>());
}

}  // namespace

ReadHeaderVisitor::ReadHeaderVisitor(XpAbstractFile& file, const Limits& limits)
    : m_file(file), m_limits(limits), m_size(file.GetSize()) {}

void ReadHeaderVisitor::ReadExactly(std::byte* buffer, std::size_t count) {
  if (count == 0) return;
  if (m_size - m_position < static_cast<std::int64_t>(count)) Throw(XpErrEndOfFile);
  if (const XpResult result = m_file.Seek(m_position, XpSeekStart)) Throw(result);
  std::uint64_t read = 0;
  if (const XpResult result = m_file.Read(buffer, count, &read)) Throw(result);
  if (read != count) Throw(XpErrEndOfFile);
  m_position += static_cast<std::int64_t>(count);
}

/// A longer record than is known is skipped at its end, a shorter one leaves the rest at 0: the format may
/// grow.
template <class Record>
Record ReadHeaderVisitor::ReadSized(std::uint32_t signature) {
  Bytes<Record::kSize> bytes{};
  ReadExactly(bytes.data(), kRecordStart);
  const BodyHead start = Decode<BodyHead>(std::span(bytes).template first<BodyHead::kSize>());
  if (start.kind != signature || start.size < kRecordStart) Throw(XpErrMalformedRecord);
  if (start.size - kRecordStart > m_size - m_position) Throw(XpErrMalformedRecord);
  const std::uint32_t known = std::min(start.size, Record::kSize);
  ReadExactly(bytes.data() + kRecordStart, known - kRecordStart);
  m_position += start.size - known;
  return Decode<Record>(bytes);
}

/// In one read, after its size has been compared with that of the file.
std::vector<std::byte> ReadHeaderVisitor::ReadTable(std::uint32_t count, std::uint32_t recordSize) {
  const std::uint64_t bytes = std::uint64_t{count} * recordSize;
  if (bytes > static_cast<std::uint64_t>(m_size - m_position)) Throw(XpErrMalformedRecord);
  std::vector<std::byte> table(static_cast<std::size_t>(bytes));
  ReadExactly(table.data(), table.size());
  return table;
}

void ReadHeaderVisitor::VisitFile(FileTag& file) { file.record = ReadSized<FileHeader>(FileTag::kSignature); }

void ReadHeaderVisitor::VisitGroupHeader(GroupTable& groups) {
  groups.position = m_position;
  const auto header = ReadSized<GroupDataHeader>(GroupTable::kSignature);
  if (header.count > m_limits.groups) Throw(XpErrMalformedRecord);
  const std::vector<std::byte> table = ReadTable(header.count, GroupData::kSize);
  for (std::uint32_t i = 0; i < header.count; ++i) groups.Add().record = RecordAt<GroupData>(table, i);
  groups.SetHeader(header);
}

void ReadHeaderVisitor::VisitGroupData(GroupTag&) { ++m_group; }

void ReadHeaderVisitor::VisitIndexHeader(IndexTable& entries) {
  entries.position = m_position;
  const auto header = ReadSized<IndexDataHeader>(IndexTable::kSignature);
  if (header.count > m_limits.entries - m_entries) Throw(XpErrMalformedRecord);
  m_entries += header.count;
  const std::vector<std::byte> table = ReadTable(header.count, IndexData::kSize);
  for (std::uint32_t i = 0; i < header.count; ++i) entries.Add().record = RecordAt<IndexData>(table, i);
  entries.SetHeader(header);
}

void ReadBodyVisitor::VisitIndexHeader(IndexTable& entries) { m_indexStart = entries.position; }

void ReadBodyVisitor::VisitIndexData(EntryTag& entry) {
  const std::int64_t position = m_indexStart + entry.record.position;
  BodyHead head;
  if (const XpResult result = ReadBodyHead(m_file, m_range, position, head)) Throw(result);
  m_bytes += head.size;
  if (m_bytes > m_range.end - m_range.first) Throw(XpErrMalformedRecord);
  if (const XpResult result = ReadBody(m_file, position, head, entry.body)) Throw(result);
}

}  // namespace vrx::moff
