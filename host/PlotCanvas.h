// A picture with smooth lines and text, for the plots that commands draw.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "drawing/Canvas.h"
#include "drawing/TextRenderer.h"
#include "imaging/pixmap/XpPixmap.h"

namespace vrx::host {

/// In pixels of the finished picture, with y running down.
struct PlotPoint {
  double x = 0.0;
  double y = 0.0;
};
struct PlotRect {
  double left = 0.0;
  double top = 0.0;
  double right = 0.0;
  double bottom = 0.0;
  double Width() const { return right - left; }
  double Height() const { return bottom - top; }
};

enum class PlotAlign { Left, Center, Right };

struct PlotText {
  XpString text;
  PlotPoint at;  // the middle of the line's height; left end, middle or right end
  PlotAlign align = PlotAlign::Left;
  std::int32_t pixels = 18;  // em size
  bool bold = false;
  drawing::ColorRef color = 0;
  std::optional<drawing::ColorRef> halo;  // keeps lines away from the letters
  double mostWidth = 0.0;                 // 0: any; longer texts lose their middle
};

/// Shapes are drawn several times as large and averaged, which smooths them; texts come on top of all shapes.
class PlotCanvas {
 public:
  /// Filled with `ground`. Throws std::bad_alloc when there is no memory.
  PlotCanvas(std::int32_t width, std::int32_t height, drawing::ColorRef ground);

  void Fill(const PlotRect& rect, drawing::ColorRef color);
  void FillPolygon(const std::vector<PlotPoint>& points, drawing::ColorRef color);
  void Line(PlotPoint from, PlotPoint to, double width, drawing::ColorRef color);
  void Polyline(const std::vector<PlotPoint>& points, double width, drawing::ColorRef color);
  /// Dashes as long as the gaps between them.
  void Dashes(PlotPoint from, PlotPoint to, double width, double dash, drawing::ColorRef color);
  void Disc(PlotPoint center, double radius, drawing::ColorRef color);
  void Text(PlotText text) { m_texts.push_back(std::move(text)); }

  /// The opaque picture, top-down, blue in the lowest byte.
  std::vector<std::uint32_t> Finish();

 private:
  std::int32_t m_width;
  std::int32_t m_height;
  XpPixmap32 m_large;
  drawing::Canvas m_canvas;
  std::vector<PlotText> m_texts;
};

}  // namespace vrx::host
