// Reads any bytes as a .moff container: on demand and completely, which must agree; what was read must
// survive being written and read again.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "content/moff/MoffTags.h"
#include "content/moff/MoffTree.h"

namespace {

using namespace vrx::moff;

void Require(bool holds) {
  if (!holds) std::abort();
}

bool HasSameBytes(const XpMemoryFile& a, const XpMemoryFile& b) {
  if (a.GetSize() != b.GetSize()) return false;
  return a.GetSize() == 0 ||
         std::memcmp(a.GetData(), b.GetData(), static_cast<std::size_t>(a.GetSize())) == 0;
}

/// The same groups with the same kinds and sizes, wherever the bodies lie.
void RequireSameGroups(const std::vector<GroupInfo>& a, const std::vector<GroupInfo>& b) {
  Require(a.size() == b.size());
  for (std::size_t i = 0; i < a.size(); ++i) {
    Require(a[i].id == b[i].id && a[i].values == b[i].values);
    Require(a[i].entries.size() == b[i].entries.size());
    for (std::size_t j = 0; j < a[i].entries.size(); ++j) {
      Require(a[i].entries[j].head.kind == b[i].entries[j].head.kind);
      Require(a[i].entries[j].head.size == b[i].entries[j].head.size);
      Require(b[i].entries[j].result == XpOk);
    }
  }
}

void Write(FileTag& root, XpMemoryFile& file) {
  Require(PlaceTree(root) == XpOk);
  Require(WriteTree(file, root) == XpOk);
}

/// The data of a group, which must be the same whether it is read on demand or in memory.
void RequireSameData(XpAbstractFile& file, const BodyRange& range, const GroupTag& onDemand,
                     const GroupTag& complete) {
  std::int64_t size = 0;
  std::int64_t sameSize = 0;
  const std::unique_ptr<void, decltype(&std::free)> data(
      ReadFirstBody(&file, range, onDemand, kBinaryBody, size), &std::free);
  const std::unique_ptr<void, decltype(&std::free)> same(
      ReadFirstBody(nullptr, {}, complete, kBinaryBody, sameSize), &std::free);
  Require((data == nullptr) == (same == nullptr) && size == sameSize && size <= range.end);
  if (data != nullptr) Require(std::memcmp(data.get(), same.get(), static_cast<std::size_t>(size)) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  XpMemoryFile file;
  file.Attach(const_cast<std::uint8_t*>(data), static_cast<std::int64_t>(size), false);
  const Limits limits{.groups = 100, .entries = 200};
  FileTag onDemand;
  BodyRange range;
  if (ReadHeaders(file, onDemand, range, limits) != XpOk) return 0;
  const std::vector<GroupInfo> listed = ListGroups(&file, range, onDemand);
  for (const auto& group : onDemand.child->GetChildren()) {
    std::int64_t bytes = 0;
    std::free(ReadFirstBody(&file, range, *group, kBinaryBody, bytes));
    Require(bytes >= 0 && bytes < static_cast<std::int64_t>(size));
  }
  FileTag complete;
  Require(ReadHeaders(file, complete, range, limits) == XpOk);
  if (ReadBodies(file, range, complete) != XpOk) return 0;
  RequireSameGroups(listed, ListGroups(nullptr, {}, complete));
  for (std::size_t i = 0; i < listed.size(); ++i) {
    RequireSameData(file, range, *onDemand.child->GetChildren()[i], *complete.child->GetChildren()[i]);
  }
  XpMemoryFile written;
  Write(complete, written);
  FileTag again;
  Require(ReadHeaders(written, again, range, limits) == XpOk && ReadBodies(written, range, again) == XpOk);
  RequireSameGroups(listed, ListGroups(nullptr, {}, again));
  XpMemoryFile same;
  Write(again, same);
  Require(HasSameBytes(written, same));
  return 0;
}
