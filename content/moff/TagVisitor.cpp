#include "content/moff/TagVisitor.h"

#include "content/moff/MoffTags.h"

namespace vrx::moff {

void TagVisitor::VisitFile(FileTag& file) { VisitLeaf(file); }

void TagVisitor::VisitGroupHeader(GroupTable& groups) { VisitComposite(groups); }

void TagVisitor::VisitGroupData(GroupTag& group) { VisitLeaf(group); }

void TagVisitor::VisitIndexHeader(IndexTable& entries) { VisitComposite(entries); }

void TagVisitor::VisitIndexData(EntryTag& entry) { VisitLeaf(entry); }

void TagVisitor::VisitComposite(TagBase& tag) { VisitTag(tag); }

void TagVisitor::VisitTag(TagBase& tag) { VisitLeaf(tag); }

}  // namespace vrx::moff
