// Reads and writes whole tag trees, and lists what they hold. SfMoffFile and the commands are built on it.
#pragma once

#include <array>
#include <vector>

#include "content/moff/FileBody.h"
#include "content/moff/TagVisitor.h"

namespace vrx::moff {

/// How far ReadHeaders came.
struct HeaderPlace {
  std::int64_t position = 0;  // after the last table, or where reading failed
  std::int64_t group = -1;    // whose index table was read last, from 0; -1 before the first
};

/// Reads the tables of a file into an empty tree, as ReadHeaderVisitor does. `range` says where bodies may
/// lie; `place` may be null.
XpResult ReadHeaders(XpAbstractFile& file, FileTag& root, BodyRange& range, const Limits& limits = {},
                     HeaderPlace* place = nullptr);
/// Reads all bodies into a tree whose tables were read, as ReadBodyVisitor does.
XpResult ReadBodies(XpAbstractFile& file, const BodyRange& range, FileTag& root);

/// Sets all offsets, as WriteOffsetVisitor does.
XpResult PlaceTree(FileTag& root);
/// Writes a tree whose offsets are set, at the current position.
XpResult WriteTree(XpAbstractFile& file, FileTag& root);

struct EntryInfo {
  BodyHead head;              // as far as it can be read
  std::int64_t position = 0;  // of the body in the file that the tree was read from
  XpResult result = XpOk;     // why the body cannot be read
};
struct GroupInfo {
  std::uint32_t id = 0;
  std::array<std::uint32_t, 4> values{};
  std::vector<EntryInfo> entries;
};
/// All groups in order. The heads of bodies that are not in memory are read from `file`, which is null when
/// all are.
std::vector<GroupInfo> ListGroups(XpAbstractFile* file, const BodyRange& range, const FileTag& root);

/// The first group with this id; null when there is none.
GroupTag* FindGroup(const FileTag& root, std::uint32_t id);

}  // namespace vrx::moff
