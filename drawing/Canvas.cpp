#include "drawing/Canvas.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace vrx::drawing {
namespace {

constexpr std::int32_t kFarthest = 1 << 26;
// Keeps an edge that runs exactly through a pixel's centre on the inside whichever way it was computed.
constexpr double kTolerance = 1e-7;

Point Held(Point p) {
  return {std::clamp(p.x, -kFarthest, kFarthest), std::clamp(p.y, -kFarthest, kFarthest)};
}

/// The part of a row that lies in a shape; `last` is included.
struct Span {
  double first = std::numeric_limits<double>::infinity();
  double last = -std::numeric_limits<double>::infinity();

  bool IsEmpty() const { return !(first <= last); }
  void Add(double from, double to) {
    first = std::min(first, from);
    last = std::max(last, to);
  }
  /// Keeps what satisfies low <= slope * x + offset <= high.
  void Limit(double slope, double offset, double low, double high) {
    if (std::abs(slope) < 1e-12) {
      if (offset < low - kTolerance || offset > high + kTolerance) *this = Span();
      return;
    }
    const double a = (low - offset) / slope, b = (high - offset) / slope;
    first = std::max(first, std::min(a, b));
    last = std::min(last, std::max(a, b));
  }
};

struct Segment {
  double ax, ay, bx, by;
};

/// All points within `radius` of a segment. The shape is convex, so a row of it is one span.
Span StrokeRow(const Segment& s, double radius, double y) {
  Span row;
  const double ends[2][2] = {{s.ax, s.ay}, {s.bx, s.by}};
  for (const auto& end : ends) {
    const double dy = y - end[1];
    if (std::abs(dy) > radius) continue;
    const double half = std::sqrt(radius * radius - dy * dy);
    row.Add(end[0] - half, end[0] + half);
  }
  const double length = std::hypot(s.bx - s.ax, s.by - s.ay);
  if (length == 0) return row;
  const double ux = (s.bx - s.ax) / length, uy = (s.by - s.ay) / length;
  Span strip{-std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity()};
  strip.Limit(-uy, uy * s.ax + ux * (y - s.ay), -radius, radius);
  if (!strip.IsEmpty()) strip.Limit(ux, -ux * s.ax + uy * (y - s.ay), 0, length);
  if (!strip.IsEmpty()) row.Add(strip.first, strip.last);
  return row;
}

/// Cuts the segment to the box, so that far ends cost no precision and no time. False when it misses.
bool CutToBox(Segment& s, double left, double top, double right, double bottom) {
  double from = 0, to = 1;
  const double dx = s.bx - s.ax, dy = s.by - s.ay;
  const auto cut = [&](double delta, double room) {  // keeps t with delta * t <= room
    if (delta == 0) return room >= 0;
    const double t = room / delta;
    if (delta > 0) {
      to = std::min(to, t);
    } else {
      from = std::max(from, t);
    }
    return from <= to;
  };
  if (!cut(-dx, s.ax - left) || !cut(dx, right - s.ax) || !cut(-dy, s.ay - top) || !cut(dy, bottom - s.ay)) {
    return false;
  }
  s = {s.ax + from * dx, s.ay + from * dy, s.ax + to * dx, s.ay + to * dy};
  return true;
}

/// Columns of a row, one past the last included.
struct Columns {
  std::int64_t first = 0;
  std::int64_t end = 0;
};

Columns Intersect(const Columns& a, const Columns& b) {
  return {std::max(a.first, b.first), std::min(a.end, b.end)};
}

/// The columns of row `y` inside the ellipse that fills `bounds`. The middle row and the middle column, or
/// both of two, always span the bounds, which a flat ellipse would miss by a fraction of a pixel.
Columns EllipseRow(const Rect& bounds, std::int64_t y) {
  if (bounds.IsEmpty() || y < bounds.top || y >= bounds.bottom) return {};
  const double width = static_cast<double>(bounds.Width()), height = static_cast<double>(bounds.Height());
  const std::int64_t fromCentre = 2 * y - (std::int64_t{bounds.top} + bounds.bottom - 1);
  const double share = static_cast<double>(fromCentre) / height;
  double reach = width * std::sqrt(1 - share * share);
  if (std::abs(fromCentre) <= 1) reach = std::max(reach, width - 1);
  const std::int64_t centre = std::int64_t{bounds.left} + bounds.right - 1;
  reach = std::max(reach, centre % 2 == 0 ? 0.0 : 1.0);
  const double middle = static_cast<double>(centre);
  return {static_cast<std::int64_t>(std::ceil((middle - reach) / 2 - kTolerance)),
          static_cast<std::int64_t>(std::floor((middle + reach) / 2 + kTolerance)) + 1};
}

/// The columns of row `y` inside the edge: pixels with all four neighbours in the ellipse, so that the edge
/// has no holes, and for a wider pen also in the inner ellipse.
Columns InsideEdge(const Rect& outer, const Rect& inner, std::int64_t y, const Columns& row, bool thin) {
  Columns inside =
      Intersect({row.first + 1, row.end - 1}, Intersect(EllipseRow(outer, y - 1), EllipseRow(outer, y + 1)));
  return thin ? inside : Intersect(inside, EllipseRow(inner, y));
}

std::int64_t FloorDivide(std::int64_t a, std::int64_t b) {
  return a / b - (a % b != 0 && (a < 0) != (b < 0) ? 1 : 0);
}

}  // namespace

void Canvas::Bind(XpBitmapHandle bitmap) { m_bitmap = bitmap == nullptr ? XpBitmap() : *bitmap; }

void Canvas::FillSpan(std::int64_t y, std::int64_t first, std::int64_t last, ColorRef color) {
  first = std::max<std::int64_t>(first, 0);
  last = std::min<std::int64_t>(last, m_bitmap.width);
  if (y < 0 || y >= m_bitmap.height || first >= last) return;
  unsigned char* row = m_bitmap.bits + y * m_bitmap.rowBytes;
  const unsigned char bytes[4] = {BlueOf(color), GreenOf(color), RedOf(color), 255};
  if (m_bitmap.format == XpBitmapFormat::Bgra32) {
    std::uint32_t pixel;
    std::memcpy(&pixel, bytes, sizeof pixel);
    std::fill_n(reinterpret_cast<std::uint32_t*>(row) + first, last - first, pixel);
    return;
  }
  for (std::int64_t x = first; x < last; ++x) std::memcpy(row + x * 3, bytes, 3);
}

void Canvas::DrawThinLine(Point from, Point to, ColorRef color) {
  const std::int64_t dx = std::int64_t{to.x} - from.x, dy = std::int64_t{to.y} - from.y;
  const bool steep = std::abs(dy) > std::abs(dx);
  const std::int64_t count = steep ? std::abs(dy) : std::abs(dx);  // the end point is left out
  if (count == 0) return;
  const std::int64_t start = steep ? from.y : from.x;
  const std::int64_t side = steep ? from.x : from.y;
  const std::int64_t direction = (steep ? dy : dx) > 0 ? 1 : -1;
  const std::int64_t slope = steep ? dx : dy;
  const std::int64_t limit = steep ? m_bitmap.height : m_bitmap.width;
  const std::int64_t firstStep =
      direction > 0 ? std::max<std::int64_t>(0, -start) : std::max<std::int64_t>(0, start - limit + 1);
  const std::int64_t lastStep = std::min(count, direction > 0 ? limit - start : start + 1);
  for (std::int64_t i = firstStep; i < lastStep; ++i) {
    const std::int64_t along = start + i * direction;
    const std::int64_t across = side + FloorDivide(2 * slope * i + count, 2 * count);
    const std::int64_t x = steep ? across : along, y = steep ? along : across;
    FillSpan(y, x, x + 1, color);
  }
}

void Canvas::DrawWideLine(Point from, Point to, const Pen& pen) {
  const double width = std::min(pen.width, 2 * kFarthest);
  const double radius = width / 2;
  const double shift = pen.width % 2 == 0 ? -0.5 : 0;
  Segment segment{from.x + shift, from.y + shift, to.x + shift, to.y + shift};
  const double margin = radius + 2;
  if (!CutToBox(segment, -margin, -margin, m_bitmap.width + margin, m_bitmap.height + margin)) return;
  const double low = std::min(segment.ay, segment.by) - radius,
               high = std::max(segment.ay, segment.by) + radius;
  const auto firstRow = static_cast<std::int64_t>(std::max(0.0, std::ceil(low - kTolerance)));
  const auto lastRow =
      static_cast<std::int64_t>(std::min<double>(m_bitmap.height - 1, std::floor(high + kTolerance)));
  for (std::int64_t y = firstRow; y <= lastRow; ++y) {
    const Span row = StrokeRow(segment, radius, static_cast<double>(y));
    if (row.IsEmpty()) continue;
    FillSpan(y, static_cast<std::int64_t>(std::ceil(row.first - kTolerance)),
             static_cast<std::int64_t>(std::floor(row.last + kTolerance)) + 1, pen.color);
  }
}

void Canvas::DrawLine(Point from, Point to, const Pen& pen) {
  if (pen.width <= 1) {
    DrawThinLine(Held(from), Held(to), pen.color);
  } else {
    DrawWideLine(Held(from), Held(to), pen);
  }
}

void Canvas::DrawPolyline(std::span<const Point> points, const Pen& pen) {
  for (std::size_t i = 1; i < points.size(); ++i) DrawLine(points[i - 1], points[i], pen);
}

void Canvas::DrawEllipse(Rect bounds, const Pen& pen, const std::optional<Brush>& brush) {
  if (bounds.right < bounds.left) std::swap(bounds.left, bounds.right);
  if (bounds.bottom < bounds.top) std::swap(bounds.top, bounds.bottom);
  const Point a = Held({bounds.left, bounds.top}), b = Held({bounds.right, bounds.bottom});
  if (a.x == b.x || a.y == b.y) return;
  // Half of the pen lies outside the edge, as far as it can: a pen of width 1 lies inside.
  const std::int32_t width = std::clamp(pen.width, 1, kFarthest);
  const std::int32_t outside = width / 2;
  const Rect outer = {a.x - outside, a.y - outside, b.x + outside, b.y + outside};
  const Rect inner = {outer.left + width, outer.top + width, outer.right - width, outer.bottom - width};
  const std::int32_t last = std::min(outer.bottom, m_bitmap.height);
  for (std::int32_t y = std::max(outer.top, 0); y < last; ++y) {
    const Columns row = EllipseRow(outer, y);
    const Columns inside = InsideEdge(outer, inner, y, row, width == 1);
    if (inside.end <= inside.first) {
      FillSpan(y, row.first, row.end, pen.color);
      continue;
    }
    FillSpan(y, row.first, inside.first, pen.color);
    FillSpan(y, inside.end, row.end, pen.color);
    if (brush) FillSpan(y, inside.first, inside.end, brush->color);
  }
}

void Canvas::FillRect(const Rect& rect, const Brush& brush) {
  const Rect visible = Intersect(rect, GetClipBox());
  for (std::int32_t y = visible.top; y < visible.bottom; ++y) {
    FillSpan(y, visible.left, visible.right, brush.color);
  }
}

void Canvas::FillPolygon(std::span<const Point> points, const Brush& brush) {
  if (points.size() < 3) return;
  const auto [lowest, highest] =
      std::minmax_element(points.begin(), points.end(), [](Point a, Point b) { return a.y < b.y; });
  const std::int32_t first = std::max(lowest->y, 0), last = std::min(highest->y, m_bitmap.height);
  for (std::int32_t y = first; y < last; ++y) {
    m_crossings.clear();
    for (std::size_t i = 0; i < points.size(); ++i) {
      const Point a = Held(points[i]), b = Held(points[(i + 1) % points.size()]);
      if ((y < a.y) == (y < b.y)) continue;
      m_crossings.push_back(a.x +
                            (static_cast<double>(y) - a.y) * (b.x - a.x) / (static_cast<double>(b.y) - a.y));
    }
    std::sort(m_crossings.begin(), m_crossings.end());
    for (std::size_t i = 0; i + 1 < m_crossings.size(); i += 2) {
      FillSpan(y, static_cast<std::int64_t>(std::ceil(m_crossings[i] - kTolerance)),
               static_cast<std::int64_t>(std::ceil(m_crossings[i + 1] - kTolerance)), brush.color);
    }
  }
}

}  // namespace vrx::drawing
