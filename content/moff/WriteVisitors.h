// Size, place and write the tag tree of a .moff container.
#pragma once

#include "content/moff/TagVisitor.h"
#include "foundation/file/XpAbstractFile.h"

namespace vrx::moff {

/// Adds up the bytes of all records, which is where the first body will be.
class HeaderSizeCounter : public TagVisitor {
 public:
  void VisitLeaf(TagBase& tag) override;
  std::int64_t GetTotal() const { return m_total; }

 private:
  std::int64_t m_total = 0;
};

/// Sets the offsets in the records for bodies that follow each other after `total` bytes of records. Throws
/// XpErrMalformedRecord for a tree that cannot be read again: beyond the limits, or with a body whose
/// position or end needs more than 32 bits.
class WriteOffsetVisitor : public TagVisitor {
 public:
  explicit WriteOffsetVisitor(std::int64_t total, const Limits& limits = {})
      : m_total(total), m_limits(limits) {}

  void VisitFile(FileTag& file) override;
  void VisitGroupHeader(GroupTable& groups) override;
  void VisitGroupData(GroupTag& group) override;
  void VisitIndexHeader(IndexTable& entries) override;
  void VisitIndexData(EntryTag& entry) override;

 private:
  const std::int64_t m_total;
  const Limits m_limits;
  std::int64_t m_position = 0;
  std::int64_t m_groupStart = 0;  // of the first group record
  std::int64_t m_indexStart = 0;
  std::int64_t m_bodyBytes = 0;
  std::size_t m_entries = 0;
};

/// Writes all records. Throws the code of a write that failed.
class WriteHeaderVisitor : public TagVisitor {
 public:
  explicit WriteHeaderVisitor(XpAbstractFile& file) : m_file(file) {}

  void VisitFile(FileTag& file) override;
  void VisitGroupHeader(GroupTable& groups) override;
  void VisitIndexHeader(IndexTable& entries) override;

 private:
  XpAbstractFile& m_file;
};

/// Writes the bodies that are in memory. Throws the code of a write that failed.
class WriteBodyVisitor : public TagVisitor {
 public:
  explicit WriteBodyVisitor(XpAbstractFile& file) : m_file(file) {}

  void VisitIndexData(EntryTag& entry) override;

 private:
  XpAbstractFile& m_file;
};

}  // namespace vrx::moff
