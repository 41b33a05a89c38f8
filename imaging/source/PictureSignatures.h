// What files of the still-picture formats begin with, as the formats' standards give it. The loader and the
// table of codecs find a format by them.
#pragma once

#include <cstddef>
#include <string_view>

namespace vrx::imaging {

/// A format is known by so many of the first bytes of a file. The functions take no fewer, unless the file is
/// shorter.
inline constexpr std::size_t kSignatureBytes = 16;

bool IsBmpStart(std::string_view start) noexcept;
bool IsGifStart(std::string_view start) noexcept;
/// Only the start marker: the next one may come after stray bytes.
bool IsJpegStart(std::string_view start) noexcept;
bool IsPngStart(std::string_view start) noexcept;
/// TIFF 6.0 in both byte orders.
bool IsTiffStart(std::string_view start) noexcept;
/// The same with 64-bit offsets.
bool IsBigTiffStart(std::string_view start) noexcept;

}  // namespace vrx::imaging
