// Which matrix, range and transfer the samples of a picture have: those of a source, stated or assumed, and
// those of the movie. Used by the fitter, the overlay stage and the encoder.
#pragma once

#include "engine/AvPointers.h"
#include "vrx/VRXEngineExtras.h"

namespace vrx::engine {

/// The two matrices that the movie can have, both with limited range.
enum class OutputMatrix { Bt601, Bt709 };

struct PictureColour {
  AVColorSpace matrix;
  AVColorPrimaries primaries;
  AVColorTransferCharacteristic transfer;
  bool fullRange;
  bool operator==(const PictureColour&) const = default;
};

/// BT.709 for pictures of more than 576 lines, else BT.601.
OutputMatrix MatrixOfHeight(int height);
PictureColour OutputColour(int height);

/// What `frame` says of itself; where it says nothing, what pictures of its height and format usually are.
PictureColour ColourOf(const AVFrame& frame);

/// By the transfer alone, whatever the depth; what `frame` does not say, and what is unknown, is standard.
VRXDynamicRange DynamicRangeOf(const AVFrame& frame);

/// How people call it: "SDR", "PQ" or "HLG".
const char* NameOf(VRXDynamicRange range);

/// The shares of red and blue in the luma of a matrix; the rest is green's.
struct LumaWeights {
  double red;
  double blue;
  bool operator==(const LumaWeights&) const = default;
};

inline constexpr LumaWeights kBt601Weights{0.299, 0.114};
inline constexpr LumaWeights kBt709Weights{0.2126, 0.0722};

/// Matrices that no 4:2:0 picture should have count as BT.601.
LumaWeights WeightsOf(AVColorSpace matrix);

/// Whether pictures of `format` hold red, green and blue.
bool IsRgb(AVPixelFormat format);

/// The format without the range that old formats carry in their names.
AVPixelFormat WithoutRange(AVPixelFormat format);

}  // namespace vrx::engine
