// The shots of a match in the order of their times, and what is asked about them at a moment. The tennis
// painter draws from it. Times are milliseconds on the axis of the metadata.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "overlay/tennis/TennisStrokes.h"
#include "vrx/XpString.h"

struct TennisShot {
  double time = 0.0;              // s on the metadata's axis
  std::int32_t swingType = 0;     // bit mask of the stroke
  std::int32_t impactZone = 0;    // where the ball met the racket, 0 to 25
  double thirdPanelSpeed = 0.0;   // km/h
  double secondPanelSpeed = 0.0;  // km/h
  std::int32_t firstPanelValue = 0;
  double clipStart = 0.0;        // s, first moment of the clip's axis that ClipTime accepts
  double clipAnchor = 0.0;       // s on the clip's axis at this shot
  double clipEnd = 0.0;          // s, last moment
  std::int32_t leftIndex = -1;   // child in the search tree with earlier shots, -1 for none
  std::int32_t rightIndex = -1;  // child with later ones
  bool swapSides = false;
  XpString name;                 // of the stroke, in the user's language
  std::int32_t strokeClass = 0;  // 0 to 7

  vrx::overlay::FrameSet GetFrameSet() const { return vrx::overlay::FrameSetOf(swingType, swapSides); }
  double GetMilliseconds() const { return time * 1000.0; }
};

namespace vrx::overlay {

/// The first shot that is earlier than the one before it; nothing when all are in order.
std::optional<std::size_t> FindUnsortedShot(std::span<const TennisShot> shots);

/// The first shot met on a walk from the root (count / 2) whose children are wrong: outside of the list, on
/// the wrong side, or missing so that shots cannot be found. Nothing for a tree that leads to every shot
/// once.
std::optional<std::size_t> FindWrongTreeNode(std::span<const TennisShot> shots);

/// Writes a balanced search tree over the list, with its root at count / 2.
void BuildSearchTree(std::span<TennisShot> shots);

class TennisShots {
 public:
  static constexpr std::int64_t kNoShot = -1;
  static constexpr std::int32_t kNoFrame = -1;
  static constexpr std::int64_t kRunUpMs = 300;  // the swing and the counters move before a shot

  TennisShots() = default;
  /// Looks whether the list has a search tree that can be trusted; otherwise the list itself is searched.
  explicit TennisShots(std::vector<TennisShot> shots);

  bool IsEmpty() const { return m_shots.empty(); }
  const std::vector<TennisShot>& Get() const { return m_shots; }
  /// Null for an index outside the list.
  const TennisShot* At(std::int64_t index) const;

  /// The last shot at or before `t`, or kNoShot.
  std::int64_t FindShotIndex(std::int64_t t) const;
  /// The picture of the swing towards the shot after `index` in its last kRunUpMs, of `frames` pictures:
  /// 1 to `frames` - 1. kNoFrame at other times.
  std::int32_t SwingFrameIndex(std::int64_t t, std::int64_t index, std::int32_t frames) const;
  /// `t` on the axis of the first clip that holds it; unchanged when none does.
  std::int64_t ClipTime(std::int64_t t) const;

 private:
  std::vector<TennisShot> m_shots;
  bool m_hasTree = false;
};

}  // namespace vrx::overlay
