// The conversion between packed pixels and 4:2:0 for processors with vectors of 32 bytes. It gives the same
// bytes as the plain conversion. Used by BgrConversion.
#pragma once

#include <cstdint>

#include "engine/ColourCoefficients.h"

namespace vrx::engine {

/// Two rows of pixels that share their chroma. At an odd lower edge both are the last row.
struct BgrRowPair {
  std::uint32_t* row0;
  std::uint32_t* row1;
};

/// Their samples. At an odd lower edge both rows of luma are the last one.
struct PlanarRowPair {
  std::uint8_t* y0;
  std::uint8_t* y1;
  std::uint8_t* u;
  std::uint8_t* v;
};

/// Whether this processor has what the functions below need.
bool HasWideVectors();

// They convert as many columns as whole vectors hold, from the left, and return their number: even, up to
// `width`.

int WideToBgr(const PlanarRowPair& samples, const InverseCoefficients& c, int width,
              const BgrRowPair& pixels);

int WideToPlanar(const BgrRowPair& pixels, const Coefficients& c, int width, const PlanarRowPair& samples);

/// Writes only samples of pixels that differ from `before` in a colour.
int WideChangedToPlanar(const BgrRowPair& pixels, const BgrRowPair& before, const Coefficients& c, int width,
                        const PlanarRowPair& samples);

}  // namespace vrx::engine
