// What all text renderers share: cleaning a text before it is laid out, and placing its lines in the
// rectangle.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "drawing/Geometry.h"

namespace vrx::drawing {

/// At most `limit` code units of `text`, never cutting a character in two.
std::u16string_view CutText(std::u16string_view text, std::size_t limit);

/// How many code units are laid out at an em size, so that no line grows beyond what layout can count.
std::size_t TextLimit(double emPixels);

/// The text as it is laid out: line breaks are "\n" (blanks in a single line), one at the end is dropped,
/// other control characters are blanks, lone surrogates are U+FFFD, and of a pile of combining marks the
/// first 30 stay (the stream-safe form of UAX #15; shaping takes quadratic time on more). Without
/// DT_NOPREFIX, '&' is dropped and "&&" is one '&'; the character after the mark is not underlined.
std::u16string CleanText(std::u16string_view text, std::uint32_t format);

/// Where lines go, for lines stacked from the top.
struct LinePlacement {
  std::int64_t top = 0;       // of the first line
  std::size_t lineCount = 0;  // lines that are drawn
};
LinePlacement PlaceLines(std::span<const Size> lines, const Rect& rect, std::uint32_t format);

/// How far a line of this width lies right of the rectangle's left edge; negative when it overflows there.
std::int64_t LineOffset(std::int64_t lineWidth, std::int64_t rectWidth, std::uint32_t format);

Size SizeOfLines(std::span<const Size> lines);

}  // namespace vrx::drawing
