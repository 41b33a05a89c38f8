#include "content/moff/WriteVisitors.h"

#include <limits>
#include <span>
#include <vector>

#include "content/moff/MoffTags.h"

namespace vrx::moff {
namespace {

void Write(XpAbstractFile& file, std::span<const std::byte> bytes) {
  if (bytes.empty()) return;
  if (const XpResult result = file.Write(bytes.data(), bytes.size(), nullptr)) throw result;
}

/// The records of all children, in one write.
template <class Table>
void WriteRecords(XpAbstractFile& file, const Table& table) {
  std::vector<std::byte> bytes;
  for (const auto& child : table.GetChildren()) {
    const auto record = Encode(child->record);
    bytes.insert(bytes.end(), record.begin(), record.end());
  }
  Write(file, bytes);
}

std::uint32_t Offset(std::int64_t value) {
  if (value > std::numeric_limits<std::uint32_t>::max()) throw XpResult{XpErrMalformedRecord};
  return static_cast<std::uint32_t>(value);
}

std::int64_t TableBytes(std::size_t count, std::uint32_t recordSize) {
  return static_cast<std::int64_t>(count) * recordSize;
}

}  // namespace

void HeaderSizeCounter::VisitLeaf(TagBase& tag) { m_total += tag.GetSize(); }

void WriteOffsetVisitor::VisitFile(FileTag& file) { m_position += file.GetSize() + file.child->GetSize(); }

void WriteOffsetVisitor::VisitGroupHeader(GroupTable& groups) {
  if (groups.GetChildren().size() > m_limits.groups) throw XpResult{XpErrMalformedRecord};
  m_groupStart = m_position;
  m_position += TableBytes(groups.GetChildren().size(), GroupData::kSize);
}

void WriteOffsetVisitor::VisitGroupData(GroupTag& group) {
  group.record.bodiesOffset = Offset(m_total - m_groupStart);
}

void WriteOffsetVisitor::VisitIndexHeader(IndexTable& entries) {
  m_entries += entries.GetChildren().size();
  if (m_entries > m_limits.entries) throw XpResult{XpErrMalformedRecord};
  m_indexStart = m_position;
  m_position += entries.GetSize();
}

void WriteOffsetVisitor::VisitIndexData(EntryTag& entry) {
  entry.record.position = Offset(m_total - m_indexStart + m_bodyBytes);
  m_position += entry.GetSize();
  if (entry.body) m_bodyBytes += entry.body->size;
}

void WriteHeaderVisitor::VisitFile(FileTag& file) {
  Write(m_file, Encode(file.record, FileTag::kSignature));
  Write(m_file, Encode(file.child->GetHeader(), GroupTable::kSignature));
}

void WriteHeaderVisitor::VisitGroupHeader(GroupTable& groups) { WriteRecords(m_file, groups); }

void WriteHeaderVisitor::VisitIndexHeader(IndexTable& entries) {
  Write(m_file, Encode(entries.GetHeader(), IndexTable::kSignature));
  WriteRecords(m_file, entries);
}

void WriteBodyVisitor::VisitIndexData(EntryTag& entry) {
  if (!entry.body) return;
  Write(m_file, Encode(BodyHead{entry.body->kind, entry.body->size}));
  const XpMemoryFile& data = *entry.body->data;
  Write(m_file, {static_cast<const std::byte*>(data.GetData()), static_cast<std::size_t>(data.GetSize())});
}

}  // namespace vrx::moff
