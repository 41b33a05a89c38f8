#include "imaging/resample/AdobeRgb.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

#include "imaging/resample/PixelRun.h"

namespace {

constexpr std::int32_t kMaxLinear = 65535;
constexpr int kMatrixBits = 10;

/// The linear value of each 8-bit code.
using LinearCodes = std::array<std::int32_t, 256>;

LinearCodes MakeLinearCodes() {
  constexpr double kGamma = 563.0 / 256;
  LinearCodes codes;
  for (std::size_t i = 0; i < codes.size(); ++i) {
    const double code = static_cast<double>(i * 0x101) / kMaxLinear;
    codes[i] = static_cast<std::int32_t>(std::lround(kMaxLinear * std::pow(code, kGamma)));
  }
  return codes;
}

/// The 8-bit sRGB code of each linear value, cut from the 16-bit one.
using SrgbCodes = std::array<std::uint8_t, kMaxLinear + 1>;

double EncodeSrgb(double linear) {
  return linear <= 0.0031308 ? 12.92 * linear : 1.055 * std::pow(linear, 1 / 2.4) - 0.055;
}

SrgbCodes MakeSrgbCodes() {
  SrgbCodes codes;
  for (std::size_t i = 0; i < codes.size(); ++i) {
    const double linear = static_cast<double>(i) / kMaxLinear;
    codes[i] = static_cast<std::uint8_t>(std::lround(kMaxLinear * EncodeSrgb(linear)) >> 8);
  }
  return codes;
}

/// One output channel from linear red, green and blue, in 1/1024.
struct MatrixRow {
  std::int32_t red, green, blue;

  std::int32_t Of(std::int32_t r, std::int32_t g, std::int32_t b) const {
    return (r * red + g * green + b * blue) >> kMatrixBits;
  }
};

struct Matrix {
  MatrixRow red, green, blue;
};

constexpr Matrix kFromAdobeRgb = {{1432, -408, 0}, {0, 1024, 0}, {0, -44, 1068}};
constexpr Matrix kFromWideGamutRgb = {{1936, -845, -68}, {-204, 1296, -68}, {-14, -73, 1110}};

/// `matrix` is a constant where this is called, so that factors of 0 and 1 cost nothing.
[[gnu::always_inline]] inline void Convert(XpPixmap24NoHandle& pixmap, const Matrix& matrix) {
  static const LinearCodes kLinear = MakeLinearCodes();
  static const SrgbCodes kSrgb = MakeSrgbCodes();
  if (pixmap.data == nullptr) return;
  const auto encode = [](std::int32_t value) {
    return kSrgb[static_cast<std::size_t>(std::clamp(value, 0, kMaxLinear))];
  };
  const XpPlaneBase& plane = *pixmap.GetPlane(0);
  for (std::int32_t y = 0; y < plane.height; ++y) {
    unsigned char* pixel = plane.Row(y);
    const unsigned char* end = pixel + std::int64_t{plane.width} * 3;
    for (; pixel != end; pixel += vrx::resample::kBytesPerPixel) {
      const std::int32_t b = kLinear[pixel[0]], g = kLinear[pixel[1]], r = kLinear[pixel[2]];
      pixel[0] = encode(matrix.blue.Of(r, g, b));
      pixel[1] = encode(matrix.green.Of(r, g, b));
      pixel[2] = encode(matrix.red.Of(r, g, b));
    }
  }
}

}  // namespace

void ConvertAdobeRgbToSrgb(XpPixmap24NoHandle& pixmap) { Convert(pixmap, kFromAdobeRgb); }

void ConvertWideGamutRgbToSrgb(XpPixmap24NoHandle& pixmap) { Convert(pixmap, kFromWideGamutRgb); }
