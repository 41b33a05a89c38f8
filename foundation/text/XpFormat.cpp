#include "foundation/text/XpFormat.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <charconv>
#include <cmath>
#include <memory_resource>
#include <new>
#include <optional>
#include <utility>

namespace vrx::text {
namespace {

constexpr int kWidthLimit = 512;
constexpr int kTextLimit = 1'000'000'000;  // a precision of text needs no memory
constexpr std::size_t kStackCharacters = 256;

/// One conversion of a format, as it is written between the % and its letter.
struct Conversion {
  bool left = false;
  bool zeros = false;
  bool plus = false;
  bool blank = false;
  bool alternate = false;
  bool wide = false;  // l, ll or I64: the argument may have 64 bits
  int width = 0;
  std::optional<int> precision;
  char letter = 0;  // 0: not a conversion
};

template <class Ch>
class FormatScanner {
 public:
  explicit FormatScanner(std::basic_string_view<Ch> rest) : m_rest(rest) {}

  /// Reads what follows a %, up to and including the letter.
  Conversion Read() {
    Conversion c;
    while (ReadFlag(c)) {
    }
    c.width = ReadNumber(kWidthLimit);
    if (Skip('.')) c.precision = ReadNumber(kTextLimit);
    ReadSize(c);
    if (!m_rest.empty()) {
      c.letter = m_rest.front() < 0x80 ? static_cast<char>(m_rest.front()) : '\0';
      m_rest.remove_prefix(1);
    }
    if (c.precision && c.letter != 's') c.precision = std::min(*c.precision, kWidthLimit);
    return c;
  }
  std::basic_string_view<Ch> Rest() const { return m_rest; }

 private:
  bool Skip(char expected) {
    if (m_rest.empty() || m_rest.front() != static_cast<Ch>(expected)) return false;
    m_rest.remove_prefix(1);
    return true;
  }
  bool ReadFlag(Conversion& c) {
    if (Skip('-')) return c.left = true;
    if (Skip('0')) return c.zeros = true;
    if (Skip('+')) return c.plus = true;
    if (Skip(' ')) return c.blank = true;
    if (Skip('#')) return c.alternate = true;
    return false;
  }
  int ReadNumber(int limit) {
    std::int64_t number = 0;
    while (!m_rest.empty() && m_rest.front() >= '0' && m_rest.front() <= '9') {
      number = std::min<std::int64_t>(number * 10 + (m_rest.front() - '0'), limit);
      m_rest.remove_prefix(1);
    }
    return static_cast<int>(number);
  }
  void ReadSize(Conversion& c) {
    while (Skip('l')) c.wide = true;
    if (m_rest.size() >= 3 && m_rest[0] == 'I' && m_rest[1] == '6' && m_rest[2] == '4') {
      m_rest.remove_prefix(3);
      c.wide = true;
    }
    while (Skip('h')) {
    }
  }

  std::basic_string_view<Ch> m_rest;
};

/// A sign and digits, separate so that zeros can be put between them.
struct Number {
  std::string_view sign;
  std::string_view digits;
};

template <class Ch>
class Formatter {
 public:
  using Buffer = std::pmr::basic_string<Ch>;

  Formatter(Buffer& out, std::span<const FormatArgument> arguments) : m_out(out), m_arguments(arguments) {}

  void Run(std::basic_string_view<Ch> format) {
    while (!format.empty()) {
      const auto percent = std::min(format.find(static_cast<Ch>('%')), format.size());
      m_out.append(format.substr(0, percent));
      format.remove_prefix(percent);
      if (format.empty()) return;
      FormatScanner<Ch> scanner(format.substr(1));
      const Conversion conversion = scanner.Read();
      if (!Convert(conversion)) {
        assert(!"a format conversion does not fit its argument");
        PutAscii("<");
        m_out.append(format.substr(0, format.size() - scanner.Rest().size()));
        PutAscii("?>");
      }
      format = scanner.Rest();
    }
  }

 private:
  bool Convert(const Conversion& c) {
    if (c.letter == '%') {
      PutAscii("%");
      return true;
    }
    if (m_arguments.empty()) return false;
    const FormatArgument& argument = m_arguments.front();
    m_arguments = m_arguments.subspan(1);
    switch (c.letter) {
      case 'd':
      case 'i':
      case 'u':
      case 'x':
      case 'X':
        return PutInteger(c, argument);
      case 'f':
      case 'e':
      case 'g':
        return PutReal(c, argument);
      case 's':
        return PutText(c, argument);
      case 'c':
        return PutCharacter(c, argument);
      case 'p':
        return PutPointer(c, argument);
      default:
        return false;
    }
  }

  bool PutInteger(const Conversion& c, const FormatArgument& argument) {
    using Kind = FormatArgument::Kind;
    if (argument.kind != Kind::Signed && argument.kind != Kind::Unsigned) return false;
    if (argument.width > 4 && !c.wide) return false;
    // As in C, the letter decides about the sign; a narrow argument wraps at its own width.
    const bool asSigned = c.letter == 'd' || c.letter == 'i';
    std::uint64_t bits = argument.bits;
    if (argument.width <= 4) {
      const auto low = static_cast<std::uint32_t>(bits);
      bits = asSigned ? static_cast<std::uint64_t>(std::int64_t{static_cast<std::int32_t>(low)}) : low;
    }
    const bool negative = asSigned && static_cast<std::int64_t>(bits) < 0;
    const std::uint64_t magnitude = negative ? 0 - bits : bits;
    const bool hexadecimal = c.letter == 'x' || c.letter == 'X';
    std::array<char, 24> digits;
    char* end = std::to_chars(digits.begin(), digits.end(), magnitude, hexadecimal ? 16 : 10).ptr;
    if (c.letter == 'X') std::transform(digits.begin(), end, digits.begin(), UpperHex);
    std::string_view sign = negative ? "-" : asSigned && c.plus ? "+" : asSigned && c.blank ? " " : "";
    if (hexadecimal && c.alternate && magnitude != 0) sign = c.letter == 'x' ? "0x" : "0X";
    if (magnitude == 0 && c.precision == 0) end = digits.begin();  // as in C, no digit at all
    Conversion padded = c;
    if (c.precision) padded.zeros = false;
    PutNumber(padded, {sign, {digits.begin(), end}}, c.precision.value_or(1));
    return true;
  }

  bool PutReal(const Conversion& c, const FormatArgument& argument) {
    if (argument.kind != FormatArgument::Kind::Real) return false;
    const auto style = c.letter == 'f'   ? std::chars_format::fixed
                       : c.letter == 'e' ? std::chars_format::scientific
                                         : std::chars_format::general;
    std::array<char, 512 + kWidthLimit> digits;  // the longest double has 309 digits before its point
    const bool negative = std::signbit(argument.real);
    const auto [end, error] =
        std::to_chars(digits.begin(), digits.end(), std::fabs(argument.real), style, c.precision.value_or(6));
    if (error != std::errc()) return false;
    const std::string_view sign = negative ? "-" : c.plus ? "+" : c.blank ? " " : "";
    Conversion padded = c;
    if (!std::isfinite(argument.real)) padded.zeros = false;
    PutNumber(padded, {sign, {digits.begin(), end}}, 0);
    return true;
  }

  bool PutText(const Conversion& c, const FormatArgument& argument) {
    if (argument.kind != FormatArgument::Kind::Text && argument.kind != FormatArgument::Kind::NarrowText) {
      return false;
    }
    if constexpr (std::is_same_v<Ch, char16_t>) {
      if (argument.kind == FormatArgument::Kind::Text) {
        PutPadded(c, argument.text);
      } else {
        PutPadded(c, std::u16string_view(textcodec::ToUtf16(argument.narrowText)));
      }
    } else {
      if (argument.kind == FormatArgument::Kind::NarrowText) {
        PutPadded(c, argument.narrowText);
      } else {
        PutPadded(c, std::string_view(textcodec::ToUtf8(argument.text)));
      }
    }
    return true;
  }

  bool PutCharacter(const Conversion& c, const FormatArgument& argument) {
    using Kind = FormatArgument::Kind;
    if (argument.kind != Kind::Character && argument.kind != Kind::Signed &&
        argument.kind != Kind::Unsigned) {
      return false;
    }
    Conversion padded = c;
    padded.precision.reset();
    const std::uint64_t code = argument.bits;
    const auto character = static_cast<Ch>(code);
    if constexpr (std::is_same_v<Ch, char>) {
      // A 16-bit character may become several bytes; a single byte is written unchanged.
      if (argument.kind == Kind::Character && argument.width > 1) {
        const auto unit = static_cast<char16_t>(code);
        PutPadded(padded, std::string_view(textcodec::ToUtf8({&unit, 1})));
        return true;
      }
    }
    PutPadded(padded, std::basic_string_view<Ch>(&character, 1));
    return true;
  }

  bool PutPointer(const Conversion& c, const FormatArgument& argument) {
    if (argument.kind != FormatArgument::Kind::Pointer) return false;
    std::array<char, 2 * sizeof(void*)> digits;
    const auto address = reinterpret_cast<std::uintptr_t>(argument.pointer);
    char* end = std::to_chars(digits.begin(), digits.end(), address, 16).ptr;
    std::transform(digits.begin(), end, digits.begin(), UpperHex);
    Conversion padded = c;
    padded.zeros = false;
    PutNumber(padded, {"", {digits.begin(), end}}, static_cast<int>(digits.size()));
    return true;
  }

  static char UpperHex(char digit) { return digit >= 'a' ? static_cast<char>(digit - 'a' + 'A') : digit; }

  void PutNumber(const Conversion& c, const Number& number, int leastDigits) {
    const int digits = static_cast<int>(number.digits.size());
    int zeros = std::max(leastDigits - digits, 0);
    const int written = static_cast<int>(number.sign.size()) + digits + zeros;
    int padding = std::max(c.width - written, 0);
    if (c.zeros && !c.left) zeros += std::exchange(padding, 0);
    if (!c.left) PutBlanks(padding);
    PutAscii(number.sign);
    m_out.append(static_cast<std::size_t>(zeros), static_cast<Ch>('0'));
    PutAscii(number.digits);
    if (c.left) PutBlanks(padding);
  }

  void PutPadded(const Conversion& c, std::basic_string_view<Ch> text) {
    if (c.precision) text = text.substr(0, static_cast<std::size_t>(*c.precision));
    const int padding = c.width > static_cast<int>(text.size()) ? c.width - static_cast<int>(text.size()) : 0;
    if (!c.left) PutBlanks(padding);
    m_out.append(text);
    if (c.left) PutBlanks(padding);
  }

  void PutBlanks(int count) { m_out.append(static_cast<std::size_t>(count), static_cast<Ch>(' ')); }
  void PutAscii(std::string_view text) { m_out.append(text.begin(), text.end()); }

  Buffer& m_out;
  std::span<const FormatArgument> m_arguments;
};

template <class Ch>
bool AppendTo(XpBasicString<Ch>& result, std::basic_string_view<Ch> format,
              std::span<const FormatArgument> arguments) {
  // Usual lines need no heap.
  std::array<Ch, 2 * kStackCharacters> stack;
  std::pmr::monotonic_buffer_resource memory(stack.data(), sizeof(stack));
  try {
    std::pmr::basic_string<Ch> buffer(&memory);
    buffer.reserve(kStackCharacters - 1);
    Formatter<Ch>(buffer, arguments).Run(format);
    result.Append(std::basic_string_view<Ch>(buffer));
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

}  // namespace

bool AppendFormatted(XpString& result, std::u16string_view format,
                     std::span<const FormatArgument> arguments) {
  return AppendTo(result, format, arguments);
}

bool AppendFormatted(XpNarrowString& result, std::string_view format,
                     std::span<const FormatArgument> arguments) {
  return AppendTo(result, format, arguments);
}

}  // namespace vrx::text
