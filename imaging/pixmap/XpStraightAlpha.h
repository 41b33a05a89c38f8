// The exact "over" of one pixel on another whose colours are not premultiplied. Used where smooth edges are
// composed on pictures that are empty in part.
#pragma once

#include <cstdint>
#include <cstring>

namespace vrx::pixels {

inline constexpr std::uint32_t kOpaque = 255;

/// The mean of two channels, rounded; `coverage` is the weight of `over`.
inline unsigned char Mixed(std::uint32_t under, std::uint32_t over, std::uint32_t coverage) {
  return static_cast<unsigned char>((under * (kOpaque - coverage) + over * coverage + kOpaque / 2) / kOpaque);
}

/// Lays a colour on the BGRA pixel `dest`, which it covers to `coverage` of 255.
inline void ComposeOver(unsigned char* dest, const unsigned char* color, std::uint32_t coverage) {
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

}  // namespace vrx::pixels
