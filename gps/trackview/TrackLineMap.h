// Knows for every pixel which parts of a long line cover it, so that drawing the line up to any point costs
// the pixels and not the parts. TrackPicture keeps some for the routes of long recordings.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "drawing/Canvas.h"
#include "imaging/pixmap/XpPixmap.h"

namespace vrx::gps {

/// The pixels that a pen of this width may reach on its way.
drawing::Rect LineBounds(drawing::Point from, drawing::Point to, std::int32_t width);

/// Part n of a line leads from its point n to the next one. The pixels are those that a canvas draws with a
/// pen of this width.
class TrackLineMap {
 public:
  enum class Side : std::uint8_t {
    Before,  // draws the parts before the split
    After,   // draws the others
  };

  /// Null for a line of less than two points or too many to number, for one that leaves the frame, and
  /// without memory.
  static std::optional<TrackLineMap> Make(std::span<const drawing::Point> line, std::int32_t width, Side side,
                                          drawing::Size frame);

  const drawing::Rect& GetArea() const { return m_area; }
  /// `split` is the number of the first part that lies after it. The pixels come out opaque.
  void Draw(std::size_t split, drawing::ColorRef color, XpPixmap32& frame) const;

 private:
  TrackLineMap(const drawing::Rect& area, Side side) : m_area(area), m_side(side) {}
  bool NumberPixels(std::span<const drawing::Point> line, std::int32_t width);

  drawing::Rect m_area;  // of the frame
  Side m_side;
  // The area, in which the colour of a pixel is one more than the number of a part that covers it: of the
  // first one before the split, of the last one after it. A pixel that is not covered is clear.
  std::unique_ptr<XpPixmap32> m_numbers;
};

}  // namespace vrx::gps
