// What the tennis overlay shows at a moment, as numbers. Equal scenes on one layout are equal pictures, so
// the painter draws a scene and compares two to know whether anything changed.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "overlay/tennis/CounterRoll.h"
#include "overlay/tennis/KVSTennisMetaPainterLayoutBase.h"

namespace vrx::overlay {

struct TennisScene {
  /// The racket in the swing box, and the zone in which it met the ball; a frame below 0 is none.
  struct Swing {
    FrameSet set = FrameSet::Racket;
    std::int32_t frame = -1;
    std::optional<drawing::Rect> mark;  // output pixels
    friend bool operator==(const Swing&, const Swing&) = default;
  };
  /// A coming shot on the time line.
  struct Marker {
    std::int32_t strokeClass = 0;
    drawing::Rect rect;  // output pixels
    friend bool operator==(const Marker&, const Marker&) = default;
  };

  XpString name;                        // of the stroke; empty in a layout without one
  std::array<CounterRoll, 3> counters;  // offsets in output pixels
  Swing swing;
  std::vector<Marker> markers;
  std::optional<Marker> played;  // the shot just played, at the end of the time line
  friend bool operator==(const TennisScene&, const TennisScene&) = default;
};

/// Fills `scene` with what `layout` shows at `ms` on the metadata's axis. The display is 33 ms ahead of the
/// shots, all but the swing.
void MakeTennisScene(const TennisShots& shots, const KVSTennisMetaPainterLayoutBase& layout,
                     std::int32_t unit, std::int64_t ms, TennisScene& scene);

}  // namespace vrx::overlay
