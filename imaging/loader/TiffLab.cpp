#include "imaging/loader/TiffLab.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vrx::imaging {
namespace {

constexpr std::size_t kSamples = 3;
constexpr std::uint32_t kOpaque = 0xFF000000;

struct Lab {
  float lightness, a, b;  // 0 to 100, about -128 to 127
};

/// TIFF 6.0, section 23; with 16 bits a and b have 8 bits of fraction.
Lab ReadLab(const unsigned char* pixel, bool is16) {
  if (!is16) {
    return {static_cast<float>(pixel[0]) * 100 / 255, static_cast<float>(static_cast<std::int8_t>(pixel[1])),
            static_cast<float>(static_cast<std::int8_t>(pixel[2]))};
  }
  std::uint16_t lightness;
  std::int16_t ab[2];
  std::memcpy(&lightness, pixel, sizeof lightness);
  std::memcpy(ab, pixel + sizeof lightness, sizeof ab);
  return {static_cast<float>(lightness) * 100 / 65535, static_cast<float>(ab[0]) / 256,
          static_cast<float>(ab[1]) / 256};
}

/// The inverse of the curve of CIE 15 between a share of white and lightness.
float Uncurved(float value) {
  constexpr float kKnee = 6.0f / 29;
  return value > kKnee ? value * value * value : 3 * kKnee * kKnee * (value - 4.0f / 29);
}

/// IEC 61966-2-1, from linear light to a byte.
std::uint32_t Encoded(float linear) {
  constexpr std::size_t kSteps = 16384;
  static const std::array<std::uint8_t, kSteps + 1> kBytes = [] {
    std::array<std::uint8_t, kSteps + 1> bytes;
    for (std::size_t i = 0; i <= kSteps; ++i) {
      const double x = static_cast<double>(i) / kSteps;
      const double y = x <= 0.0031308 ? 12.92 * x : 1.055 * std::pow(x, 1 / 2.4) - 0.055;
      bytes[i] = static_cast<std::uint8_t>(std::lround(y * 255));
    }
    return bytes;
  }();
  return kBytes[static_cast<std::size_t>(std::clamp(linear, 0.0f, 1.0f) * kSteps + 0.5f)];
}

std::uint32_t SrgbOf(const Lab& lab) {
  const float f = (lab.lightness + 16) / 116;
  // D50, the white of Lab in files, is adapted to the screen's D65 in the matrix (Bradford).
  const float x = 0.96422f * Uncurved(f + lab.a / 500), y = Uncurved(f),
              z = 0.82521f * Uncurved(f - lab.b / 200);
  return Encoded(3.1338561f * x - 1.6168667f * y - 0.4906146f * z) |
         Encoded(-0.9787684f * x + 1.9161415f * y + 0.0334540f * z) << 8 |
         Encoded(0.0719453f * x - 0.2289914f * y + 1.4052427f * z) << 16 | kOpaque;
}

void PutLab(TIFFRGBAImage* image, std::uint32_t* out, std::uint32_t, std::uint32_t, std::uint32_t width,
            std::uint32_t height, std::int32_t fromSkew, std::int32_t toSkew, unsigned char* pixels) {
  const bool is16 = image->bitspersample == 16;
  const std::ptrdiff_t step = kSamples * (is16 ? 2 : 1);
  for (; height > 0; --height) {
    for (std::uint32_t x = 0; x < width; ++x, pixels += step) *out++ = SrgbOf(ReadLab(pixels, is16));
    out += toSkew;
    pixels += fromSkew * step;
  }
}

}  // namespace

void UseLabColours(TIFFRGBAImage& image) {
  if (image.photometric == PHOTOMETRIC_CIELAB && image.isContig != 0) image.put.contig = PutLab;
}

}  // namespace vrx::imaging
