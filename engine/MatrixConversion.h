// Conversion of 8-bit 4:2:0 pictures from the matrix and range of a source to those of the movie, without a
// detour through RGB. Used by the fitter.
#pragma once

#include <cstdint>
#include <vector>

#include "engine/BgrConversion.h"
#include "engine/PictureColour.h"

namespace vrx::engine {

/// Belongs to one thread.
class MatrixConversion {
 public:
  /// Sets the colours of the pictures that come, and the matrix that they get, with limited range.
  void Prepare(const PictureColour& from, AVColorSpace to);

  /// Writes the converted `source` to `target`, which has the same size and may be the same picture. Samples
  /// are rounded to the nearest and clipped to a byte; greys stay neutral.
  void Apply(const PlanarPicture& source, const PlanarPicture& target);

 private:
  void ConvertChroma(const PlanarPicture& source, const PlanarPicture& target, int row);
  void ConvertLuma(const std::uint8_t* source, std::uint8_t* target, int width) const;

  // Times 2^14. The chroma terms work on samples less their neutral level.
  std::int16_t m_lumaOfU = 0, m_lumaOfV = 0;
  std::int16_t m_uOfU = 0, m_uOfV = 0;
  std::int16_t m_vOfU = 0, m_vOfV = 0;
  bool m_fullRange = false;
  std::vector<std::int16_t> m_terms;  // of one row: what chroma and range add to each luma sample, times 2^6
};

}  // namespace vrx::engine
