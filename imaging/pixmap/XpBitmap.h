// The memory of a pixmap as a drawing layer binds to it, and the bitmap record that describes it.
#pragma once

#include <cstdint>

enum class XpBitmapFormat : std::uint8_t {
  Bgr24,   // blue, green, red
  Bgra32,  // blue, green, red, alpha; colours are not premultiplied
};

/// A block of pixels, rows from the top, borrowed from the pixmap that owns it.
struct XpBitmap {
  unsigned char* bits = nullptr;
  std::int32_t width = 0;     // pixels
  std::int32_t height = 0;    // rows
  std::int32_t rowBytes = 0;  // from one row to the next, a multiple of 4
  XpBitmapFormat format = XpBitmapFormat::Bgra32;

  std::int32_t BytesPerPixel() const noexcept { return format == XpBitmapFormat::Bgra32 ? 4 : 3; }
};

/// Null when there is no bitmap. Valid until the pixmap is released or allocated again.
using XpBitmapHandle = const XpBitmap*;

/// The header of a device-independent bitmap with its one colour entry, as files and foreign code know it.
struct XpBitmapInfo {
  std::uint32_t biSize;
  std::int32_t biWidth;
  std::int32_t biHeight;  // negative: rows run from the top
  std::uint16_t biPlanes;
  std::uint16_t biBitCount;
  std::uint32_t biCompression;
  std::uint32_t biSizeImage;  // bytes
  std::int32_t biXPelsPerMeter;
  std::int32_t biYPelsPerMeter;
  std::uint32_t biClrUsed;
  std::uint32_t biClrImportant;
  std::uint32_t bmiColors[1];
};
static_assert(sizeof(XpBitmapInfo) == 44);
