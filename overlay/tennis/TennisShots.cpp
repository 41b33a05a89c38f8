#include "overlay/tennis/TennisShots.h"

#include <algorithm>

#include "foundation/number/Saturate.h"

namespace vrx::overlay {
namespace {

/// Shots `first` to `end` - 1, which a node of the tree has to lead to.
struct Branch {
  std::int64_t node;
  std::int64_t first;
  std::int64_t end;

  bool HasNode() const { return node >= first && node < end; }
};

Branch LeftOf(const Branch& branch, std::int64_t child) { return {child, branch.first, branch.node}; }
Branch RightOf(const Branch& branch, std::int64_t child) { return {child, branch.node + 1, branch.end}; }

/// A branch without shots has no node, any other one has its own.
bool IsRight(const Branch& branch) {
  return branch.first == branch.end ? branch.node == TennisShots::kNoShot : branch.HasNode();
}

std::int64_t Milliseconds(const TennisShot& shot) { return Saturate<std::int64_t>(shot.GetMilliseconds()); }

}  // namespace

std::optional<std::size_t> FindUnsortedShot(std::span<const TennisShot> shots) {
  const auto earlier = [](const TennisShot& a, const TennisShot& b) { return b.time < a.time; };
  const auto found = std::adjacent_find(shots.begin(), shots.end(), earlier);
  if (found == shots.end()) return {};
  return static_cast<std::size_t>(found - shots.begin()) + 1;
}

std::optional<std::size_t> FindWrongTreeNode(std::span<const TennisShot> shots) {
  const auto count = static_cast<std::int64_t>(shots.size());
  // Branches shrink on the way down, so that the walk ends whatever the indexes are.
  std::vector<Branch> open;
  if (count > 0) open.push_back({count / 2, 0, count});
  while (!open.empty()) {
    const Branch branch = open.back();
    open.pop_back();
    const auto node = static_cast<std::size_t>(branch.node);
    const Branch left = LeftOf(branch, shots[node].leftIndex);
    const Branch right = RightOf(branch, shots[node].rightIndex);
    if (!IsRight(left) || !IsRight(right)) return node;
    if (right.HasNode()) open.push_back(right);
    if (left.HasNode()) open.push_back(left);
  }
  return {};
}

void BuildSearchTree(std::span<TennisShot> shots) {
  const auto middle = [](std::int64_t first, std::int64_t end) {
    return first == end ? TennisShots::kNoShot : first + (end - first) / 2;
  };
  const auto count = static_cast<std::int64_t>(shots.size());
  std::vector<Branch> open{{middle(0, count), 0, count}};
  while (!open.empty()) {
    const Branch branch = open.back();
    open.pop_back();
    if (!branch.HasNode()) continue;
    const Branch left = LeftOf(branch, middle(branch.first, branch.node));
    const Branch right = RightOf(branch, middle(branch.node + 1, branch.end));
    TennisShot& shot = shots[static_cast<std::size_t>(branch.node)];
    shot.leftIndex = static_cast<std::int32_t>(left.node);
    shot.rightIndex = static_cast<std::int32_t>(right.node);
    open.push_back(left);
    open.push_back(right);
  }
}

TennisShots::TennisShots(std::vector<TennisShot> shots)
    : m_shots(std::move(shots)), m_hasTree(!FindUnsortedShot(m_shots) && !FindWrongTreeNode(m_shots)) {}

const TennisShot* TennisShots::At(std::int64_t index) const {
  const bool isInside = index >= 0 && index < static_cast<std::int64_t>(m_shots.size());
  return isInside ? &m_shots[static_cast<std::size_t>(index)] : nullptr;
}

std::int64_t TennisShots::FindShotIndex(std::int64_t t) const {
  if (!m_hasTree) {
    const auto played = [t](const TennisShot& shot) { return Milliseconds(shot) <= t; };
    const auto found = std::find_if(m_shots.rbegin(), m_shots.rend(), played);
    return m_shots.rend() - found - 1;
  }
  std::int64_t last = kNoShot;
  for (auto i = static_cast<std::int64_t>(m_shots.size()) / 2; const TennisShot* shot = At(i);) {
    const bool isPlayed = Milliseconds(*shot) <= t;
    if (isPlayed) last = i;
    i = isPlayed ? shot->rightIndex : shot->leftIndex;
  }
  return last;
}

std::int32_t TennisShots::SwingFrameIndex(std::int64_t t, std::int64_t index, std::int32_t frames) const {
  const TennisShot* next = At(index + 1);
  if (next == nullptr || frames < 1) return kNoFrame;
  const std::int64_t left = SaturatedSubtract(Milliseconds(*next), t);
  if (left < 0 || left >= kRunUpMs) return kNoFrame;
  const std::int64_t frame = frames - frames * left / kRunUpMs;
  return static_cast<std::int32_t>(std::min<std::int64_t>(frame, frames - 1));
}

std::int64_t TennisShots::ClipTime(std::int64_t t) const {
  const double seconds = static_cast<double>(t) / 1000.0;
  for (const TennisShot& shot : m_shots) {
    const double moment = shot.clipAnchor + seconds - shot.time;
    if (shot.clipStart <= moment && moment <= shot.clipEnd) return Saturate<std::int64_t>(moment * 1000.0);
  }
  return t;
}

}  // namespace vrx::overlay
