// Draws an SVG template with its values into straight-alpha pixels.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "resources/maker/PictureList.h"

namespace vrx::pictures {

/// Top-down rows of four bytes a pixel, blue first, straight alpha, without padding.
struct Pixels {
  int width = 0;
  int height = 0;
  std::vector<std::uint8_t> bytes;

  std::uint8_t* At(int x, int y) {
    return bytes.data() +
           (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)) * 4;
  }
  const std::uint8_t* At(int x, int y) const { return const_cast<Pixels*>(this)->At(x, y); }
};

/// The picture at `scale` times its nominal size, rounded to whole pixels; templates are in `folder`. Where
/// nothing is visible, pixels have the colour of the nearest visible one, so that a filter that scales them
/// mixes in no foreign colour. Throws std::runtime_error that names the drawing.
Pixels Draw(const Picture& picture, const std::filesystem::path& folder, double scale);

}  // namespace vrx::pictures
