#include "resources/maker/PictureWriter.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <stdexcept>
#include <string>

#include <png.h>

namespace vrx::pictures {
namespace {

constexpr std::uint32_t kFileHeaderBytes = 14;
constexpr std::uint32_t kInfoHeaderBytes = 40;

void Append(std::string& bytes, std::uint32_t value, int count) {
  for (int i = 0; i < count; ++i) bytes += static_cast<char>(value >> (8 * i));
}

std::string BmpHead(const Pixels& pixels) {
  const auto pixelBytes = static_cast<std::uint32_t>(pixels.bytes.size());
  std::string head = "BM";
  Append(head, kFileHeaderBytes + kInfoHeaderBytes + pixelBytes, 4);
  Append(head, 0, 4);
  Append(head, kFileHeaderBytes + kInfoHeaderBytes, 4);
  Append(head, kInfoHeaderBytes, 4);
  Append(head, static_cast<std::uint32_t>(pixels.width), 4);
  Append(head, static_cast<std::uint32_t>(pixels.height), 4);
  Append(head, 1, 2);   // planes
  Append(head, 32, 2);  // bits a pixel
  Append(head, 0, 4);   // not compressed
  Append(head, pixelBytes, 4);
  for (int i = 0; i < 4; ++i) Append(head, 0, 4);  // resolution and palette
  return head;
}

}  // namespace

void WriteBmp(const Pixels& pixels, const std::filesystem::path& file) {
  const std::string head = BmpHead(pixels);
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  stream.write(head.data(), static_cast<std::streamsize>(head.size()));
  const auto rowBytes = static_cast<std::streamsize>(pixels.width) * 4;
  for (int y = pixels.height - 1; y >= 0; --y) {
    stream.write(reinterpret_cast<const char*>(pixels.At(0, y)), rowBytes);
  }
  stream.close();
  if (!stream) throw std::runtime_error(file.string() + " cannot be written");
}

void WritePng(const Pixels& pixels, const std::filesystem::path& file) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(pixels.width);
  image.height = static_cast<png_uint_32>(pixels.height);
  image.format = PNG_FORMAT_BGRA;
  if (png_image_write_to_file(&image, file.c_str(), 0, pixels.bytes.data(), 0, nullptr) == 0) {
    throw std::runtime_error(file.string() + " cannot be written: " + image.message);
  }
}

}  // namespace vrx::pictures
