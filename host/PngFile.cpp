#include "host/PngFile.h"

#include <cstdio>
#include <vector>

#include <png.h>

namespace vrx::host {
namespace {

/// The simplified interface of libpng takes opaque pictures as three bytes a pixel.
std::vector<png_byte> WithoutAlpha(std::span<const std::uint32_t> pixels) {
  std::vector<png_byte> bytes;
  bytes.reserve(pixels.size() * 3);
  for (const std::uint32_t pixel : pixels) {
    for (const int shift : {0, 8, 16}) bytes.push_back(static_cast<png_byte>(pixel >> shift));
  }
  return bytes;
}

}  // namespace

bool WritePng(const std::string& path, const BgraPicture& picture, bool alpha, std::string& cause) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = picture.width;
  image.height = picture.height;
  image.format = alpha ? PNG_FORMAT_BGRA : PNG_FORMAT_BGR;
  const std::vector<png_byte> opaque = alpha ? std::vector<png_byte>() : WithoutAlpha(picture.pixels);
  const void* bytes = alpha ? static_cast<const void*>(picture.pixels.data()) : opaque.data();
  const std::string beside = path + ".new";
  constexpr int kKeepAllBits = 0;
  constexpr int kPackedRows = 0;
  bool written =
      png_image_write_to_file(&image, beside.c_str(), kKeepAllBits, bytes, kPackedRows, nullptr) != 0;
  if (!written) cause = image.message;
  if (written && std::rename(beside.c_str(), path.c_str()) != 0) {
    written = false;
    cause = "it cannot take its name";
  }
  if (!written) std::remove(beside.c_str());
  return written;
}

}  // namespace vrx::host
