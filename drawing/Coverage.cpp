#include "drawing/Coverage.h"

#include <algorithm>
#include <cstring>

#include "imaging/pixmap/XpPixelVector.h"
#include "imaging/pixmap/XpStraightAlpha.h"

namespace vrx::drawing {
namespace {

void ComposePixel24(unsigned char* dest, const unsigned char* color, std::uint32_t coverage) {
  for (int c = 0; c < 3; ++c) dest[c] = pixels::Mixed(dest[c], color[c], coverage);
}

void ComposeColoredRow(unsigned char* dest, XpBitmapFormat format, const unsigned char* pixels,
                       std::size_t count) {
  const std::size_t step = format == XpBitmapFormat::Bgra32 ? 4 : 3;
  for (std::size_t i = 0; i < count; ++i, dest += step, pixels += 4) {
    if (pixels[3] == 0) continue;
    if (format == XpBitmapFormat::Bgra32) {
      pixels::ComposeOver(dest, pixels, pixels[3]);
    } else {
      ComposePixel24(dest, pixels, pixels[3]);
    }
  }
}

constexpr std::size_t kGroup = 8;  // pixels looked at together

bool IsBlank(const unsigned char* coverage) {
  std::uint64_t eight;
  static_assert(sizeof eight == kGroup);
  std::memcpy(&eight, coverage, sizeof eight);
  return eight == 0;
}

/// Whether a group's pixels are all zero.
bool IsEmpty(const unsigned char* dest) {
  static_assert(kGroup == 2 * pixels::kVectorPixels);
  return !pixels::AnyBits(pixels::Load(dest) | pixels::Load(dest + sizeof(pixels::Vector32)));
}

void ComposeOnEmpty(unsigned char* dest, const unsigned char* coverage, const unsigned char* color) {
  using namespace pixels;
  const std::uint32_t plain =
      std::uint32_t{color[0]} | std::uint32_t{color[1]} << 8 | std::uint32_t{color[2]} << 16;
  for (std::size_t i = 0; i < kGroup; i += kVectorPixels) {
    const Vector32 alpha = {coverage[i], coverage[i + 1], coverage[i + 2], coverage[i + 3]};
    const Vector32 isDrawn = reinterpret_cast<Vector32>(alpha != 0u);
    Store(dest + i * sizeof plain, (plain | alpha << 24) & isDrawn);
  }
}

/// The row as it is at `alpha` of the whole, in `faint`.
const unsigned char* Faint(const unsigned char* row, std::vector<unsigned char>& faint, std::size_t step,
                           std::uint8_t alpha) {
  std::memcpy(faint.data(), row, faint.size());
  for (std::size_t i = step - 1; i < faint.size(); i += step) faint[i] = pixels::Mixed(0, faint[i], alpha);
  return faint.data();
}

}  // namespace

void ComposeRow(unsigned char* dest, XpBitmapFormat format, const unsigned char* coverage, std::size_t count,
                ColorRef color) {
  const unsigned char bytes[3] = {BlueOf(color), GreenOf(color), RedOf(color)};
  const bool hasAlpha = format == XpBitmapFormat::Bgra32;
  const std::size_t step = hasAlpha ? 4 : 3;
  for (std::size_t first = 0; first < count; first += kGroup) {
    const std::size_t end = std::min(count, first + kGroup);
    if (end - first == kGroup) {
      // Most of a text is the space between its strokes, and most strokes fall on nothing.
      if (IsBlank(coverage + first)) continue;
      if (hasAlpha && IsEmpty(dest + first * step)) {
        ComposeOnEmpty(dest + first * step, coverage + first, bytes);
        continue;
      }
    }
    for (std::size_t i = first; i < end; ++i) {
      if (coverage[i] == 0) continue;
      if (hasAlpha) {
        pixels::ComposeOver(dest + i * step, bytes, coverage[i]);
      } else {
        ComposePixel24(dest + i * step, bytes, coverage[i]);
      }
    }
  }
}

void Compose(const XpBitmap& bitmap, const Coverage& coverage, Point origin, const Rect& clip, ColorRef color,
             std::uint8_t alpha) {
  const Rect placed = Moved(coverage.box, origin.x, origin.y);
  const Rect visible = Intersect(Intersect(placed, clip), {0, 0, bitmap.width, bitmap.height});
  if (visible.IsEmpty() || bitmap.bits == nullptr) return;
  const std::int64_t bytesPerPixel = coverage.colored ? 4 : 1;
  const auto step = static_cast<std::size_t>(bytesPerPixel);
  const std::size_t count = static_cast<std::size_t>(visible.Width());
  std::vector<unsigned char> faint(alpha == 255 ? 0 : count * step);
  for (std::int64_t y = visible.top; y < visible.bottom; ++y) {
    const unsigned char* from = coverage.bytes.data() + ((y - placed.top) * coverage.box.Width() +
                                                         (std::int64_t{visible.left} - placed.left)) *
                                                            bytesPerPixel;
    if (alpha != 255) from = Faint(from, faint, step, alpha);
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
