// How a text is laid into a rectangle: the format bits that the painters combine.
#pragma once

#include <cstdint>

namespace vrx::drawing {

inline constexpr std::uint32_t DT_TOP = 0x0000;
inline constexpr std::uint32_t DT_LEFT = 0x0000;
inline constexpr std::uint32_t DT_CENTER = 0x0001;
inline constexpr std::uint32_t DT_RIGHT = 0x0002;
inline constexpr std::uint32_t DT_VCENTER = 0x0004;     // of a single line only
inline constexpr std::uint32_t DT_BOTTOM = 0x0008;      // of a single line only
inline constexpr std::uint32_t DT_WORDBREAK = 0x0010;   // lines break at the rectangle's width
inline constexpr std::uint32_t DT_SINGLELINE = 0x0020;  // line breaks in the text count as blanks
inline constexpr std::uint32_t DT_NOCLIP = 0x0100;
inline constexpr std::uint32_t DT_CALCRECT = 0x0400;     // measure, draw nothing
inline constexpr std::uint32_t DT_NOPREFIX = 0x0800;     // '&' is a character, not a mark
inline constexpr std::uint32_t DT_EDITCONTROL = 0x2000;  // no partly visible last line; long words break

}  // namespace vrx::drawing
