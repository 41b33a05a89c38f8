#include "foundation/time/DateTimeScanner.h"

#include <algorithm>
#include <limits>
#include <optional>

namespace vrx {
namespace {

bool IsBlank(char16_t c) { return c == u' ' || (c >= u'\t' && c <= u'\r'); }
bool IsDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

struct Conversion {
  bool drop = false;
  std::size_t width = std::u16string_view::npos;
  char16_t letter = 0;
};

/// A text and a position in it.
class Cursor {
 public:
  explicit Cursor(std::u16string_view text) : m_rest(text) {}

  bool IsAtEnd() const { return m_rest.empty(); }
  char16_t Take() {
    const char16_t c = m_rest.front();
    m_rest.remove_prefix(1);
    return c;
  }
  bool Skip(std::u16string_view expected) {
    if (!m_rest.starts_with(expected)) return false;
    m_rest.remove_prefix(expected.size());
    return true;
  }
  void SkipBlanks() {
    while (!m_rest.empty() && IsBlank(m_rest.front())) m_rest.remove_prefix(1);
  }

  /// What follows a %.
  Conversion TakeConversion() {
    Conversion c;
    c.drop = Skip(u"*");
    if (const auto width = TakeDigits(std::u16string_view::npos); width && *width > 0) {
      c.width = static_cast<std::size_t>(*width);
    }
    while (Skip(u"l") || Skip(u"h") || Skip(u"I64")) {
    }
    if (!IsAtEnd()) c.letter = Take();
    return c;
  }

  /// Nothing when there is no number within `width` characters.
  std::optional<std::int32_t> TakeNumber(std::size_t width) {
    SkipBlanks();
    const bool negative = width > 1 && Skip(u"-");
    if (negative || (width > 1 && Skip(u"+"))) --width;
    const auto magnitude = TakeDigits(width);
    if (!magnitude) return std::nullopt;
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(negative ? -*magnitude : *magnitude, Limits::min(), Limits::max()));
  }

 private:
  std::optional<std::int64_t> TakeDigits(std::size_t width) {
    constexpr std::int64_t kEnough = std::int64_t{1} << 32;  // above any limit of the result
    if (m_rest.empty() || !IsDigit(m_rest.front()) || width == 0) return std::nullopt;
    std::int64_t value = 0;
    for (; width > 0 && !m_rest.empty() && IsDigit(m_rest.front()); --width) {
      value = std::min(value * 10 + (Take() - u'0'), kEnough);
    }
    return value;
  }

  std::u16string_view m_rest;
};

bool IsIntegerLetter(char16_t letter) { return letter == u'd' || letter == u'i' || letter == u'u'; }

}  // namespace

std::size_t ScanIntegers(std::u16string_view text, std::u16string_view format,
                         std::span<std::int32_t> numbers) {
  Cursor input(text);
  Cursor pattern(format);
  std::size_t found = 0;
  while (!pattern.IsAtEnd()) {
    const char16_t c = pattern.Take();
    if (IsBlank(c)) {
      input.SkipBlanks();
      continue;
    }
    if (c != u'%' || pattern.Skip(u"%")) {
      if (!input.Skip({&c, 1})) break;
      continue;
    }
    const Conversion conversion = pattern.TakeConversion();
    if (!IsIntegerLetter(conversion.letter)) break;
    const auto number = input.TakeNumber(conversion.width);
    if (!number) break;
    if (conversion.drop) continue;
    if (found < numbers.size()) numbers[found] = *number;
    ++found;
  }
  return found;
}

}  // namespace vrx
