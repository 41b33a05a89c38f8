#include "content/plist/PlistNumbers.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>

#include "foundation/text/XpFormat.h"

namespace vrx::plist {
namespace {

bool IsBlank(char16_t c) { return c == u' ' || (c >= u'\t' && c <= u'\r'); }
bool IsDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

std::u16string_view SkipBlanks(std::u16string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  return text;
}

bool TakeSign(std::u16string_view& text) {
  if (text.empty() || (text.front() != u'-' && text.front() != u'+')) return false;
  const bool negative = text.front() == u'-';
  text.remove_prefix(1);
  return negative;
}

/// Takes blanks and a number off the front; false when there is none in the range of a double.
bool TakeReal(std::u16string_view& text, double& value) {
  text = SkipBlanks(text);
  const bool negative = TakeSign(text);
  if (text.empty() || !(IsDigit(text.front()) || text.front() == u'.' || text.front() == u',')) return false;
  std::string digits;
  for (const char16_t c : text) {
    if (c >= 0x80) break;
    digits.push_back(c == u',' ? '.' : static_cast<char>(c));
  }
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  if (error != std::errc()) return false;
  text.remove_prefix(static_cast<std::size_t>(end - digits.data()));
  if (negative) value = -value;
  return true;
}

}  // namespace

std::int64_t ParseInteger(std::u16string_view text) {
  using Limits = std::numeric_limits<std::int64_t>;
  text = SkipBlanks(text);
  const bool negative = TakeSign(text);
  std::int64_t value = 0;  // counted down, since the negative range is larger
  for (; !text.empty() && IsDigit(text.front()); text.remove_prefix(1)) {
    const int digit = text.front() - u'0';
    if (value < (Limits::min() + digit) / 10) return negative ? Limits::min() : Limits::max();
    value = value * 10 - digit;
  }
  if (negative) return value;
  return value == Limits::min() ? Limits::max() : -value;
}

double ParseReal(std::u16string_view text) {
  double value = 0.0;
  return TakeReal(text, value) ? value : 0.0;
}

bool IsReal(std::u16string_view text) {
  double value = 0.0;
  return TakeReal(text, value) && SkipBlanks(text).empty();
}

bool IsInteger(std::u16string_view text) {
  text = SkipBlanks(text);
  TakeSign(text);
  if (text.empty() || !IsDigit(text.front())) return false;
  while (!text.empty() && IsDigit(text.front())) text.remove_prefix(1);
  return SkipBlanks(text).empty();
}

XpDateTime ParseDate(std::u16string_view text) {
  constexpr std::int64_t kFieldLimit = 99'999;
  std::array<std::int32_t, 6> fields{};
  text = SkipBlanks(text);
  for (std::size_t i = 0; i < fields.size(); ++i) {
    if (i > 0 && !text.empty()) text.remove_prefix(1);
    if (text.empty() || !IsDigit(text.front())) return XpDateTime();
    std::int64_t value = 0;
    for (; !text.empty() && IsDigit(text.front()); text.remove_prefix(1)) {
      value = std::min(value * 10 + (text.front() - u'0'), kFieldLimit);
    }
    fields[i] = static_cast<std::int32_t>(value);
  }
  XpDateTime date;
  date.SetDateTime(fields[0], fields[1], fields[2], fields[3], fields[4], fields[5]);
  return date;
}

std::string FormatReal(double value) {
  XpNarrowString text;
  XpFormat(text, "%.15f", std::isfinite(value) ? value : 0.0);
  return text.c_str();
}

std::string FormatDate(const XpDateTime& date) {
  std::int32_t year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0, weekday = 0;
  const bool hasFields = date.GetDateTimeFields(year, month, day, hour, minute, second, weekday);
  if (!date.IsValid() || !hasFields) return "";
  XpNarrowString text;
  XpFormat(text, "%04ld:%02ld:%02ldT%02ld:%02ld:%02ldZ", year, month, day, hour, minute, second);
  return text.c_str();
}

}  // namespace vrx::plist
