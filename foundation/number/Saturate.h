// Conversion of computed numbers to integers that never leaves the integer's range. Used wherever times and
// sizes from documents become counts.
#pragma once

#include <cstdint>
#include <limits>

namespace vrx {

/// Truncates toward zero; values beyond the range become its limit, and NaN becomes 0.
template <class Integer>
constexpr Integer Saturate(double value) {
  using Limits = std::numeric_limits<Integer>;
  if (value != value) return 0;
  // The smallest integer is a double; the largest one of 64 bits is not, the one above it is.
  constexpr double kEnd = -static_cast<double>(Limits::min());
  if (value >= kEnd) return Limits::max();
  return value <= -kEnd ? Limits::min() : static_cast<Integer>(value);
}

/// Sums and differences that stay at the limit instead of overflowing.
constexpr std::int64_t SaturatedAdd(std::int64_t a, std::int64_t b) {
  using Limits = std::numeric_limits<std::int64_t>;
  std::int64_t sum = 0;
  if (!__builtin_add_overflow(a, b, &sum)) return sum;
  return a > 0 ? Limits::max() : Limits::min();
}
constexpr std::int64_t SaturatedSubtract(std::int64_t a, std::int64_t b) {
  using Limits = std::numeric_limits<std::int64_t>;
  std::int64_t difference = 0;
  if (!__builtin_sub_overflow(a, b, &difference)) return difference;
  return b < 0 ? Limits::max() : Limits::min();
}

}  // namespace vrx
