#include "imaging/pixmap/XpPixmapRotate.h"

#include <algorithm>
#include <cstdint>

namespace {

constexpr std::ptrdiff_t kPixelStep = 3;
// A tile of both pictures stays in the first-level cache while columns are read as rows.
constexpr std::int32_t kTile = 32;

/// How a walk along the source's rows and columns moves through the result, in bytes from its first pixel.
struct Walk {
  std::ptrdiff_t start;
  std::ptrdiff_t perColumn;
  std::ptrdiff_t perRow;
};

void CopyTile(const XpPlaneBase& from, unsigned char* result, const Walk& walk, std::int32_t left,
              std::int32_t top) {
  const std::int32_t right = std::min(left + kTile, from.width);
  const std::int32_t bottom = std::min(top + kTile, from.height);
  for (std::int32_t y = top; y < bottom; ++y) {
    const unsigned char* in = from.Row(y) + left * kPixelStep;
    unsigned char* out = result + walk.start + y * walk.perRow + left * walk.perColumn;
    for (std::int32_t x = left; x < right; ++x, in += kPixelStep, out += walk.perColumn) {
      out[0] = in[0];
      out[1] = in[1];
      out[2] = in[2];
    }
  }
}

enum class Turn { Clockwise, Half, CounterClockwise, Mirror };

Walk WalkFor(Turn turn, std::ptrdiff_t width, std::ptrdiff_t height, std::ptrdiff_t rowBytes) {
  const std::ptrdiff_t lastColumn = (width - 1) * kPixelStep;
  switch (turn) {
    case Turn::Clockwise:
      return {(height - 1) * kPixelStep, rowBytes, -kPixelStep};
    case Turn::Half:
      return {(height - 1) * rowBytes + lastColumn, -kPixelStep, -rowBytes};
    case Turn::CounterClockwise:
      return {(width - 1) * rowBytes, -rowBytes, kPixelStep};
    case Turn::Mirror:
      break;
  }
  return {lastColumn, -kPixelStep, rowBytes};
}

std::unique_ptr<XpPixmap24NoHandle> Turned(const XpPixmapBase& pixmap, Turn turn) {
  if (pixmap.GetPlaneBytesPerPixel(0) != kPixelStep) return nullptr;
  const XpPlaneBase& from = *pixmap.GetPlane(0);
  const bool swapsSides = turn == Turn::Clockwise || turn == Turn::CounterClockwise;
  auto result = std::make_unique<XpPixmap24NoHandle>();
  if (result->Allocate(swapsSides ? from.height : from.width, swapsSides ? from.width : from.height) !=
      XpOk) {
    return nullptr;
  }
  const Walk walk = WalkFor(turn, from.width, from.height, result->GetPlane(0)->rowBytes);
  for (std::int32_t y = 0; y < from.height; y += kTile) {
    for (std::int32_t x = 0; x < from.width; x += kTile) CopyTile(from, result->data, walk, x, y);
  }
  return result;
}

}  // namespace

std::unique_ptr<XpPixmap24NoHandle> RotatePixmap90CW(const XpPixmapBase& pixmap) {
  return Turned(pixmap, Turn::Clockwise);
}

std::unique_ptr<XpPixmap24NoHandle> RotatePixmap180(const XpPixmapBase& pixmap) {
  return Turned(pixmap, Turn::Half);
}

std::unique_ptr<XpPixmap24NoHandle> RotatePixmap90CCW(const XpPixmapBase& pixmap) {
  return Turned(pixmap, Turn::CounterClockwise);
}

std::unique_ptr<XpPixmap24NoHandle> MirrorPixmap(const XpPixmapBase& pixmap) {
  return Turned(pixmap, Turn::Mirror);
}
