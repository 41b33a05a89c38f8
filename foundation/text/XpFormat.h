// printf-like formatting for XpString and XpNarrowString, without printf's dangers: every argument is packed
// with its type, so a conversion never reads an argument of another type.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <type_traits>

#include "vrx/XpString.h"

namespace vrx::text {

/// One packed argument. Text is borrowed for the duration of the call.
struct FormatArgument {
  enum class Kind { Signed, Unsigned, Real, Character, Text, NarrowText, Pointer };

  Kind kind;
  int width = 0;           // bytes of an integer or character argument
  std::uint64_t bits = 0;  // of an integer, sign-extended, or of a character
  double real = 0.0;
  const void* pointer = nullptr;
  std::u16string_view text = {};
  std::string_view narrowText = {};
};

template <class T>
FormatArgument PackArgument(const T& value) {
  using Kind = FormatArgument::Kind;
  using Plain = std::decay_t<T>;
  if constexpr (std::is_same_v<Plain, XpString>) {
    return {.kind = Kind::Text, .text = value.AsView()};
  } else if constexpr (std::is_same_v<Plain, XpNarrowString>) {
    return {.kind = Kind::NarrowText, .narrowText = value.AsView()};
  } else if constexpr (std::is_convertible_v<const T&, std::u16string_view>) {
    if constexpr (std::is_pointer_v<T>) {
      if (value == nullptr) return {.kind = Kind::Text, .text = u"(null)"};
    }
    return {.kind = Kind::Text, .text = value};
  } else if constexpr (std::is_convertible_v<const T&, std::string_view>) {
    if constexpr (std::is_pointer_v<T>) {
      if (value == nullptr) return {.kind = Kind::NarrowText, .narrowText = "(null)"};
    }
    return {.kind = Kind::NarrowText, .narrowText = value};
  } else if constexpr (std::is_same_v<Plain, char> || std::is_same_v<Plain, char16_t>) {
    return {.kind = Kind::Character, .width = sizeof(value), .bits = static_cast<std::uint64_t>(value)};
  } else if constexpr (std::is_pointer_v<Plain>) {
    return {.kind = Kind::Pointer, .pointer = value};
  } else if constexpr (std::is_floating_point_v<Plain>) {
    return {.kind = Kind::Real, .real = static_cast<double>(value)};
  } else if constexpr (std::is_enum_v<Plain>) {
    return PackArgument(static_cast<std::underlying_type_t<Plain>>(value));
  } else if constexpr (std::is_signed_v<Plain>) {
    return {.kind = Kind::Signed,
            .width = sizeof(value),
            .bits = static_cast<std::uint64_t>(std::int64_t{value})};
  } else {
    static_assert(std::is_unsigned_v<Plain>, "no conversion takes an argument of this type");
    return {.kind = Kind::Unsigned, .width = sizeof(value), .bits = value};
  }
}

/// Appends the formatted text to `result`. Conversions: d i u x X (32-bit integers), the same with l, ll or
/// I64 (up to 64 bits), f lf e g (reals, with a decimal point in every locale), s (text of either width), c,
/// p (upper-case hexadecimal of the machine word) and %%; with the flags - 0 + blank #, width up to 512, and
/// precision, for numbers up to 512. A conversion that does not fit its argument, has none or is unknown
/// prints a marker such as
/// "<%d?>" and asserts in debug builds. False when memory fails; `result` is then as it was.
bool AppendFormatted(XpString& result, std::u16string_view format, std::span<const FormatArgument> arguments);
bool AppendFormatted(XpNarrowString& result, std::string_view format,
                     std::span<const FormatArgument> arguments);

}  // namespace vrx::text

/// Appends to `text` by the conversions of AppendFormatted. When memory fails, it stays as it was.
template <class Ch, class... Args>
void XpAppendFormat(XpBasicString<Ch>& text, const Ch* format, const Args&... args) {
  // One more than needed, since an array cannot be empty.
  const vrx::text::FormatArgument packed[] = {vrx::text::PackArgument(args)..., {}};
  vrx::text::AppendFormatted(text, format, std::span(packed, sizeof...(args)));
}

/// The same in place of the old content of `text`, which may be one of the arguments.
template <class Ch, class... Args>
void XpFormat(XpBasicString<Ch>& text, const Ch* format, const Args&... args) {
  const vrx::text::FormatArgument packed[] = {vrx::text::PackArgument(args)..., {}};
  XpBasicString<Ch> result;
  if (vrx::text::AppendFormatted(result, format, std::span(packed, sizeof...(args)))) text = result;
}
