#include "engine/BgrConversion.h"

#include <libyuv.h>

namespace vrx::engine {
namespace {

constexpr std::uint32_t kColours = 0x00FFFFFF;  // the fourth byte carries no colour
constexpr int kFraction = 16;                   // bits behind the point
constexpr int kQuad = 2;                        // bits: a chroma sample sums four pixels

/// Coefficients of ITU-R BT.601 and BT.709 for limited range, times 2^kFraction.
struct Coefficients {
  int yr, yg, yb, ur, ug, ub, vr, vg, vb;
};

constexpr Coefficients MakeCoefficients(double kr, double kb) {
  const double kg = 1 - kr - kb;
  const double luma = 219.0 / 255 * (1 << kFraction);
  const double blue = 224.0 / 255 * (1 << kFraction) / 2 / (1 - kb);
  const double red = 224.0 / 255 * (1 << kFraction) / 2 / (1 - kr);
  constexpr auto round = [](double value) { return static_cast<int>(value < 0 ? value - 0.5 : value + 0.5); };
  Coefficients c{};
  c.yr = round(luma * kr), c.yb = round(luma * kb);
  c.yg = round(luma) - c.yr - c.yb;  // white stays exactly white
  c.ur = round(-blue * kr), c.ug = round(-blue * kg);
  c.ub = -c.ur - c.ug;  // and grey exactly grey
  c.vg = round(-red * kg), c.vb = round(-red * kb);
  c.vr = -c.vg - c.vb;
  return c;
}

constexpr Coefficients kBt601Coefficients = MakeCoefficients(0.299, 0.114);
constexpr Coefficients kBt709Coefficients = MakeCoefficients(0.2126, 0.0722);
constexpr int kLumaBias = (16 << kFraction) + (1 << (kFraction - 1));
constexpr int kChromaBias = (128 << (kFraction + kQuad)) + (1 << (kFraction + kQuad - 1));

const Coefficients& CoefficientsOf(OutputMatrix matrix) {
  return matrix == OutputMatrix::kBt709 ? kBt709Coefficients : kBt601Coefficients;
}

struct RowPair {
  const std::uint32_t* row[2];
  const std::uint32_t* before[2];
};

template <bool kOnlyChanged>
[[gnu::always_inline]] inline void LumaRow(const std::uint32_t* __restrict row,
                                           const std::uint32_t* __restrict before, int count,
                                           const Coefficients& c, std::uint8_t* __restrict y) {
  for (int i = 0; i < count; ++i) {
    const std::uint32_t pixel = row[i];
    const int b = static_cast<int>(pixel & 0xFF);
    const int g = static_cast<int>(pixel >> 8 & 0xFF);
    const int r = static_cast<int>(pixel >> 16 & 0xFF);
    const auto luma = static_cast<std::uint8_t>((c.yr * r + c.yg * g + c.yb * b + kLumaBias) >> kFraction);
    if constexpr (kOnlyChanged) {
      const std::uint8_t old = y[i];
      y[i] = ((pixel ^ before[i]) & kColours) != 0 ? luma : old;
    } else {
      y[i] = luma;
    }
  }
}

/// One chroma sample from the columns `x0` and `x1` of the pair.
template <bool kOnlyChanged>
[[gnu::always_inline]] inline void ChromaSample(const RowPair& p, int x0, int x1, const Coefficients& c,
                                                std::uint8_t& u, std::uint8_t& v) {
  constexpr std::uint32_t kRedBlue = 0x00FF00FF;
  const std::uint32_t a = p.row[0][x0], b = p.row[0][x1], d = p.row[1][x0], e = p.row[1][x1];
  // Four bytes fit into the sixteen bits that each of the two colours has here.
  const std::uint32_t redBlue = (a & kRedBlue) + (b & kRedBlue) + (d & kRedBlue) + (e & kRedBlue);
  const int green = static_cast<int>((a >> 8 & 0xFF) + (b >> 8 & 0xFF) + (d >> 8 & 0xFF) + (e >> 8 & 0xFF));
  const int blue = static_cast<int>(redBlue & 0xFFFF);
  const int red = static_cast<int>(redBlue >> 16);
  constexpr int kShift = kFraction + kQuad;
  const auto newU =
      static_cast<std::uint8_t>((c.ur * red + c.ug * green + c.ub * blue + kChromaBias) >> kShift);
  const auto newV =
      static_cast<std::uint8_t>((c.vr * red + c.vg * green + c.vb * blue + kChromaBias) >> kShift);
  if constexpr (kOnlyChanged) {
    const std::uint32_t change =
        (a ^ p.before[0][x0]) | (b ^ p.before[0][x1]) | (d ^ p.before[1][x0]) | (e ^ p.before[1][x1]);
    const std::uint8_t oldU = u, oldV = v;
    u = (change & kColours) != 0 ? newU : oldU;
    v = (change & kColours) != 0 ? newV : oldV;
  } else {
    u = newU;
    v = newV;
  }
}

template <bool kOnlyChanged>
[[gnu::always_inline]] inline void ConvertRows(BgrRows rows, BgrRows before, const Coefficients& c,
                                               const PlanarPicture& picture) {
  const int pairs = picture.width / 2;
  for (int top = 0; top < picture.height; top += 2) {
    const int second = top + 1 < picture.height ? top + 1 : top;
    RowPair p{{rows.top + top * rows.stride, rows.top + second * rows.stride}, {nullptr, nullptr}};
    if constexpr (kOnlyChanged) {
      p.before[0] = before.top + top * before.stride;
      p.before[1] = before.top + second * before.stride;
    }
    LumaRow<kOnlyChanged>(p.row[0], p.before[0], picture.width, c, picture.y + top * picture.lumaStride);
    if (second != top) {
      LumaRow<kOnlyChanged>(p.row[1], p.before[1], picture.width, c, picture.y + second * picture.lumaStride);
    }
    std::uint8_t* __restrict u = picture.u + top / 2 * picture.chromaStride;
    std::uint8_t* __restrict v = picture.v + top / 2 * picture.chromaStride;
    for (int i = 0; i < pairs; ++i) ChromaSample<kOnlyChanged>(p, 2 * i, 2 * i + 1, c, u[i], v[i]);
    if (picture.width % 2 != 0) {
      ChromaSample<kOnlyChanged>(p, picture.width - 1, picture.width - 1, c, u[pairs], v[pairs]);
    }
  }
}

void ConvertAllPlain(BgrRows rows, const Coefficients& c, const PlanarPicture& picture) {
  ConvertRows<false>(rows, {}, c, picture);
}

void ConvertChangedPlain(BgrRows rows, BgrRows before, const Coefficients& c, const PlanarPicture& picture) {
  ConvertRows<true>(rows, before, c, picture);
}

#if defined(__x86_64__)
// The same code once more for processors with wide multiplication.
[[gnu::target("avx2")]] void ConvertAllWide(BgrRows rows, const Coefficients& c,
                                            const PlanarPicture& picture) {
  ConvertRows<false>(rows, {}, c, picture);
}

[[gnu::target("avx2")]] void ConvertChangedWide(BgrRows rows, BgrRows before, const Coefficients& c,
                                                const PlanarPicture& picture) {
  ConvertRows<true>(rows, before, c, picture);
}

bool HasWideVectors() {
  static const bool has = __builtin_cpu_supports("avx2") != 0;
  return has;
}
#endif

}  // namespace

PlanarPicture PlanarPicture::Of(const AVFrame& frame) {
  return {frame.data[0],     frame.data[1], frame.data[2], frame.linesize[0],
          frame.linesize[1], frame.width,   frame.height};
}

PlanarPicture PlanarPicture::Part(int x, int top, int partWidth, int partHeight) const {
  const std::ptrdiff_t chroma = top / 2 * chromaStride + x / 2;
  return {y + top * lumaStride + x, u + chroma, v + chroma, lumaStride, chromaStride, partWidth, partHeight};
}

void PlanarToBgr(const PlanarPicture& picture, OutputMatrix matrix, BgrRows rows) {
  const auto* constants =
      matrix == OutputMatrix::kBt709 ? &libyuv::kYuvH709Constants : &libyuv::kYuvI601Constants;
  constexpr int kPixelBytes = 4;
  // A negative height stands for rows from the bottom up, and begins at the lowest address.
  const bool upwards = rows.stride < 0;
  std::uint32_t* first = upwards ? rows.top + (picture.height - 1) * rows.stride : rows.top;
  const auto stride = static_cast<int>(upwards ? -rows.stride : rows.stride);
  libyuv::I420ToARGBMatrix(
      picture.y, static_cast<int>(picture.lumaStride), picture.u, static_cast<int>(picture.chromaStride),
      picture.v, static_cast<int>(picture.chromaStride), reinterpret_cast<std::uint8_t*>(first),
      stride * kPixelBytes, constants, picture.width, upwards ? -picture.height : picture.height);
}

void BgrToPlanar(BgrRows rows, OutputMatrix matrix, const PlanarPicture& picture) {
#if defined(__x86_64__)
  if (HasWideVectors()) return ConvertAllWide(rows, CoefficientsOf(matrix), picture);
#endif
  ConvertAllPlain(rows, CoefficientsOf(matrix), picture);
}

void ChangedBgrToPlanar(BgrRows rows, BgrRows before, OutputMatrix matrix, const PlanarPicture& picture) {
#if defined(__x86_64__)
  if (HasWideVectors()) return ConvertChangedWide(rows, before, CoefficientsOf(matrix), picture);
#endif
  ConvertChangedPlain(rows, before, CoefficientsOf(matrix), picture);
}

bool RowsDiffer(const std::uint32_t* a, const std::uint32_t* b, int count) {
  std::uint32_t change = 0;
  for (int i = 0; i < count; ++i) change |= a[i] ^ b[i];
  return (change & kColours) != 0;
}

}  // namespace vrx::engine
