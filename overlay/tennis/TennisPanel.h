// The parts of the tennis overlay that stay from shot to shot: panel, stroke name, labels and units of the
// counters, time line and date. The painter draws them once and keeps them.
#pragma once

#include <array>

#include "overlay/painter/PainterSurface.h"
#include "overlay/tennis/KVSTennisMetaPainterLayoutBase.h"

namespace vrx::overlay {

inline constexpr std::size_t kTennisCounters = 3;

/// Everything that is written, in the user's language.
struct TennisTexts {
  std::array<XpString, kTennisCounters> labels;
  XpString unit;  // of the second and third counter
  XpString date;  // of the match; empty when it is not known
  XpString span;  // from when to when
};

/// The rectangles of the counters, in their order.
std::array<drawing::Rect, kTennisCounters> CounterRects(const KVSTennisMetaPainterLayoutBase& layout);

/// `threeWidth` is that of three digits in pixels, after which a unit is drawn. `resources` are those of the
/// layout.
void DrawTennisPanel(const KVSTennisMetaPainterLayoutBase& layout, const TennisMetaResource& resources,
                     const TennisTexts& texts, const XpString& name, std::int32_t threeWidth,
                     PainterSurface& surface);

}  // namespace vrx::overlay
