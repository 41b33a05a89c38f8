#include "host/PlotCanvas.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <span>

#include "drawing/pango/PangoTextRenderer.h"

namespace vrx::host {
namespace {

constexpr std::int32_t kEnlargement = 4;
constexpr std::uint32_t kTextFormat = drawing::DT_SINGLELINE | drawing::DT_NOPREFIX;

std::int32_t Enlarged(double pixels) {
  return static_cast<std::int32_t>(std::lround(std::clamp(pixels, -1e6, 1e6) * kEnlargement));
}
drawing::Point Enlarged(PlotPoint point) { return {Enlarged(point.x), Enlarged(point.y)}; }
drawing::Pen MakePen(double width, drawing::ColorRef color) { return {color, std::max(1, Enlarged(width))}; }

std::vector<drawing::Point> Enlarged(const std::vector<PlotPoint>& points) {
  std::vector<drawing::Point> enlarged;
  enlarged.reserve(points.size());
  for (const PlotPoint& point : points) {
    const drawing::Point next = Enlarged(point);
    if (enlarged.empty() || !(enlarged.back() == next)) enlarged.push_back(next);
  }
  return enlarged;
}

/// The mean of the enlarged pixels that one pixel of the finished picture covers.
std::uint32_t MeanPixel(const XpBitmap& large, std::int32_t x, std::int32_t y) {
  std::uint32_t sums[3] = {};
  for (std::int32_t row = 0; row < kEnlargement; ++row) {
    const unsigned char* pixel = large.bits + std::ptrdiff_t{y * kEnlargement + row} * large.rowBytes +
                                 std::ptrdiff_t{x} * kEnlargement * 4;
    for (std::int32_t column = 0; column < kEnlargement; ++column, pixel += 4) {
      for (std::size_t c = 0; c < 3; ++c) sums[c] += pixel[c];
    }
  }
  constexpr std::uint32_t kCount = kEnlargement * kEnlargement;
  std::uint32_t result = 0xFF000000u;
  for (std::size_t c = 0; c < 3; ++c) result |= (sums[c] + kCount / 2) / kCount << (8 * c);
  return result;
}

/// The text, with an ellipsis in place of what has no room. It is taken from the middle, since names often
/// differ in their ends alone.
XpString Fitted(drawing::TextRenderer& renderer, const PlotText& text, const drawing::Font& font) {
  const auto fits = [&](const XpString& shown) {
    return renderer.Measure(shown.AsView(), font, 0, kTextFormat).width <= text.mostWidth;
  };
  if (text.mostWidth <= 0.0 || fits(text.text)) return text.text;
  const std::u16string_view all = text.text.AsView();
  const auto isInPair = [&](std::size_t at) { return at < all.size() && (all[at] & 0xFC00) == 0xDC00; };
  for (std::size_t kept = all.size() - 1; kept > 0; --kept) {
    std::size_t head = kept - kept / 2;
    std::size_t tail = all.size() - kept / 2;
    if (isInPair(head)) --head;
    if (isInPair(tail)) ++tail;
    XpString shown(std::u16string(all.substr(0, head)) + u"\u2026" + std::u16string(all.substr(tail)));
    if (fits(shown)) return shown;
  }
  return {};
}

void DrawTexts(const drawing::Canvas& canvas, const std::vector<PlotText>& texts) {
  static constexpr drawing::Point kAroundText[] = {{-2, -2}, {0, -3}, {2, -2}, {-3, 0},
                                                   {3, 0},   {-2, 2}, {0, 3},  {2, 2}};
  constexpr std::span<const drawing::Point> kAround(kAroundText);
  drawing::PangoTextRenderer renderer;
  for (const PlotText& text : texts) {
    drawing::Font font;
    font.face = u"DejaVu Sans";
    font.height = -text.pixels;
    font.weight = text.bold ? 700 : 400;
    const XpString shown = Fitted(renderer, text, font);
    const drawing::Size size = renderer.Measure(shown.AsView(), font, 0, kTextFormat);
    const double share = text.align == PlotAlign::Left ? 0.0 : text.align == PlotAlign::Center ? 0.5 : 1.0;
    const auto left = static_cast<std::int32_t>(std::lround(text.at.x - share * size.width));
    const auto top = static_cast<std::int32_t>(std::lround(text.at.y - size.height / 2.0));
    const drawing::Rect rect{left, top, left + size.width + 1, top + size.height};
    for (const drawing::Point step : text.halo ? kAround : std::span<const drawing::Point>()) {
      renderer.Draw(canvas, shown.AsView(), font, *text.halo, drawing::Moved(rect, step.x, step.y),
                    kTextFormat);
    }
    renderer.Draw(canvas, shown.AsView(), font, text.color, rect, kTextFormat);
  }
}

}  // namespace

PlotCanvas::PlotCanvas(std::int32_t width, std::int32_t height, drawing::ColorRef ground)
    : m_width(width), m_height(height) {
  if (m_large.Allocate(width * kEnlargement, height * kEnlargement) != XpOk) throw std::bad_alloc();
  m_canvas.Bind(m_large.GetBitmapHandle());
  m_canvas.FillRect(m_canvas.GetClipBox(), {ground});
}

void PlotCanvas::Fill(const PlotRect& rect, drawing::ColorRef color) {
  m_canvas.FillRect({Enlarged(rect.left), Enlarged(rect.top), Enlarged(rect.right), Enlarged(rect.bottom)},
                    {color});
}

void PlotCanvas::FillPolygon(const std::vector<PlotPoint>& points, drawing::ColorRef color) {
  m_canvas.FillPolygon(Enlarged(points), {color});
}

void PlotCanvas::Line(PlotPoint from, PlotPoint to, double width, drawing::ColorRef color) {
  m_canvas.DrawLine(Enlarged(from), Enlarged(to), MakePen(width, color));
}

void PlotCanvas::Polyline(const std::vector<PlotPoint>& points, double width, drawing::ColorRef color) {
  m_canvas.DrawPolyline(Enlarged(points), MakePen(width, color));
}

void PlotCanvas::Dashes(PlotPoint from, PlotPoint to, double width, double dash, drawing::ColorRef color) {
  const double length = std::hypot(to.x - from.x, to.y - from.y);
  if (length == 0.0) return;
  const auto at = [&](double way) {
    const double share = std::min(way / length, 1.0);
    return PlotPoint{from.x + (to.x - from.x) * share, from.y + (to.y - from.y) * share};
  };
  for (double way = 0.0; way < length; way += 2.0 * dash) Line(at(way), at(way + dash), width, color);
}

void PlotCanvas::Disc(PlotPoint center, double radius, drawing::ColorRef color) {
  m_canvas.DrawEllipse({Enlarged(center.x - radius), Enlarged(center.y - radius), Enlarged(center.x + radius),
                        Enlarged(center.y + radius)},
                       {color, 1}, drawing::Brush{color});
}

std::vector<std::uint32_t> PlotCanvas::Finish() {
  XpPixmap32 picture;
  if (picture.Allocate(m_width, m_height) != XpOk) throw std::bad_alloc();
  const drawing::Canvas canvas(picture.GetBitmapHandle());
  const XpBitmap& large = m_canvas.GetBitmap();
  for (std::int32_t y = 0; y < m_height; ++y) {
    unsigned char* row = canvas.GetBitmap().bits + std::ptrdiff_t{y} * canvas.GetBitmap().rowBytes;
    for (std::int32_t x = 0; x < m_width; ++x) {
      const std::uint32_t pixel = MeanPixel(large, x, y);
      std::memcpy(row + std::ptrdiff_t{x} * 4, &pixel, sizeof pixel);
    }
  }
  DrawTexts(canvas, m_texts);
  std::vector<std::uint32_t> pixels(static_cast<std::size_t>(m_width) * static_cast<std::size_t>(m_height));
  std::memcpy(pixels.data(), picture.data, pixels.size() * sizeof pixels[0]);
  return pixels;
}

}  // namespace vrx::host
