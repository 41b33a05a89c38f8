#include "engine/MatrixConversion.h"

#include <algorithm>
#include <cmath>

#include "engine/ColourCoefficients.h"

// Source and target are the same row or do not overlap. Compilers vectorise the loops below only when told
// so.
#ifdef __clang__
#define VRX_NO_OVERLAP _Pragma("clang loop vectorize(assume_safety)")
#else
#define VRX_NO_OVERLAP _Pragma("GCC ivdep")
#endif

namespace vrx::engine {
namespace {

constexpr int kWeightBits = 14;  // after the point; no weight reaches 2
constexpr int kTermBits = 6;     // a luma sample and its term stay within sixteen bits
constexpr double kLumaSteps = 219, kChromaSteps = 224, kFullSteps = 255;

// From a full-range sample, shifted up to fill sixteen bits, to the scale of the terms; times 2^16.
constexpr int kSampleShift = 7;
constexpr auto kFullGain =
    static_cast<std::uint16_t>(kLumaSteps / kFullSteps * (1 << (16 + kTermBits - kSampleShift)) + 0.5);

std::int16_t Weight(double value) {
  return static_cast<std::int16_t>(std::lround(value * (1 << kWeightBits)));
}

std::uint8_t ToByte(int value) { return static_cast<std::uint8_t>(std::clamp(value, 0, 255)); }

}  // namespace

void MatrixConversion::Prepare(const PictureColour& from, AVColorSpace to) {
  m_fullRange = from.fullRange;
  const LumaWeights in = WeightsOf(from.matrix), out = WeightsOf(to);
  const double inGreen = 1 - in.red - in.blue, outGreen = 1 - out.red - out.blue;
  // Blue and red are luma plus 2 (1 - weight) times their colour difference, and green follows from the luma.
  const double blueOfU = 2 * (1 - in.blue), redOfV = 2 * (1 - in.red);
  const double lumaOfU = blueOfU * (out.blue - outGreen * in.blue / inGreen);
  const double lumaOfV = redOfV * (out.red - outGreen * in.red / inGreen);
  const double uScale = 1 / (2 * (1 - out.blue)), vScale = 1 / (2 * (1 - out.red));

  const double inSteps = m_fullRange ? kFullSteps : kChromaSteps;
  const double chroma = kChromaSteps / inSteps;
  m_lumaOfU = Weight(lumaOfU * kLumaSteps / inSteps);
  m_lumaOfV = Weight(lumaOfV * kLumaSteps / inSteps);
  m_uOfU = Weight((blueOfU - lumaOfU) * uScale * chroma);
  m_uOfV = Weight(-lumaOfV * uScale * chroma);
  m_vOfU = Weight(-lumaOfU * vScale * chroma);
  m_vOfV = Weight((redOfV - lumaOfV) * vScale * chroma);
}

void MatrixConversion::Apply(const PlanarPicture& source, const PlanarPicture& target) {
  m_terms.resize(static_cast<std::size_t>(source.width + 1));
  for (int row = 0; row < source.height; row += 2) {
    ConvertChroma(source, target, row / 2);
    for (int y = row; y < std::min(row + 2, source.height); ++y) {
      ConvertLuma(source.y + y * source.lumaStride, target.y + y * target.lumaStride, source.width);
    }
  }
}

/// Fills m_terms for the two rows of luma as well.
void MatrixConversion::ConvertChroma(const PlanarPicture& source, const PlanarPicture& target, int row) {
  constexpr int kShift = kWeightBits - kTermBits;
  constexpr int kBias = (kNeutral << kWeightBits) + (1 << (kWeightBits - 1));
  // A limited-range sample includes the floor already. For full range the product in ConvertLuma is rounded
  // down, so that half a unit is added here.
  const int floor = (m_fullRange ? kLumaFloor << kTermBits : 0) + (1 << (kTermBits - 1));
  const int termBias = (floor << kShift) + (m_fullRange ? 1 << kShift : 1 << (kShift - 1));
  const std::uint8_t* u = source.u + row * source.chromaStride;
  const std::uint8_t* v = source.v + row * source.chromaStride;
  std::uint8_t* outU = target.u + row * target.chromaStride;
  std::uint8_t* outV = target.v + row * target.chromaStride;
  std::int16_t* terms = m_terms.data();
  const std::int16_t lumaOfU = m_lumaOfU, lumaOfV = m_lumaOfV, uOfU = m_uOfU, uOfV = m_uOfV, vOfU = m_vOfU,
                     vOfV = m_vOfV;
  const int width = (source.width + 1) / 2;
  VRX_NO_OVERLAP
  for (int x = 0; x < width; ++x) {
    const auto cb = static_cast<std::int16_t>(u[x] - kNeutral),
               cr = static_cast<std::int16_t>(v[x] - kNeutral);
    const auto term = static_cast<std::int16_t>((lumaOfU * cb + lumaOfV * cr + termBias) >> kShift);
    terms[2 * x] = term;
    terms[2 * x + 1] = term;
    outU[x] = ToByte((uOfU * cb + uOfV * cr + kBias) >> kWeightBits);
    outV[x] = ToByte((vOfU * cb + vOfV * cr + kBias) >> kWeightBits);
  }
}

void MatrixConversion::ConvertLuma(const std::uint8_t* source, std::uint8_t* target, int width) const {
  const std::int16_t* terms = m_terms.data();
  if (m_fullRange) {
    VRX_NO_OVERLAP
    for (int x = 0; x < width; ++x) {
      const auto sample = static_cast<std::uint16_t>(source[x] << kSampleShift);
      const auto luma = static_cast<std::int16_t>((std::uint32_t{sample} * kFullGain) >> 16);
      target[x] = ToByte(static_cast<std::int16_t>(luma + terms[x]) >> kTermBits);
    }
  } else {
    VRX_NO_OVERLAP
    for (int x = 0; x < width; ++x) {
      const auto luma = static_cast<std::int16_t>(source[x] << kTermBits);
      target[x] = ToByte(static_cast<std::int16_t>(luma + terms[x]) >> kTermBits);
    }
  }
}

}  // namespace vrx::engine
