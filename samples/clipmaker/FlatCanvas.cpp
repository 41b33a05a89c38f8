#include "samples/clipmaker/FlatCanvas.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace vrx::test_support {
namespace {

constexpr int kSubRows = 4;  // to a row of pixels
constexpr double kFull = 0.998;

struct RowRange {
  int first;
  int end;
};

RowRange RowsBetween(double top, double bottom, int height) {
  const double limit = height;
  return {static_cast<int>(std::floor(std::clamp(top, 0.0, limit))),
          static_cast<int>(std::ceil(std::clamp(bottom, 0.0, limit)))};
}

void BlendPixels(std::uint8_t* pixels, int count, const Rgb& colour, double share) {
  if (share <= 1 - kFull) return;
  if (share < kFull) {
    const auto part = static_cast<int>(share * 256 + 0.5);
    for (int i = 0; i < 3 * count; ++i) {
      const int below = pixels[i];
      pixels[i] =
          static_cast<std::uint8_t>(below + ((colour[static_cast<std::size_t>(i % 3)] - below) * part) / 256);
    }
    return;
  }
  // Doubles what is there already: rows of the sky and the ground are long.
  const std::size_t size = 3 * static_cast<std::size_t>(count);
  std::copy(colour.begin(), colour.end(), pixels);
  for (std::size_t done = 3; done < size; done *= 2)
    std::memcpy(pixels + done, pixels, std::min(done, size - done));
}

}  // namespace

Rgb MixRgb(const Rgb& below, const Rgb& above, double share) {
  Rgb mixed;
  for (std::size_t c = 0; c < mixed.size(); ++c)
    mixed[c] = static_cast<std::uint8_t>(below[c] + (above[c] - below[c]) * share + 0.5);
  return mixed;
}

FlatCanvas::FlatCanvas(RgbImage& image)
    : m_image(image), m_steps(static_cast<std::size_t>(image.Width()) + 2), m_first(image.Width()) {}

void FlatCanvas::AddSpan(double left, double right, double share) {
  const double width = Width();
  left = std::clamp(left, 0.0, width);
  right = std::clamp(right, 0.0, width);
  if (right <= left) return;
  // An edge inside a pixel takes its part of that pixel, and the rest of the change comes with the next one.
  const auto edge = [this](double x, double step) {
    const double whole = std::floor(x);
    const auto pixel = static_cast<std::size_t>(whole);
    m_steps[pixel] += step * (1 - (x - whole));
    m_steps[pixel + 1] += step * (x - whole);
  };
  edge(left, share);
  edge(right, -share);
  m_first = std::min(m_first, static_cast<int>(left));
  m_end = std::max(m_end, std::min(static_cast<int>(right) + 1, Width()));
}

void FlatCanvas::BlendRow(int y, const Rgb& colour, double opacity) {
  double cover = 0;
  std::uint8_t* row = m_image.Row(y);
  for (int x = m_first; x < m_end;) {
    cover += m_steps[static_cast<std::size_t>(x)];
    m_steps[static_cast<std::size_t>(x)] = 0;
    int end = x + 1;
    while (end < m_end && m_steps[static_cast<std::size_t>(end)] == 0) ++end;
    BlendPixels(row + 3 * x, end - x, colour, cover * opacity);
    x = end;
  }
  if (m_first < m_end) {
    m_steps[static_cast<std::size_t>(m_end)] = 0;
    m_steps[static_cast<std::size_t>(m_end) + 1] = 0;
  }
  m_first = Width();
  m_end = 0;
}

void FlatCanvas::Polygon(std::span<const CanvasPoint> corners, const Rgb& colour, double opacity) {
  if (corners.empty()) return;
  const auto [top, bottom] = std::ranges::minmax(corners, {}, &CanvasPoint::y);
  const RowRange rows = RowsBetween(top.y, bottom.y, Height());
  for (int y = rows.first; y < rows.end; ++y) {
    for (int sub = 0; sub < kSubRows; ++sub) {
      const double at = y + (sub + 0.5) / kSubRows;
      m_crossings.clear();
      for (std::size_t i = 0; i < corners.size(); ++i) {
        const CanvasPoint& a = corners[i];
        const CanvasPoint& b = corners[i + 1 == corners.size() ? 0 : i + 1];
        if ((a.y <= at) != (b.y <= at)) m_crossings.push_back(a.x + (b.x - a.x) * (at - a.y) / (b.y - a.y));
      }
      std::ranges::sort(m_crossings);
      for (std::size_t i = 0; i + 1 < m_crossings.size(); i += 2)
        AddSpan(m_crossings[i], m_crossings[i + 1], 1.0 / kSubRows);
    }
    BlendRow(y, colour, opacity);
  }
}

void FlatCanvas::Ellipse(CanvasPoint centre, double radiusX, double radiusY, const Rgb& colour,
                         double opacity) {
  if (radiusX <= 0 || radiusY <= 0) return;
  const RowRange rows = RowsBetween(centre.y - radiusY, centre.y + radiusY, Height());
  for (int y = rows.first; y < rows.end; ++y) {
    for (int sub = 0; sub < kSubRows; ++sub) {
      const double up = (y + (sub + 0.5) / kSubRows - centre.y) / radiusY;
      if (up * up >= 1) continue;
      const double half = radiusX * std::sqrt(1 - up * up);
      AddSpan(centre.x - half, centre.x + half, 1.0 / kSubRows);
    }
    BlendRow(y, colour, opacity);
  }
}

void FlatCanvas::Rectangle(double left, double top, double right, double bottom, const Rgb& colour,
                           double opacity) {
  const CanvasPoint corners[] = {{left, top}, {right, top}, {right, bottom}, {left, bottom}};
  Polygon(corners, colour, opacity);
}

void FlatCanvas::Row(int y, double left, double right, const Rgb& colour, double opacity) {
  if (y < 0 || y >= Height()) return;
  AddSpan(left, right, 1);
  BlendRow(y, colour, opacity);
}

}  // namespace vrx::test_support
