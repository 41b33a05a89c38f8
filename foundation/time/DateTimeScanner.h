// Reads the numbers of a date out of text by a scanf-like format, without locale and without reading past
// either text. XpDateTime::ParseDateTime uses it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace vrx {

/// A format holds white space (any amount of it, or none), literal characters, %% and the conversions d, i
/// and u, each decimal, with an optional * (read and drop), width and size (h, l, ll, I64). Numbers beyond 32
/// bits stop at the limits. Returns how many conversions were read; those beyond the size of `numbers` are
/// counted but not kept. Text after the end of the format is ignored; an unknown conversion ends the scan.
std::size_t ScanIntegers(std::u16string_view text, std::u16string_view format,
                         std::span<std::int32_t> numbers);

}  // namespace vrx
