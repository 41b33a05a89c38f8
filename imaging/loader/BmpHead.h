// The head of a BMP file, of any header version in use, checked and brought into one form. Used by the BMP
// reader.
#pragma once

#include <array>
#include <cstdint>

#include "imaging/loader/ImageReading.h"

namespace vrx::imaging {

enum class BmpPacking { Plain, Rle8, Rle4 };

/// One channel within a pixel of 16 or 32 bits.
struct BmpChannel {
  int shift = 0;
  std::uint32_t max = 0;  // 0: the channel does not exist
};

struct BmpColour {
  std::uint8_t blue = 0, green = 0, red = 0;
};

struct BmpHead {
  std::int64_t width = 0;
  std::int64_t height = 0;
  bool isTopDown = false;
  int bits = 0;  // a pixel: 1, 4, 8, 16, 24 or 32
  BmpPacking packing = BmpPacking::Plain;
  BmpChannel blue, green, red;           // for 16 and 32 bits
  std::array<BmpColour, 256> palette{};  // for up to 8 bits; black where the file has none
  std::int64_t pixelOffset = 0;          // bytes from the start of the file
};

/// False with the failure noted. The size in it is not yet checked against the limits.
bool ReadBmpHead(ImageReading& reading, BmpHead& head);

}  // namespace vrx::imaging
