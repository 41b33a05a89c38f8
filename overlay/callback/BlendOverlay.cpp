#include "overlay/callback/BlendOverlay.h"

#include <algorithm>
#include <cstring>

#include "imaging/pixmap/XpPixelVector.h"

namespace vrx::overlay {
namespace {

using namespace pixels;

constexpr std::size_t kColors = 3;
constexpr std::size_t kBgra = 4;
constexpr std::size_t kBlock = 16;  // pixels that are skipped together
constexpr std::uint32_t kOpaque = 255;

/// x / 255, truncated, for every x that a blend can give (at most 255 * 255).
Vector16 DividedBy255(Vector16 x) {
  x += 1;
  return (x + (x >> 8)) >> 8;
}

Vector32 BlendFour(Vector32 dest, Vector32 source) {
  const Vector16 alpha = InBothHalves(source >> 24);
  const Vector16 rest = static_cast<std::uint16_t>(kOpaque) - alpha;
  const auto blend = [&](Vector32 d, Vector32 s) {
    return As32(DividedBy255(As16(d & kEvenBytes) * rest + As16(s & kEvenBytes) * alpha));
  };
  const Vector32 mixed = blend(dest, source) | blend(dest >> 8, source >> 8) << 8;
  return (mixed & ~kAlphaMask) | (dest & kAlphaMask);
}

void BlendPixel(unsigned char* dest, const unsigned char* source) {
  const std::uint32_t alpha = source[kColors];
  for (std::size_t c = 0; c < kColors; ++c) {
    dest[c] = static_cast<unsigned char>((dest[c] * (kOpaque - alpha) + source[c] * alpha) / kOpaque);
  }
}

void BlendBgraRow(unsigned char* dest, const unsigned char* source, std::size_t count) {
  std::size_t x = 0;
  for (; x + kBlock <= count; x += kBlock) {
    if (AreClear(source + x * kBgra, kBlock, kAlphaMask)) continue;
    for (std::size_t i = x; i < x + kBlock; i += kVectorPixels) {
      Store(dest + i * kBgra, BlendFour(Load(dest + i * kBgra), Load(source + i * kBgra)));
    }
  }
  for (; x < count; ++x) BlendPixel(dest + x * kBgra, source + x * kBgra);
}

void BlendAnyRow(unsigned char* dest, std::size_t pixelBytes, const unsigned char* source,
                 std::size_t count) {
  for (std::size_t x = 0; x < count; ++x) {
    const unsigned char* from = source + x * kBgra;
    if (from[kColors] != 0) BlendPixel(dest + x * pixelBytes, from);
  }
}

/// Blends columns `first` to `last` of a row.
void BlendRow(const XpPixmap32& overlay, std::int32_t row, const DrawnArea::Span& span, unsigned char* frame,
              std::size_t pixelBytes) {
  const auto width = static_cast<std::size_t>(overlay.width);
  const auto first = static_cast<std::size_t>(span.first);
  const std::size_t count = static_cast<std::size_t>(span.last) - first;
  const auto frameRow = static_cast<std::size_t>(overlay.height - 1 - row);
  const unsigned char* source = overlay.data + (static_cast<std::size_t>(row) * width + first) * kBgra;
  unsigned char* dest = frame + (frameRow * width + first) * pixelBytes;
  if (pixelBytes == kBgra) {
    BlendBgraRow(dest, source, count);
  } else {
    BlendAnyRow(dest, pixelBytes, source, count);
  }
}

/// 0 when the frame cannot be blended into.
std::size_t PixelBytes(const XpPixmap32& overlay, const void* buffer, std::uint32_t size) {
  if (buffer == nullptr || overlay.width < 1 || overlay.height < 1) return 0;
  const std::size_t bytes =
      size / static_cast<std::size_t>(overlay.width) / static_cast<std::size_t>(overlay.height);
  return bytes < kColors ? 0 : bytes;
}

}  // namespace

void BlendOverlay(const XpPixmap32& overlay, void* buffer, std::uint32_t size) {
  const std::size_t pixelBytes = PixelBytes(overlay, buffer, size);
  if (pixelBytes == 0) return;
  for (std::int32_t y = 0; y < overlay.height; ++y) {
    BlendRow(overlay, y, {0, overlay.width}, static_cast<unsigned char*>(buffer), pixelBytes);
  }
}

void BlendOverlay(const XpPixmap32& overlay, const DrawnArea& area, void* buffer, std::uint32_t size) {
  const std::size_t pixelBytes = PixelBytes(overlay, buffer, size);
  if (pixelBytes == 0) return;
  for (std::int32_t y = area.GetFirstRow(); y < area.GetLastRow(); ++y) {
    const DrawnArea::Span span = area.GetSpan(y);
    if (span.first < span.last) BlendRow(overlay, y, span, static_cast<unsigned char*>(buffer), pixelBytes);
  }
}

}  // namespace vrx::overlay
