#include "imaging/loader/ImageFormats.h"

#include <algorithm>
#include <iterator>

#include "imaging/source/PictureSignatures.h"

namespace vrx::imaging {
namespace {

bool IsAnyTiffStart(std::string_view start) { return IsTiffStart(start) || IsBigTiffStart(start); }

constexpr ImageFormat kFormats[] = {
    {"BMP", IsBmpStart, ReadBmp}, {"GIF", IsGifStart, ReadGif},       {"JPEG", IsJpegStart, ReadJpeg},
    {"PNG", IsPngStart, ReadPng}, {"TIFF", IsAnyTiffStart, ReadTiff},
};

}  // namespace

std::span<const ImageFormat> ImageFormats() noexcept { return kFormats; }

const ImageFormat* FindImageFormat(std::string_view start) noexcept {
  const auto* found =
      std::ranges::find_if(kFormats, [start](const ImageFormat& format) { return format.isStartOf(start); });
  return found == std::end(kFormats) ? nullptr : found;
}

}  // namespace vrx::imaging
