#include "gps/trackview/TrackLineMap.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace vrx::gps {
namespace {

using drawing::ColorRef;
using drawing::Point;
using drawing::Rect;

constexpr std::uint32_t kMostParts = 0xFFFFFF;  // they are numbered from 1 on by the colours of a picture
constexpr std::uint32_t kOpaque = 0xFF000000;
static_assert(std::endian::native == std::endian::little, "a pixel is its number below its alpha");

/// The colour whose pixel holds the number.
ColorRef ColorOfNumber(std::size_t number) {
  return drawing::MakeColor(static_cast<unsigned char>(number >> 16), static_cast<unsigned char>(number >> 8),
                            static_cast<unsigned char>(number));
}

Rect BoundsOf(std::span<const Point> line, std::int32_t width) {
  Rect bounds = LineBounds(line[0], line[1], width);
  for (const Point point : line) {
    const Rect around = LineBounds(point, point, width);
    bounds = {std::min(bounds.left, around.left), std::min(bounds.top, around.top),
              std::max(bounds.right, around.right), std::max(bounds.bottom, around.bottom)};
  }
  return bounds;
}

template <class Test>
void PaintRow(std::span<const std::uint32_t> numbers, const Test& isDrawn, std::uint32_t color,
              std::uint32_t* pixels) {
  for (std::size_t x = 0; x < numbers.size(); ++x) pixels[x] = isDrawn(numbers[x]) ? color : pixels[x];
}

/// An opaque pixel as it lies in memory.
std::uint32_t PixelOf(ColorRef color) {
  const unsigned char bytes[4] = {drawing::BlueOf(color), drawing::GreenOf(color), drawing::RedOf(color),
                                  255};
  std::uint32_t pixel;
  std::memcpy(&pixel, bytes, sizeof pixel);
  return pixel;
}

}  // namespace

Rect LineBounds(Point from, Point to, std::int32_t width) {
  const std::int64_t reach = std::max<std::int64_t>(width, 1) / 2 + 1;
  return {
      drawing::Saturated(std::min(from.x, to.x) - reach), drawing::Saturated(std::min(from.y, to.y) - reach),
      drawing::Saturated(std::max(from.x, to.x) + reach), drawing::Saturated(std::max(from.y, to.y) + reach)};
}

std::optional<TrackLineMap> TrackLineMap::Make(std::span<const Point> line, std::int32_t width, Side side,
                                               drawing::Size frame) {
  if (line.size() < 2 || line.size() > kMostParts) return std::nullopt;
  const Rect area = BoundsOf(line, width);
  // A canvas cuts lines at its edges, so a part that leaves the frame could get other pixels here.
  if (area != drawing::Intersect(area, {0, 0, frame.width, frame.height})) return std::nullopt;
  TrackLineMap map(area, side);
  if (!map.NumberPixels(line, width)) return std::nullopt;
  return map;
}

bool TrackLineMap::NumberPixels(std::span<const Point> line, std::int32_t width) {
  m_numbers = std::make_unique<XpPixmap32>();
  if (m_numbers->Allocate(drawing::Saturated(m_area.Width()), drawing::Saturated(m_area.Height())) != XpOk)
    return false;
  drawing::Canvas canvas(m_numbers->GetBitmapHandle());
  const auto draw = [&](std::size_t part) {
    const Point from = line[part], to = line[part + 1];
    canvas.DrawLine({from.x - m_area.left, from.y - m_area.top}, {to.x - m_area.left, to.y - m_area.top},
                    {ColorOfNumber(part + 1), width});
  };
  const std::size_t parts = line.size() - 1;
  for (std::size_t i = 0; i < parts; ++i) draw(m_side == Side::Before ? parts - 1 - i : i);
  return true;
}

void TrackLineMap::Draw(std::size_t split, ColorRef color, XpPixmap32& frame) const {
  const XpPlaneBase* plane = frame.GetPlane(0);
  if (plane == nullptr) return;
  const std::uint32_t pixel = PixelOf(color);
  const auto before = static_cast<std::uint32_t>(std::min<std::size_t>(split, kMostParts));
  const auto columns = static_cast<std::size_t>(m_area.Width());
  for (std::int32_t y = m_area.top; y < m_area.bottom; ++y) {
    auto* row = reinterpret_cast<std::uint32_t*>(plane->Row(y)) + m_area.left;
    const std::span numbers(
        reinterpret_cast<const std::uint32_t*>(m_numbers->GetPlane(0)->Row(y - m_area.top)), columns);
    if (m_side == Side::Before) {
      // A clear pixel comes out as the greatest number, which is never below the split.
      PaintRow(
          numbers, [before](std::uint32_t n) { return n - kOpaque - 1 < before; }, pixel, row);
    } else {
      PaintRow(
          numbers, [before](std::uint32_t n) { return n > kOpaque + before; }, pixel, row);
    }
  }
}

}  // namespace vrx::gps
