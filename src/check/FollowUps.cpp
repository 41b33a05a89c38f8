#include "src/check/FollowUps.h"

#include <algorithm>
#include <string_view>

namespace vrx::check {
namespace {

using View = std::u16string_view;

/// "Valid" of "CaptionInfo/Valid".
View NameOf(const XpString& key) {
  const View whole = key.AsView();
  const std::size_t slash = whole.rfind(u'/');
  return slash == whole.npos ? whole : whole.substr(slash + 1);
}

/// "CaptionInfo" of "CaptionInfo/Valid"; empty when the key does not say.
View PartOf(const XpString& key) {
  const View whole = key.AsView();
  const std::size_t slash = whole.rfind(u'/');
  return slash == whole.npos ? View() : whole.substr(0, slash);
}

bool IsRoot(const Problem& problem) { return !problem.meant.IsEmpty() || problem.dictLine != 0; }

bool Causes(const Problem& root, const Problem& other) {
  if (!(root.file == other.file)) return false;
  if (root.dictLine != 0) return other.line == root.dictLine;
  if (!root.meant.IsEmpty() && other.because == root.meant) return true;
  if (NameOf(other.key) != root.meant.AsView()) return false;
  if (root.line != 0 && other.line == root.line) return true;
  const View a = PartOf(root.key);
  const View b = PartOf(other.key);
  const bool isSamePart = a.empty() || b.empty() || a == b;
  return isSamePart && root.track == other.track && root.clip == other.clip;
}

}  // namespace

void DropFollowUps(std::vector<Problem>& problems) {
  std::vector<Problem*> roots;
  for (Problem& problem : problems) {
    if (IsRoot(problem)) roots.push_back(&problem);
  }
  if (roots.empty()) return;
  std::vector<bool> isDropped(problems.size());
  for (std::size_t i = 0; i < problems.size(); ++i) {
    const Problem& other = problems[i];
    if (IsRoot(other)) continue;
    const auto root = std::ranges::find_if(roots, [&](const Problem* each) { return Causes(*each, other); });
    if (root == roots.end()) continue;
    (*root)->severity = std::max((*root)->severity, other.severity);
    isDropped[i] = true;
  }
  std::size_t i = 0;
  std::erase_if(problems, [&](const Problem&) { return isDropped[i++]; });
}

}  // namespace vrx::check
