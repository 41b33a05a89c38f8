// Planes of a pixmap: how the bytes of one pixel lie in memory, and where the rows are. Code that runs over
// pixels reads the fields of XpPlaneBase directly.
#pragma once

#include <cstdint>

/// Pixel tags, in memory order, one channel a byte.
template <class Channel>
struct XpPixelBGR {
  static constexpr std::uint32_t kBitsPerPixel = 24, kBitsPerChannel = 8, kBytesPerPixel = 3,
                                 kChannelMask = 7;
};
template <class Channel>
struct XpPixelBGRA {
  static constexpr std::uint32_t kBitsPerPixel = 32, kBitsPerChannel = 8, kBytesPerPixel = 4,
                                 kChannelMask = 15;
};
/// No pixels at all: fills the place of a plane that a pixmap does not have.
template <class Channel>
struct XpPixelNull {
  static constexpr std::uint32_t kBitsPerPixel = 8, kBitsPerChannel = 8, kBytesPerPixel = 1, kChannelMask = 0;
};

/// A plane relative to its pixmap: rows are aligned to `Alignment` bytes, width and height are the pixmap's
/// shifted right by the arguments less 1.
template <class PixelType, int Alignment, int HorizontalArgument, int VerticalArgument>
struct XpPlaneDesc {
  static_assert(Alignment == 4, "rows are counted in units of 4 bytes");
  using Pixel = PixelType;
  static constexpr std::int32_t Width(std::int32_t width) { return width >> (HorizontalArgument - 1); }
  static constexpr std::int32_t Height(std::int32_t height) { return height >> (VerticalArgument - 1); }
  static constexpr std::int64_t RowBytes(std::int32_t width) {
    return (std::int64_t{Width(width)} * Pixel::kBytesPerPixel + (Alignment - 1)) / Alignment * Alignment;
  }
};

class XpPlaneBase {
 public:
  virtual std::uint32_t GetBitsPerPixel() const noexcept = 0;
  virtual std::uint32_t GetBitsPerChannel() const noexcept = 0;
  virtual std::uint32_t GetBytesPerPixel() const noexcept = 0;
  virtual std::int32_t GetRowBytes() const noexcept = 0;
  virtual std::uint32_t GetChannelMask() const noexcept = 0;
  virtual ~XpPlaneBase() = default;

  unsigned char* Row(std::int32_t y) const noexcept { return data + std::int64_t{y} * rowBytes; }

  unsigned char* data = nullptr;  // first byte of row 0; owned by the pixmap
  std::int32_t width = 0;
  std::int32_t height = 0;
  std::int32_t rowBytes = 0;  // from one row to the next
};

template <class Desc>
class XpPlane final : public XpPlaneBase {
 public:
  std::uint32_t GetBitsPerPixel() const noexcept override { return Desc::Pixel::kBitsPerPixel; }
  std::uint32_t GetBitsPerChannel() const noexcept override { return Desc::Pixel::kBitsPerChannel; }
  std::uint32_t GetBytesPerPixel() const noexcept override { return Desc::Pixel::kBytesPerPixel; }
  std::int32_t GetRowBytes() const noexcept override { return rowBytes; }
  std::uint32_t GetChannelMask() const noexcept override { return Desc::Pixel::kChannelMask; }
};
