// The rolling digits of one tennis counter: two values one above the other in a strip of their own, of which
// the frame shows a window. The tennis painter has one for each counter.
#pragma once

#include <cstdint>

#include "overlay/painter/PainterSurface.h"
#include "overlay/tennis/CounterRoll.h"
#include "overlay/tennis/KVSTennisMetaPainterLayoutBase.h"

namespace vrx::overlay {

/// Sizes of the digits of a layout, measured once for an output size. Pixels.
struct DigitMetrics {
  std::int32_t twoWidth = 0;  // of "99"
  std::int32_t threeWidth = 0;
  std::int32_t signWidth = 0;
  std::int32_t signHeight = 0;
  std::int32_t lineHeight = 0;
  std::int32_t gap = 0;  // rows of a line from its lowest inked row on; 0 when nothing is inked
};
DigitMetrics MeasureDigits(drawing::TextRenderer& text, const KVSTennisMetaPainterLayoutBase& layout);

/// From the left edge of a counter's rectangle to its texts.
std::int32_t LeftPadOf(const KVSTennisMetaPainterLayoutBase& layout);

/// Where a strip's window lies on the frame, and what it shows of the strip. Pixels.
struct StripPlace {
  std::int32_t left = 0;
  std::int32_t top = 0;
  std::int32_t width = 0;  // of strip and window
  std::int32_t height = 0;
  std::int32_t windowHeight = 0;
  std::int32_t firstRow = 0;  // of the strip in the window at offset 0
};

enum class CounterKind : std::uint8_t { Count, Speed };

/// `rect` is the counter's.
StripPlace PlaceStrip(CounterKind kind, const DigitMetrics& digits,
                      const KVSTennisMetaPainterLayoutBase& layout, const drawing::Rect& rect);

class DigitStrip {
 public:
  /// Counts have a sign beside them, speeds are right-aligned to three places.
  explicit DigitStrip(CounterKind kind) : m_kind(kind) {}

  /// Forgets the drawn values, when fonts or colours have changed.
  void Reset() { m_isDrawn = false; }
  /// `roll` has its offset in output pixels. The strip is drawn again only when its values change. Without
  /// memory for it the digits are left out.
  void Draw(const CounterRoll& roll, const DigitMetrics& digits, const KVSTennisMetaPainterLayoutBase& layout,
            const drawing::Rect& rect, PainterSurface& surface);

 private:
  bool Prepare(const CounterRoll& roll, const DigitMetrics& digits,
               const KVSTennisMetaPainterLayoutBase& layout, const StripPlace& place,
               drawing::TextRenderer& text);

  CounterKind m_kind;
  XpPixmap32 m_strip;
  bool m_isDrawn = false;
  std::int32_t m_upper = 0;
  std::int32_t m_lower = 0;
};

}  // namespace vrx::overlay
