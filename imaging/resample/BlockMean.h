// Means of small blocks of pixels, for pictures that shrink by a whole factor.
#pragma once

#include <cstddef>

#include "imaging/pixmap/XpPlane.h"

namespace vrx::resample {

/// Each target pixel is the mean of 2 by 2 source pixels, rounded down. The source is exactly twice as wide
/// and high.
void MeanOf2x2Blocks(const XpPlaneBase& source, const XpPlaneBase& target);
/// The same for 3 by 3.
void MeanOf3x3Blocks(const XpPlaneBase& source, const XpPlaneBase& target);

/// The means of `count` pairs of neighbouring pixels in a row, rounded down.
void MeanOfPairs(const unsigned char* in, std::size_t count, unsigned char* out);
/// The mean of each two bytes that lie above each other, rounded down.
void MeanOfTwoRows(const unsigned char* upper, const unsigned char* lower, std::size_t bytes,
                   unsigned char* out);

}  // namespace vrx::resample
