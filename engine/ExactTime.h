// Times as exact fractions. Frame numbers and time stamps are compared without rounding, so that frame n of a
// film rate is never off by one. Used by the plans and by the choice of source frames.
#pragma once

#include <cstdint>

namespace vrx::engine {

__extension__ using Int128 = __int128;

/// Every numerator and denominator of a time base stays at or below this, so that a product of a 63-bit time
/// with two of them fits into 128 bits.
inline constexpr std::int64_t kMaxTimeScale = 0x7FFFFFFF;

/// Rounds towards minus infinity; `divisor` is positive.
constexpr Int128 FloorDivide(Int128 value, Int128 divisor) {
  const Int128 quotient = value / divisor;
  return value % divisor < 0 ? quotient - 1 : quotient;
}

constexpr Int128 CeilDivide(Int128 value, Int128 divisor) { return -FloorDivide(-value, divisor); }

/// Rounds to the nearest, halves up.
constexpr Int128 RoundDivide(Int128 value, Int128 divisor) {
  return FloorDivide(value + divisor / 2, divisor);
}

/// A length of time in seconds, `value` / `scale`; both positive.
struct FrameDuration {
  std::int64_t value;
  std::int64_t scale;
};

/// A moment `numerator` / `denominator` seconds after the beginning of a source; `denominator` is positive.
struct ExactTime {
  Int128 numerator;
  Int128 denominator;
};

}  // namespace vrx::engine
