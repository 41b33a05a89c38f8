// What the speed graph shows at a moment, as numbers. Equal scenes are equal pictures, so that the graph is
// drawn again only when its scene changes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "drawing/Geometry.h"
#include "gps/speedlog/SpeedLogRecord.h"

namespace vrx::gps {

/// Places are pixels of the canvas, which is laid over the frame at the end.
struct SpeedLogScene {
  double scale = 0.0;            // canvas pixels for one of a 1920 by 1080 frame
  double pixelsPerSecond = 0.0;  // of a 1920 by 1080 frame
  drawing::Size canvas;
  std::int32_t graphHeight = 0;  // of a 1920 by 1080 frame
  std::int32_t tickOffset = 0;   // of the first tick, of a 1920 by 1080 frame
  std::int64_t firstSecond = 0;  // that this tick stands for
  std::int32_t cursorX = 0;      // up to here the curve has been passed
  bool isInRange = false;        // the record has begun: what has been passed is filled
  std::vector<drawing::Point> curve;
  std::vector<std::size_t> strokeEnds;  // in `curve`, one for each unbroken stretch
  std::optional<drawing::Point> start;
  std::optional<drawing::Point> goal;
  std::optional<drawing::Point> position;  // on the curve at the cursor
  friend bool operator==(const SpeedLogScene&, const SpeedLogScene&) = default;

  /// Rows of the canvas: the height of the curve's area, and the base line's band.
  std::int32_t GraphRows() const { return Row(0); }
  std::int32_t BandTop() const { return Row(4); }
  std::int32_t BandBottom() const { return Row(10); }
  std::int32_t MinorTickTop() const { return Row(-10); }

 private:
  std::int32_t Row(std::int64_t belowGraph) const;
};

/// Larger canvases are not drawn: no frame is as large.
inline constexpr std::int32_t kMostCanvasSide = 8192;

/// Fills `scene` with what a speed log of `size` shows of the record at `timeMs` on the record's own clock,
/// when it goes into `rect` of the frame. `position` is the cursor's in percent. The work grows with what is
/// seen, not with the record. False, and nothing to draw, for a rectangle or a log without size.
bool MakeSpeedLogScene(const SpeedLogRecord& record, drawing::Size size, std::int32_t position,
                       const drawing::Rect& rect, double timeMs, SpeedLogScene& scene);

}  // namespace vrx::gps
