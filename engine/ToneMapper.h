// The tone mapping of whole rows by table: the curve of each sample exactly, and the mixing of the three by
// interpolation in a cube. Used by the fitter for sources of high dynamic range.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "engine/BgrConversion.h"
#include "engine/PictureColour.h"
#include "engine/ToneCurve.h"

namespace vrx::engine {

/// A row of red, green and blue; full range with kColourBits bits each.
struct ColourRow {
  const std::uint16_t* red;
  const std::uint16_t* green;
  const std::uint16_t* blue;
};

inline constexpr int kColourBits = 12;

/// Belongs to one thread.
class ToneMapper {
 public:
  /// Makes the tables, unless they are those of the last call: some 10 ms and 0.6 MB.
  void Prepare(VRXDynamicRange range, AVColorPrimaries primaries, AVColorSpace to);

  /// Maps rows `first` and `second`, which share their chroma, to rows `row` and `row` + 1 of `target`:
  /// limited range, chroma sited left. Greys are neutral exactly. The luma is dithered by less than a level.
  void Apply(const ColourRow& first, const ColourRow& second, int row, const PlanarPicture& target);

 private:
  using Vector = float __attribute__((vector_size(16)));
  /// Luma and both chroma samples on the scale of eight bits; the last is unused.
  struct Sample {
    Vector parts;
  };

  static constexpr int kRun = 64;  // pixels whose paths are found together, by vectors
  /// For each pixel the four nodes of the cube around its colour, as distances, and their weights.
  struct Paths {
    std::array<std::int32_t, kRun> corner, step1, step2;
    std::array<float, kRun> weight0, weight1, weight2, weight3;
  };

  static Sample SampleOf(const Colour& colour, const LumaWeights& weights);
  void FindPaths(const ColourRow& colours, int count, Paths& paths) const;
  void MapRow(const ColourRow& colours, int row, const PlanarPicture& target);
  void WriteChroma(int row, const PlanarPicture& target) const;

  VRXDynamicRange m_range = VRXDynamicRangeStandard;
  AVColorPrimaries m_primaries = AVCOL_PRI_UNSPECIFIED;
  AVColorSpace m_matrix = AVCOL_SPC_UNSPECIFIED;
  std::vector<std::int32_t> m_places;  // of each sample along an edge of the cube, with a fraction
  std::vector<Sample> m_cube;
  std::vector<Sample> m_sums;  // of two rows, column by column
};

}  // namespace vrx::engine
