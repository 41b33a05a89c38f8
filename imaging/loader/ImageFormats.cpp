#include "imaging/loader/ImageFormats.h"

#include <algorithm>
#include <iterator>

namespace vrx::imaging {
namespace {

using namespace std::string_view_literals;

// Signatures as the formats' standards give them.
bool IsBmp(std::string_view start) { return start.starts_with("BM"sv); }
bool IsGif(std::string_view start) { return start.starts_with("GIF87a"sv) || start.starts_with("GIF89a"sv); }
/// Only the start marker: the next one may come after stray bytes.
bool IsJpeg(std::string_view start) { return start.starts_with("\xFF\xD8"sv); }
bool IsPng(std::string_view start) { return start.starts_with("\x89PNG\r\n\x1A\n"sv); }
/// TIFF 6.0 in both byte orders, and with 64-bit offsets.
bool IsTiff(std::string_view start) {
  return start.starts_with("II*\0"sv) || start.starts_with("MM\0*"sv) || start.starts_with("II+\0"sv) ||
         start.starts_with("MM\0+"sv);
}

constexpr ImageFormat kFormats[] = {
    {"BMP", IsBmp, ReadBmp}, {"GIF", IsGif, ReadGif},    {"JPEG", IsJpeg, ReadJpeg},
    {"PNG", IsPng, ReadPng}, {"TIFF", IsTiff, ReadTiff},
};

}  // namespace

std::span<const ImageFormat> ImageFormats() noexcept { return kFormats; }

const ImageFormat* FindImageFormat(std::string_view start) noexcept {
  const auto* found =
      std::ranges::find_if(kFormats, [start](const ImageFormat& format) { return format.isStartOf(start); });
  return found == std::end(kFormats) ? nullptr : found;
}

}  // namespace vrx::imaging
