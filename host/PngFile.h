// Writes a picture as a PNG file.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace vrx::host {

/// Top-down rows of 4-byte pixels, blue in the lowest byte, without padding; sizes in pixels.
struct BgraPicture {
  std::uint32_t width;
  std::uint32_t height;
  std::span<const std::uint32_t> pixels;
};

/// With `alpha` the fourth byte is straight alpha, else the picture is opaque. False, with the cause for
/// people, when the file cannot be written; nothing is left of it then.
bool WritePng(const std::string& path, const BgraPicture& picture, bool alpha, std::string& cause);

}  // namespace vrx::host
