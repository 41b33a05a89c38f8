// Numbers of generated logs as text, the same in every locale.
#pragma once

#include <cstdint>
#include <string>

namespace vrx::test_support {

/// With zeros in front to `width` characters.
std::string Padded(std::int64_t value, int width);
/// With `decimals` digits after the point; zeros in front to `width` characters in all.
std::string PaddedReal(double value, int decimals, int width);

}  // namespace vrx::test_support
