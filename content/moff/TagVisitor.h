// The types of the tag tree of a .moff container, and the base of the operations that walk it.
#pragma once

#include <cstdint>

#include "content/moff/MoffRecords.h"

namespace vrx::moff {

class TagBase;
struct FileBody;
template <class Record, class Body>
class TagDataWithBody;
template <class Record, class Child>
class TagDataWithOneChild;
template <class Record, class Child, std::uint32_t Signature>
class TagDataWithOneChildWithSignature;
template <class Header, class Child, std::uint32_t Signature>
class TagComposite;

using EntryTag = TagDataWithBody<IndexData, FileBody>;
using IndexTable = TagComposite<IndexDataHeader, EntryTag, kIndexSignature>;
using GroupTag = TagDataWithOneChild<GroupData, IndexTable>;
using GroupTable = TagComposite<GroupDataHeader, GroupTag, kGroupSignature>;
/// The root.
using FileTag = TagDataWithOneChildWithSignature<FileHeader, GroupTable, kFileSignature>;

/// A tag calls the operation of its kind before those of its children. By default each operation calls a more
/// general one: those of tables call VisitComposite, that and those of records VisitTag or VisitLeaf. A
/// failure is thrown as an XpResult.
class TagVisitor {
 public:
  TagVisitor() = default;
  TagVisitor(const TagVisitor&) = delete;
  TagVisitor& operator=(const TagVisitor&) = delete;
  virtual ~TagVisitor() = default;

  virtual void VisitFile(FileTag& file);
  virtual void VisitGroupHeader(GroupTable& groups);
  virtual void VisitGroupData(GroupTag& group);
  virtual void VisitIndexHeader(IndexTable& entries);
  virtual void VisitIndexData(EntryTag& entry);
  virtual void VisitComposite(TagBase& tag);
  virtual void VisitTag(TagBase& tag);
  virtual void VisitLeaf(TagBase& /*tag*/) {}
};

}  // namespace vrx::moff
