// Flat shapes with smooth edges on an RGB picture, for the scenes that are drawn from polygons.
#pragma once

#include <span>
#include <vector>

#include "samples/clipmaker/RgbImage.h"

namespace vrx::test_support {

/// A place on the picture in pixels, y downwards; it may lie outside.
struct CanvasPoint {
  double x = 0;
  double y = 0;
};

Rgb MixRgb(const Rgb& below, const Rgb& above, double share);

class FlatCanvas {
 public:
  /// `image` outlives the canvas.
  explicit FlatCanvas(RgbImage& image);

  int Width() const { return m_image.Width(); }
  int Height() const { return m_image.Height(); }

  /// A closed outline of any form; where it laps itself it has holes.
  void Polygon(std::span<const CanvasPoint> corners, const Rgb& colour, double opacity = 1.0);
  void Ellipse(CanvasPoint centre, double radiusX, double radiusY, const Rgb& colour, double opacity = 1.0);
  void Rectangle(double left, double top, double right, double bottom, const Rgb& colour,
                 double opacity = 1.0);
  /// One row of pixels between two edges, which may be infinite.
  void Row(int y, double left, double right, const Rgb& colour, double opacity = 1.0);

 private:
  void AddSpan(double left, double right, double share);
  void BlendRow(int y, const Rgb& colour, double opacity);

  RgbImage& m_image;
  std::vector<double> m_steps;  // by which the cover of a pixel differs from that of the one before
  int m_first = 0;              // pixels of the row that are touched
  int m_end = 0;
  std::vector<double> m_crossings;
};

}  // namespace vrx::test_support
