// The numbers of ITU-R BT.601 and BT.709 for limited range, as whole numbers. Used by the conversion between
// 4:2:0 pictures and packed pixels, in its plain and in its wide form.
#pragma once

#include <cstdint>

namespace vrx::engine {

enum class OutputMatrix;

/// From colours to samples, times 2^kFraction.
struct Coefficients {
  std::int16_t yr, yg, yb, ur, ug, ub, vr, vg, vb;
};

inline constexpr int kFraction = 15;  // bits after the point; all coefficients fit into sixteen bits
inline constexpr int kQuad = 2;       // bits: a chroma sample sums four pixels
inline constexpr int kLumaFloor = 16;
inline constexpr int kNeutral = 128;
inline constexpr std::uint32_t kColourMask = 0x00FFFFFF;  // of a pixel, whose fourth byte carries no colour
/// What is added before the fraction is cut off: the sample of black, and a half to round.
inline constexpr int kLumaBias = (kLumaFloor << kFraction) + (1 << (kFraction - 1));
inline constexpr int kChromaBias = (kNeutral << (kFraction + kQuad)) + (1 << (kFraction + kQuad - 1));

const Coefficients& CoefficientsOf(OutputMatrix matrix);

/// From samples to colours with sixteen bits. A sample is multiplied by kLumaGain or kChromaGain and by its
/// coefficient; the product, rounded and shifted right by kProductShift, is a colour times
/// 2^kInverseFraction.
struct InverseCoefficients {
  std::int16_t y, rv, gu, gv, bu;
};

inline constexpr int kInverseFraction = 5;  // so that a sum of three terms fits into 16 bits
inline constexpr int kLumaGain = 1 << 7;    // a luma sample less its floor has eight bits
inline constexpr int kChromaGain = 1 << 8;  // a chroma sample less its bias has seven bits and a sign
inline constexpr int kProductShift = 15;

const InverseCoefficients& InverseOf(OutputMatrix matrix);

}  // namespace vrx::engine
