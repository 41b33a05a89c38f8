// Writes a picture as a PNG file.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "vrx/XpString.h"

namespace vrx::host {

/// Top-down rows of 4-byte pixels, blue in the lowest byte, without padding; sizes in pixels.
struct BgraPicture {
  std::uint32_t width;
  std::uint32_t height;
  std::span<const std::uint32_t> pixels;
};

/// With `alpha` the fourth byte is straight alpha, else the picture is opaque. Replaces an older file only by
/// a complete picture. False, with the cause for people, when the file cannot be written.
bool WritePng(const XpString& path, const BgraPicture& picture, bool alpha, std::string& cause);

}  // namespace vrx::host
