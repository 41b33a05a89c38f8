#include "samples/logmaker/LogText.h"

#include <array>
#include <charconv>

namespace vrx::test_support {
namespace {

std::string WithZeros(const std::string& text, int width) {
  const auto wanted = static_cast<std::size_t>(width);
  return text.size() < wanted ? std::string(wanted - text.size(), '0') + text : text;
}

}  // namespace

std::string Padded(std::int64_t value, int width) { return WithZeros(std::to_string(value), width); }

std::string PaddedReal(double value, int decimals, int width) {
  std::array<char, 400> buffer;
  const auto end =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed, decimals);
  return WithZeros({buffer.data(), end.ptr}, width);
}

}  // namespace vrx::test_support
