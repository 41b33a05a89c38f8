// Conversion between the movie's 8-bit 4:2:0 pictures (limited range) and packed 4-byte BGR. Used by the
// overlay stage and for still pictures.
#pragma once

#include <cstddef>
#include <cstdint>

#include "engine/PictureColour.h"

namespace vrx::engine {

/// A 4:2:0 picture or a part of one whose corner lies on an even pixel. It owns nothing; distances in bytes.
struct PlanarPicture {
  std::uint8_t* y;
  std::uint8_t* u;
  std::uint8_t* v;
  std::ptrdiff_t lumaStride;
  std::ptrdiff_t chromaStride;
  int width;
  int height;

  static PlanarPicture Of(const AVFrame& frame);
  PlanarPicture Part(int x, int top, int partWidth, int partHeight) const;
};

/// Rows of packed pixels, blue in the lowest byte. `stride` is the distance in pixels to the row below, and
/// negative where the bottom row comes first in memory.
struct BgrRows {
  std::uint32_t* top;
  std::ptrdiff_t stride;
};

/// Writes opaque pixels.
void PlanarToBgr(const PlanarPicture& picture, OutputMatrix matrix, BgrRows rows);

/// Converts every pixel. A chroma sample is the mean of its four pixels; at an odd edge the last column or
/// row counts twice.
void BgrToPlanar(BgrRows rows, OutputMatrix matrix, const PlanarPicture& picture);

/// Converts where `rows` differs from `before` in a colour, and leaves every other sample of `picture` as it
/// is.
void ChangedBgrToPlanar(BgrRows rows, BgrRows before, OutputMatrix matrix, const PlanarPicture& picture);

/// Whether two pictures have the same bytes.
bool SameRows(BgrRows a, BgrRows b, int width, int height);

}  // namespace vrx::engine
