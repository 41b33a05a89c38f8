// Overlays with straight alpha become planar pictures of ten bits with an alpha plane. Used where overlays
// are written alone as a movie.
#pragma once

#include <cstdint>
#include <vector>

#include "engine/AvPointers.h"
#include "engine/PictureColour.h"

namespace vrx::engine {

/// Belongs to one thread.
class AlphaConversion {
 public:
  AlphaConversion(int width, int height);

  /// `drawing` has top-down rows without padding, blue first, straight alpha. `frame` is 4:4:4:4 with ten
  /// bits and becomes limited range with the movie's matrix; eight bits of alpha fill its range and come back
  /// exactly. Clear pixels get the colour of what is drawn next to them, up to 16 pixels away, so that blocks
  /// of a codec and filters of an editor find no edge there; further off they are black.
  void Convert(const std::uint32_t* drawing, AVFrame& frame);

 private:
  void SpreadColours(const std::uint32_t* drawing);
  void ConvertRow(const std::uint32_t* drawn, const std::uint32_t* spread, int row, AVFrame& frame) const;

  int m_width;
  int m_height;
  OutputMatrix m_matrix;
  std::vector<std::uint32_t> m_spread;  // the nearest colour, and above it how far away that is
};

}  // namespace vrx::engine
