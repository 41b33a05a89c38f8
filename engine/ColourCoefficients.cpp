#include "engine/ColourCoefficients.h"

#include "engine/PictureColour.h"

namespace vrx::engine {
namespace {

constexpr double kLumaRange = 219.0 / 255;
constexpr double kChromaRange = 224.0 / 255;

constexpr std::int16_t Round(double value) {
  return static_cast<std::int16_t>(value < 0 ? value - 0.5 : value + 0.5);
}

constexpr Coefficients MakeCoefficients(LumaWeights weights) {
  const double kr = weights.red, kb = weights.blue;
  const double kg = 1 - kr - kb;
  const double luma = kLumaRange * (1 << kFraction);
  const double blue = kChromaRange * (1 << kFraction) / 2 / (1 - kb);
  const double red = kChromaRange * (1 << kFraction) / 2 / (1 - kr);
  Coefficients c{};
  c.yr = Round(luma * kr), c.yb = Round(luma * kb);
  c.yg = static_cast<std::int16_t>(Round(luma) - c.yr - c.yb);  // white stays exactly white
  c.ur = Round(-blue * kr), c.ug = Round(-blue * kg);
  c.ub = static_cast<std::int16_t>(-c.ur - c.ug);  // and grey exactly grey
  c.vg = Round(-red * kg), c.vb = Round(-red * kb);
  c.vr = static_cast<std::int16_t>(-c.vg - c.vb);
  return c;
}

constexpr InverseCoefficients MakeInverse(LumaWeights weights) {
  const double kr = weights.red, kb = weights.blue;
  const double kg = 1 - kr - kb;
  constexpr double kUnit = 1 << (kInverseFraction + kProductShift);
  const double luma = kUnit / kLumaRange / kLumaGain;
  const double chroma = kUnit / kChromaRange * 2 / kChromaGain;
  return {Round(luma), Round(chroma * (1 - kr)), Round(chroma * (1 - kb) * kb / kg),
          Round(chroma * (1 - kr) * kr / kg), Round(chroma * (1 - kb))};
}

struct Matrix {
  Coefficients forward;
  InverseCoefficients inverse;
};

constexpr Matrix kBt601{MakeCoefficients(kBt601Weights), MakeInverse(kBt601Weights)};
constexpr Matrix kBt709{MakeCoefficients(kBt709Weights), MakeInverse(kBt709Weights)};

const Matrix& MatrixOf(OutputMatrix matrix) { return matrix == OutputMatrix::Bt709 ? kBt709 : kBt601; }

}  // namespace

const Coefficients& CoefficientsOf(OutputMatrix matrix) { return MatrixOf(matrix).forward; }

const InverseCoefficients& InverseOf(OutputMatrix matrix) { return MatrixOf(matrix).inverse; }

}  // namespace vrx::engine
