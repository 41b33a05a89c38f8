// GIF files built byte by byte, so that every field and each kind of damage can be had. Pixels are stored
// without packing: codes of eight bits, with a clear code often enough that they stay so.
#pragma once

#include <cstdint>
#include <vector>

#include "tests/imaging/ImageFiles.h"

namespace giffiles {

using imagefiles::Bytes;
using imagefiles::Little;

inline constexpr int kColours = 128;

/// Colour i is (i, 2i, 255 - i), red first.
inline Bytes Palette(int first = 0) {
  Bytes bytes;
  for (int i = first; i < first + kColours; ++i) {
    bytes += {static_cast<char>(i), static_cast<char>(2 * i), static_cast<char>(255 - i)};
  }
  return bytes;
}
/// Blue first, as pixmaps have it.
inline Bytes Colour(int i) {
  return {static_cast<char>(255 - i), static_cast<char>(2 * i), static_cast<char>(i)};
}

inline Bytes Head(std::uint32_t width, std::uint32_t height, int background = 0, bool hasPalette = true) {
  return "GIF89a" + Little(width, 2) + Little(height, 2) + Little(hasPalette ? 0xF6 : 0x76, 1) +
         Little(static_cast<std::uint32_t>(background), 1) + Bytes(1, '\0') + (hasPalette ? Palette() : "");
}

/// A graphic control. `transparent` below 0 for none; the delay in hundredths of a second.
inline Bytes Control(std::uint32_t delay, int transparent = -1) {
  return Bytes("\x21\xF9\x04", 3) + Little(transparent >= 0 ? 1 : 0, 1) + Little(delay, 2) +
         Little(static_cast<std::uint32_t>(transparent >= 0 ? transparent : 0), 1) + Bytes(1, '\0');
}

inline Bytes Pixels(const std::vector<int>& indices) {
  constexpr std::size_t kCodesPerClear = 100;
  constexpr char kClear = '\x80', kEnd = '\x81';
  Bytes codes;
  for (std::size_t i = 0; i < indices.size(); ++i) {
    if (i % kCodesPerClear == 0) codes += kClear;
    codes += static_cast<char>(indices[i]);
  }
  codes += kEnd;
  Bytes bytes("\x07", 1);
  for (std::size_t at = 0; at < codes.size(); at += 255) {
    const Bytes block = codes.substr(at, 255);
    bytes += static_cast<char>(block.size());
    bytes += block;
  }
  return bytes + Bytes(1, '\0');
}

struct Place {
  std::uint32_t left = 0, top = 0, width = 1, height = 1;
  bool isInterlaced = false;
};
/// `palette` is that of the image, or empty. The rows come as they are given.
inline Bytes Image(const Place& place, const Bytes& pixels, const Bytes& palette = {}) {
  const std::uint32_t flags = (place.isInterlaced ? 0x40u : 0u) | (palette.empty() ? 0u : 0x86u);
  return "," + Little(place.left, 2) + Little(place.top, 2) + Little(place.width, 2) +
         Little(place.height, 2) + Little(flags, 1) + palette + pixels;
}

inline const Bytes kEnd = ";";

}  // namespace giffiles
