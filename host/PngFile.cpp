#include "host/PngFile.h"

#include <cstddef>
#include <vector>

#include <png.h>

#include "foundation/file/XpReplaceFile.h"
#include "host/FileCauses.h"

namespace vrx::host {
namespace {

/// For opaque pictures the simplified interface of libpng wants three bytes a pixel.
std::vector<png_byte> WithoutAlpha(std::span<const std::uint32_t> pixels) {
  std::vector<png_byte> bytes;
  bytes.reserve(pixels.size() * 3);
  for (const std::uint32_t pixel : pixels) {
    for (const int shift : {0, 8, 16}) bytes.push_back(static_cast<png_byte>(pixel >> shift));
  }
  return bytes;
}

/// Empty, with the cause, on failure.
std::vector<std::byte> Encode(const BgraPicture& picture, bool alpha, std::string& cause) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = picture.width;
  image.height = picture.height;
  image.format = alpha ? PNG_FORMAT_BGRA : PNG_FORMAT_BGR;
  const std::vector<png_byte> opaque = alpha ? std::vector<png_byte>() : WithoutAlpha(picture.pixels);
  const void* pixels = alpha ? static_cast<const void*>(picture.pixels.data()) : opaque.data();
  constexpr int kKeepAllBits = 0;
  constexpr int kPackedRows = 0;
  png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
  std::vector<std::byte> file(size);
  const int written =
      png_image_write_to_memory(&image, file.data(), &size, kKeepAllBits, pixels, kPackedRows, nullptr);
  if (written == 0) cause = image.message;
  file.resize(written == 0 ? 0 : size);
  return file;
}

}  // namespace

bool WritePng(const XpString& path, const BgraPicture& picture, bool alpha, std::string& cause) {
  const std::vector<std::byte> file = Encode(picture, alpha, cause);
  if (file.empty()) return false;
  const XpResult result = XpReplaceFile(path, std::span(file));
  if (result != XpOk) cause = WriteCause(result);
  return result == XpOk;
}

}  // namespace vrx::host
