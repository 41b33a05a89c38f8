// Numbers in property-list documents, the same in every locale. A text without a number is read as 0; what
// follows a number is ignored.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "foundation/time/XpDateTime.h"

namespace vrx::plist {

/// Leading blanks, a sign, digits. A value beyond 64 bits becomes the limit.
std::int64_t ParseInteger(std::u16string_view text);

/// Leading blanks, a sign, digits with a decimal point or comma, an exponent. Beyond the range of a double
/// the value is 0; neither infinities nor NaN can be read.
double ParseReal(std::u16string_view text);

/// True when the whole text is a number that ParseReal reads; blanks around it are allowed.
bool IsReal(std::u16string_view text);

/// True when the whole text is decimal digits with an optional sign, blanks around it allowed.
bool IsInteger(std::u16string_view text);

/// "2018:01:01T12:00:05Z": six runs of digits, divided by exactly one character of any kind. Fewer runs, or a
/// year below 100, give an invalid date.
XpDateTime ParseDate(std::u16string_view text);

std::string FormatReal(double value);  // "%.15f"; what is not finite is written as 0
/// The form of ParseDate; empty for a date that is not valid, which reads back as not valid.
std::string FormatDate(const XpDateTime& date);

}  // namespace vrx::plist
