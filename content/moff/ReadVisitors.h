// Read a .moff container into its tag tree: first the tables, then the bodies.
#pragma once

#include <cstddef>
#include <vector>

#include "content/moff/FileBody.h"
#include "content/moff/TagVisitor.h"
#include "foundation/file/XpAbstractFile.h"

namespace vrx::moff {

/// Reads all tables, in the order of the file from its start, into an empty tree. Throws
/// XpErrMalformedRecord for a wrong signature, a size below that of its own two fields, a count or a size
/// that the file or the limits have no room for; otherwise the code of the read.
class ReadHeaderVisitor : public TagVisitor {
 public:
  explicit ReadHeaderVisitor(XpAbstractFile& file, const Limits& limits = {});

  void VisitFile(FileTag& file) override;
  void VisitGroupHeader(GroupTable& groups) override;
  void VisitIndexHeader(IndexTable& entries) override;
  void VisitGroupData(GroupTag& group) override;

  /// Where reading goes on: after the last table, or where it failed.
  std::int64_t GetPosition() const { return m_position; }
  std::int64_t GetFileSize() const { return m_size; }
  /// The number of the group, from 0, whose index table is read; -1 before the first one.
  std::int64_t GetGroup() const { return m_group; }

 private:
  void ReadExactly(std::byte* buffer, std::size_t count);
  template <class Record>
  Record ReadSized(std::uint32_t signature);
  std::vector<std::byte> ReadTable(std::uint32_t count, std::uint32_t recordSize);

  XpAbstractFile& m_file;
  const Limits m_limits;
  const std::int64_t m_size;
  std::int64_t m_position = 0;
  std::uint32_t m_entries = 0;
  std::int64_t m_group = -1;
};

/// Reads the bodies of all entries of a tree whose tables have been read. Throws the codes of ReadBody, and
/// XpErrMalformedRecord when the bodies together are larger than the file, which shows that some overlap.
class ReadBodyVisitor : public TagVisitor {
 public:
  ReadBodyVisitor(XpAbstractFile& file, const BodyRange& range) : m_file(file), m_range(range) {}

  void VisitIndexHeader(IndexTable& entries) override;
  void VisitIndexData(EntryTag& entry) override;

 private:
  XpAbstractFile& m_file;
  const BodyRange m_range;
  std::int64_t m_indexStart = 0;
  std::int64_t m_bytes = 0;
};

}  // namespace vrx::moff
