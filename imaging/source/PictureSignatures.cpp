#include "imaging/source/PictureSignatures.h"

namespace vrx::imaging {

using namespace std::string_view_literals;

bool IsBmpStart(std::string_view start) noexcept { return start.starts_with("BM"sv); }

bool IsGifStart(std::string_view start) noexcept {
  return start.starts_with("GIF87a"sv) || start.starts_with("GIF89a"sv);
}

bool IsJpegStart(std::string_view start) noexcept { return start.starts_with("\xFF\xD8"sv); }

bool IsPngStart(std::string_view start) noexcept { return start.starts_with("\x89PNG\r\n\x1A\n"sv); }

bool IsTiffStart(std::string_view start) noexcept {
  return start.starts_with("II*\0"sv) || start.starts_with("MM\0*"sv);
}

bool IsBigTiffStart(std::string_view start) noexcept {
  return start.starts_with("II+\0"sv) || start.starts_with("MM\0+"sv);
}

}  // namespace vrx::imaging
