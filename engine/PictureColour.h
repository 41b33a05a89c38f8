// Which matrix and range a picture is coded with: what a source says or leaves open, and what the movie gets.
// Used by the fitter, the overlay stage and the encoder.
#pragma once

#include "engine/AvPointers.h"

namespace vrx::engine {

/// The two matrices that the movie can have, both with limited range.
enum class OutputMatrix { Bt601, Bt709 };

struct PictureColour {
  AVColorSpace matrix;
  AVColorPrimaries primaries;
  AVColorTransferCharacteristic transfer;
  bool fullRange;
};

/// BT.709 for pictures of more than 576 lines, else BT.601.
OutputMatrix MatrixOfHeight(int height);
PictureColour OutputColour(int height);

/// What `frame` says of itself; where it says nothing, what pictures of its height usually are.
PictureColour ColourOf(const AVFrame& frame);

/// Whether both matrices have the same coefficients.
bool SameCoefficients(AVColorSpace a, AVColorSpace b);

/// The argument of sws_getCoefficients for `matrix`.
int ScalerMatrix(AVColorSpace matrix);

/// The format without the range that old formats carry in their names.
AVPixelFormat WithoutRange(AVPixelFormat format);

}  // namespace vrx::engine
