// Colours of pens, brushes and text as documents and painters state them.
#pragma once

#include <cstdint>

namespace vrx::drawing {

/// 0x00BBGGRR; the top byte is ignored.
using ColorRef = std::uint32_t;

constexpr ColorRef MakeColor(std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
  return red | static_cast<ColorRef>(green) << 8 | static_cast<ColorRef>(blue) << 16;
}
constexpr std::uint8_t RedOf(ColorRef color) { return static_cast<std::uint8_t>(color); }
constexpr std::uint8_t GreenOf(ColorRef color) { return static_cast<std::uint8_t>(color >> 8); }
constexpr std::uint8_t BlueOf(ColorRef color) { return static_cast<std::uint8_t>(color >> 16); }

/// A solid line of round ends and corners; a width below 1 counts as 1.
struct Pen {
  ColorRef color = 0;
  std::int32_t width = 1;  // pixels
};

/// A solid fill.
struct Brush {
  ColorRef color = 0;
};

}  // namespace vrx::drawing
