// An RGB picture in memory, for the tests and the clip maker: what they draw and what they read back.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace vrx::test_support {

using Rgb = std::array<std::uint8_t, 3>;

/// A rectangle in whole pixels, right and bottom excluded.
struct PixelRect {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;

  int Width() const { return right - left; }
  int Height() const { return bottom - top; }
  bool operator==(const PixelRect&) const = default;
};

/// Top-down rows without padding, three bytes a pixel, red first.
class RgbImage {
 public:
  RgbImage() = default;
  RgbImage(int w, int h) { Resize(w, h); }

  /// Keeps the memory when it suffices; the content is unspecified afterwards.
  void Resize(int w, int h);

  int Width() const { return m_width; }
  int Height() const { return m_height; }
  PixelRect Bounds() const { return {0, 0, m_width, m_height}; }
  std::uint8_t* Row(int y) { return m_bytes.data() + Offset(0, y); }
  const std::uint8_t* Row(int y) const { return m_bytes.data() + Offset(0, y); }

  Rgb At(int x, int y) const;
  void Set(int x, int y, const Rgb& colour);
  void Fill(const PixelRect& rect, const Rgb& colour);
  /// Mean colour of `rect`, which is cut at the picture's edges; black when nothing remains.
  Rgb Mean(const PixelRect& rect) const;

  /// Turns the picture clockwise by 0, 90, 180 or 270 degrees into `turned`.
  void Turn(int degrees, RgbImage& turned) const;

  /// The smallest rectangle outside of which every pixel is near black: the picture between letterbox bars.
  PixelRect FindPicture() const;

 private:
  std::size_t Offset(int x, int y) const {
    return 3 *
           (static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) + static_cast<std::size_t>(x));
  }

  int m_width = 0;
  int m_height = 0;
  std::vector<std::uint8_t> m_bytes;
};

/// Luma by the weights of ITU-R BT.709, 0 to 255.
int Luma(const Rgb& colour);

}  // namespace vrx::test_support
