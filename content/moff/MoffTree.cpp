#include "content/moff/MoffTree.h"

#include <new>

#include "content/moff/MoffTags.h"
#include "content/moff/ReadVisitors.h"
#include "content/moff/WriteVisitors.h"

namespace vrx::moff {
namespace {

/// Visitors throw; what uses them returns.
template <class Walk>
XpResult ResultOf(Walk walk) {
  try {
    walk();
    return XpOk;
  } catch (XpResult result) {
    return result;
  } catch (const std::bad_alloc&) {
    return XpErrOutOfMemory;
  }
}

EntryInfo InfoOf(XpAbstractFile* file, const BodyRange& range, std::int64_t indexStart,
                 const EntryTag& entry) {
  EntryInfo info;
  info.position = indexStart + entry.record.position;
  if (entry.body) {
    info.head = {entry.body->kind, entry.body->size};
  } else {
    info.result = file == nullptr ? XpErrNotOpen : ReadBodyHead(*file, range, info.position, info.head);
  }
  return info;
}

}  // namespace

XpResult ReadHeaders(XpAbstractFile& file, FileTag& root, BodyRange& range, const Limits& limits,
                     HeaderPlace* place) {
  ReadHeaderVisitor visitor(file, limits);
  const XpResult result = ResultOf([&] { root.Accept(visitor); });
  range = {visitor.GetPosition(), visitor.GetFileSize()};
  if (place != nullptr) *place = {visitor.GetPosition(), visitor.GetGroup()};
  return result;
}

XpResult ReadBodies(XpAbstractFile& file, const BodyRange& range, FileTag& root) {
  ReadBodyVisitor visitor(file, range);
  return ResultOf([&] { root.Accept(visitor); });
}

XpResult PlaceTree(FileTag& root) {
  return ResultOf([&] {
    HeaderSizeCounter counter;
    root.Accept(counter);
    WriteOffsetVisitor offsets(counter.GetTotal());
    root.Accept(offsets);
  });
}

XpResult WriteTree(XpAbstractFile& file, FileTag& root) {
  return ResultOf([&] {
    WriteHeaderVisitor headers(file);
    root.Accept(headers);
    WriteBodyVisitor bodies(file);
    root.Accept(bodies);
  });
}

std::vector<GroupInfo> ListGroups(XpAbstractFile* file, const BodyRange& range, const FileTag& root) {
  std::vector<GroupInfo> groups;
  for (const auto& group : root.child->GetChildren()) {
    GroupInfo& info = groups.emplace_back(GroupInfo{group->record.id, group->record.values, {}});
    for (const auto& entry : group->child->GetChildren()) {
      info.entries.push_back(InfoOf(file, range, group->child->position, *entry));
    }
  }
  return groups;
}

GroupTag* FindGroup(const FileTag& root, std::uint32_t id) {
  for (const auto& group : root.child->GetChildren()) {
    if (group->record.id == id) return group.Get();
  }
  return nullptr;
}

}  // namespace vrx::moff
