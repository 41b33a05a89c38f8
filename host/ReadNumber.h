// Reads a text that is one number and nothing else. The options of the command line use it.
#pragma once

#include <charconv>
#include <string_view>
#include <system_error>

namespace vrx::host {

/// `format` may be a std::chars_format for real numbers. False where anything is left over, or the number
/// does not fit.
template <class Number, class... Format>
bool ReadNumber(std::string_view text, Number& number, Format... format) {
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number, format...);
  return result.ec == std::errc() && result.ptr == end;
}

}  // namespace vrx::host
