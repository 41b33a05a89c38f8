// Runs of 24-bit pixels between a picture's rows and the short buffers that the filters work on, in which
// loops over bytes need not know where a pixel begins.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vrx::resample {

inline constexpr std::size_t kBytesPerPixel = 3;
/// Pixels that are filtered at a time: what belongs to them stays in the first-level cache.
inline constexpr std::size_t kStripPixels = 128;
inline constexpr std::size_t kStripBytes = kStripPixels * kBytesPerPixel;

inline void CopyPixel(unsigned char* out, const unsigned char* in) { std::memcpy(out, in, kBytesPerPixel); }

/// One move instead of two. Reads and writes the byte after the pixel as well.
inline void CopyPixelAndNext(unsigned char* out, const unsigned char* in) { std::memcpy(out, in, 4); }

/// Every `step`-th pixel of `in`. Nothing outside the `count` pixels is written.
inline void PickPixels(const unsigned char* in, std::size_t step, std::size_t count, unsigned char* out) {
  for (std::size_t i = 0; i + 1 < count; ++i, in += step * kBytesPerPixel, out += kBytesPerPixel) {
    CopyPixelAndNext(out, in);
  }
  if (count > 0) CopyPixel(out, in);
}

}  // namespace vrx::resample
