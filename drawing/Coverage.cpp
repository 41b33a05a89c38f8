#include "drawing/Coverage.h"

#include <algorithm>
#include <cstring>

namespace vrx::drawing {
namespace {

constexpr std::uint32_t kOpaque = 255;

unsigned char Mixed(std::uint32_t under, std::uint32_t over, std::uint32_t coverage) {
  return static_cast<unsigned char>((under * (kOpaque - coverage) + over * coverage + kOpaque / 2) / kOpaque);
}

/// "Over" for colours that are not premultiplied.
void ComposePixel(unsigned char* dest, const unsigned char* color, std::uint32_t coverage) {
  const std::uint32_t under = dest[3];
  if (coverage == kOpaque || under == 0) {
    std::memcpy(dest, color, 3);
    dest[3] = static_cast<unsigned char>(coverage);
    return;
  }
  if (under == kOpaque) {
    for (int c = 0; c < 3; ++c) dest[c] = Mixed(dest[c], color[c], coverage);
    return;
  }
  const std::uint32_t overShare = coverage * kOpaque, underShare = under * (kOpaque - coverage);
  const std::uint32_t whole = overShare + underShare;
  for (int c = 0; c < 3; ++c) {
    dest[c] = static_cast<unsigned char>((color[c] * overShare + dest[c] * underShare + whole / 2) / whole);
  }
  dest[3] = static_cast<unsigned char>((whole + kOpaque / 2) / kOpaque);
}

void ComposePixel24(unsigned char* dest, const unsigned char* color, std::uint32_t coverage) {
  for (int c = 0; c < 3; ++c) dest[c] = Mixed(dest[c], color[c], coverage);
}

void ComposeColoredRow(unsigned char* dest, XpBitmapFormat format, const unsigned char* pixels,
                       std::size_t count) {
  const std::size_t step = format == XpBitmapFormat::Bgra32 ? 4 : 3;
  for (std::size_t i = 0; i < count; ++i, dest += step, pixels += 4) {
    if (pixels[3] == 0) continue;
    if (format == XpBitmapFormat::Bgra32) {
      ComposePixel(dest, pixels, pixels[3]);
    } else {
      ComposePixel24(dest, pixels, pixels[3]);
    }
  }
}

}  // namespace

void ComposeRow(unsigned char* dest, XpBitmapFormat format, const unsigned char* coverage, std::size_t count,
                ColorRef color) {
  const unsigned char bytes[3] = {BlueOf(color), GreenOf(color), RedOf(color)};
  const std::size_t step = format == XpBitmapFormat::Bgra32 ? 4 : 3;
  std::size_t i = 0;
  while (i < count) {
    // Most of a text is the space between its strokes.
    std::uint64_t eight = 0;
    if (i + sizeof eight <= count) {
      std::memcpy(&eight, coverage + i, sizeof eight);
      if (eight == 0) {
        i += sizeof eight;
        continue;
      }
    }
    const std::size_t end = std::min(count, i + sizeof eight);
    for (; i < end; ++i) {
      if (coverage[i] == 0) continue;
      if (format == XpBitmapFormat::Bgra32) {
        ComposePixel(dest + i * step, bytes, coverage[i]);
      } else {
        ComposePixel24(dest + i * step, bytes, coverage[i]);
      }
    }
  }
}

void Compose(const XpBitmap& bitmap, const Coverage& coverage, Point origin, const Rect& clip,
             ColorRef color) {
  const Rect placed = Moved(coverage.box, origin.x, origin.y);
  const Rect visible = Intersect(Intersect(placed, clip), {0, 0, bitmap.width, bitmap.height});
  if (visible.IsEmpty() || bitmap.bits == nullptr) return;
  const std::int64_t bytesPerPixel = coverage.colored ? 4 : 1;
  const std::size_t count = static_cast<std::size_t>(visible.Width());
  for (std::int64_t y = visible.top; y < visible.bottom; ++y) {
    const unsigned char* from = coverage.bytes.data() + ((y - placed.top) * coverage.box.Width() +
                                                         (std::int64_t{visible.left} - placed.left)) *
                                                            bytesPerPixel;
    unsigned char* to =
        bitmap.bits + y * bitmap.rowBytes + std::int64_t{visible.left} * bitmap.BytesPerPixel();
    if (coverage.colored) {
      ComposeColoredRow(to, bitmap.format, from, count);
    } else {
      ComposeRow(to, bitmap.format, from, count, color);
    }
  }
}

}  // namespace vrx::drawing
