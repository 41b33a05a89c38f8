#include "engine/BgrConversion.h"

#include <cstring>

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
/// The inverse, for products of sixteen bits: luma and chroma samples go in times kLumaGain and kChromaGain,
/// and Multiply gives colours times 2^kInverseFraction.
struct InverseCoefficients {
  std::int16_t y, rv, gu, gv, bu;
};

constexpr int kInverseFraction = 5;  // so that no sum of three terms leaves 16 bits
constexpr int kLumaGain = 1 << 7;    // a luma sample less its floor has eight bits
constexpr int kChromaGain = 1 << 8;  // a chroma sample less its bias has seven bits and a sign
constexpr int kProductShift = 15;

constexpr InverseCoefficients MakeInverse(double kr, double kb) {
  const double kg = 1 - kr - kb;
  constexpr double kUnit = 1 << (kInverseFraction + kProductShift);
  const double luma = 255.0 / 219 * kUnit / kLumaGain;
  const double chroma = 255.0 / 224 * 2 * kUnit / kChromaGain;
  constexpr auto round = [](double value) { return static_cast<std::int16_t>(value + 0.5); };
  return {round(luma), round(chroma * (1 - kr)), round(chroma * (1 - kb) * kb / kg),
          round(chroma * (1 - kr) * kr / kg), round(chroma * (1 - kb))};
}

constexpr InverseCoefficients kBt601Inverse = MakeInverse(0.299, 0.114);
constexpr InverseCoefficients kBt709Inverse = MakeInverse(0.2126, 0.0722);
constexpr int kLumaFloor = 16;
constexpr int kNeutral = 128;

constexpr int kLumaBias = (16 << kFraction) + (1 << (kFraction - 1));
constexpr int kChromaBias = (128 << (kFraction + kQuad)) + (1 << (kFraction + kQuad - 1));

const Coefficients& CoefficientsOf(OutputMatrix matrix) {
  return matrix == OutputMatrix::kBt709 ? kBt709Coefficients : kBt601Coefficients;
}

const InverseCoefficients& InverseOf(OutputMatrix matrix) {
  return matrix == OutputMatrix::kBt709 ? kBt709Inverse : kBt601Inverse;
}

template <bool kOnlyChanged>
[[gnu::always_inline]] inline void LumaRow(const std::uint32_t* __restrict row,
                                           const std::uint32_t* __restrict before, int count,
                                           const Coefficients c, std::uint8_t* __restrict y) {
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

/// Two rows of pixels, and the same rows as they were before. Null where nobody asks.
struct RowPair {
  const std::uint32_t* __restrict row0;
  const std::uint32_t* __restrict row1;
  const std::uint32_t* __restrict before0;
  const std::uint32_t* __restrict before1;
};

/// The chroma samples `first` to `last` - 1; sample i comes from the columns 2i and 2i + `step`.
template <bool kOnlyChanged>
[[gnu::always_inline]] inline void ChromaRow(const RowPair pair, int first, int last, int step,
                                             const Coefficients c, std::uint8_t* __restrict u,
                                             std::uint8_t* __restrict v) {
  constexpr std::uint32_t kRedBlue = 0x00FF00FF;
  constexpr int kShift = kFraction + kQuad;
  for (int i = first; i < last; ++i) {
    const int x0 = 2 * i, x1 = 2 * i + step;
    const std::uint32_t p = pair.row0[x0], q = pair.row0[x1], r = pair.row1[x0], s = pair.row1[x1];
    // Four bytes fit into the sixteen bits that each of the two colours has here.
    const std::uint32_t redBlue = (p & kRedBlue) + (q & kRedBlue) + (r & kRedBlue) + (s & kRedBlue);
    const int green = static_cast<int>((p >> 8 & 0xFF) + (q >> 8 & 0xFF) + (r >> 8 & 0xFF) + (s >> 8 & 0xFF));
    const int blue = static_cast<int>(redBlue & 0xFFFF);
    const int red = static_cast<int>(redBlue >> 16);
    const auto newU =
        static_cast<std::uint8_t>((c.ur * red + c.ug * green + c.ub * blue + kChromaBias) >> kShift);
    const auto newV =
        static_cast<std::uint8_t>((c.vr * red + c.vg * green + c.vb * blue + kChromaBias) >> kShift);
    if constexpr (kOnlyChanged) {
      const std::uint32_t change =
          (p ^ pair.before0[x0]) | (q ^ pair.before0[x1]) | (r ^ pair.before1[x0]) | (s ^ pair.before1[x1]);
      const std::uint8_t oldU = u[i], oldV = v[i];
      u[i] = (change & kColours) != 0 ? newU : oldU;
      v[i] = (change & kColours) != 0 ? newV : oldV;
    } else {
      u[i] = newU;
      v[i] = newV;
    }
  }
}

template <bool kOnlyChanged>
[[gnu::always_inline]] inline void ConvertRows(BgrRows rows, BgrRows before, const Coefficients c,
                                               const PlanarPicture& picture) {
  const int pairs = picture.width / 2;
  for (int top = 0; top < picture.height; top += 2) {
    const int second = top + 1 < picture.height ? top + 1 : top;
    RowPair pair{rows.top + top * rows.stride, rows.top + second * rows.stride, nullptr, nullptr};
    if constexpr (kOnlyChanged) {
      pair.before0 = before.top + top * before.stride;
      pair.before1 = before.top + second * before.stride;
    }
    LumaRow<kOnlyChanged>(pair.row0, pair.before0, picture.width, c, picture.y + top * picture.lumaStride);
    if (second != top) {
      LumaRow<kOnlyChanged>(pair.row1, pair.before1, picture.width, c,
                            picture.y + second * picture.lumaStride);
    }
    std::uint8_t* u = picture.u + top / 2 * picture.chromaStride;
    std::uint8_t* v = picture.v + top / 2 * picture.chromaStride;
    ChromaRow<kOnlyChanged>(pair, 0, pairs, 1, c, u, v);
    if (picture.width % 2 != 0) ChromaRow<kOnlyChanged>(pair, pairs, pairs + 1, 0, c, u, v);
  }
}

/// Two of the four bytes of a pixel, so that whole vectors of sixteen bits can be written.
using Half [[gnu::may_alias]] = std::uint16_t;

/// The rounded product, in the form that compilers know as one instruction.
[[gnu::always_inline]] inline std::int16_t Multiply(std::int16_t a, std::int16_t b) {
  return static_cast<std::int16_t>(((a * b >> (kProductShift - 1)) + 1) >> 1);
}

[[gnu::always_inline]] inline std::uint16_t Colour(std::int16_t luma, std::int16_t chroma) {
  const auto sum = static_cast<std::int16_t>(luma + chroma);
  const auto whole = static_cast<std::int16_t>(sum >> kInverseFraction);
  const auto positive = whole < 0 ? std::int16_t{0} : whole;
  return static_cast<std::uint16_t>(positive > 255 ? std::int16_t{255} : positive);
}

/// Two rows of luma over one of chroma, and where their pixels go. Without a second row those are not used.
struct WritePair {
  const std::uint8_t* __restrict y0;
  const std::uint8_t* __restrict y1;
  const std::uint8_t* __restrict u;
  const std::uint8_t* __restrict v;
  Half* __restrict row0;
  Half* __restrict row1;
};

/// What a chroma sample adds to the colours of its four pixels.
struct ChromaTerms {
  std::int16_t red, green, blue;
};

[[gnu::always_inline]] inline void WritePixel(std::uint8_t y, const ChromaTerms chroma,
                                              const InverseCoefficients c, Half* __restrict pixel) {
  constexpr std::uint16_t kOpaque = 0xFF00;
  constexpr std::int16_t kHalf = 1 << (kInverseFraction - 1);
  const auto luma = static_cast<std::int16_t>(
      Multiply(static_cast<std::int16_t>((y - kLumaFloor) * kLumaGain), c.y) + kHalf);
  pixel[0] = static_cast<Half>(Colour(luma, chroma.blue) | Colour(luma, chroma.green) << 8);
  pixel[1] = static_cast<Half>(Colour(luma, chroma.red) | kOpaque);
}

template <bool kBothRows>
[[gnu::always_inline]] inline void WriteRowPair(const WritePair pair, int width,
                                                const InverseCoefficients c) {
  const auto quad = [&](int i, bool both) __attribute__((always_inline)) {
    const auto cb = static_cast<std::int16_t>((pair.u[i] - kNeutral) * kChromaGain);
    const auto cr = static_cast<std::int16_t>((pair.v[i] - kNeutral) * kChromaGain);
    const ChromaTerms chroma{Multiply(cr, c.rv),
                             static_cast<std::int16_t>(-Multiply(cb, c.gu) - Multiply(cr, c.gv)),
                             Multiply(cb, c.bu)};
    const int x = 2 * i;
    WritePixel(pair.y0[x], chroma, c, pair.row0 + 2 * x);
    if (both) WritePixel(pair.y0[x + 1], chroma, c, pair.row0 + 2 * x + 2);
    if constexpr (kBothRows) {
      WritePixel(pair.y1[x], chroma, c, pair.row1 + 2 * x);
      if (both) WritePixel(pair.y1[x + 1], chroma, c, pair.row1 + 2 * x + 2);
    }
  };
  for (int i = 0; i < width / 2; ++i) quad(i, true);
  if (width % 2 != 0) quad(width / 2, false);
}

[[gnu::always_inline]] inline void WriteRows(const PlanarPicture& picture, const InverseCoefficients c,
                                             BgrRows rows) {
  for (int top = 0; top < picture.height; top += 2) {
    const std::ptrdiff_t chroma = top / 2 * picture.chromaStride;
    const std::uint8_t* y = picture.y + top * picture.lumaStride;
    auto* row = reinterpret_cast<Half*>(rows.top + top * rows.stride);
    WritePair pair{y, y, picture.u + chroma, picture.v + chroma, row, row};
    if (top + 1 == picture.height) {
      WriteRowPair<false>(pair, picture.width, c);
      continue;
    }
    pair.y1 += picture.lumaStride;
    pair.row1 = reinterpret_cast<Half*>(rows.top + (top + 1) * rows.stride);
    WriteRowPair<true>(pair, picture.width, c);
  }
}

void WritePlain(const PlanarPicture& picture, const InverseCoefficients c, BgrRows rows) {
  WriteRows(picture, c, rows);
}

[[gnu::always_inline]] inline void Gather(const std::uint32_t* __restrict a,
                                          const std::uint32_t* __restrict b, int count,
                                          std::uint32_t* __restrict changes) {
  for (int i = 0; i < count; ++i) changes[i] |= (a[i] ^ b[i]) & kColours;
}

void GatherPlain(const std::uint32_t* a, const std::uint32_t* b, int count, std::uint32_t* changes) {
  Gather(a, b, count, changes);
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

[[gnu::target("avx2")]] void WriteWide(const PlanarPicture& picture, const InverseCoefficients c,
                                       BgrRows rows) {
  WriteRows(picture, c, rows);
}

[[gnu::target("avx2")]] void GatherWide(const std::uint32_t* a, const std::uint32_t* b, int count,
                                        std::uint32_t* changes) {
  Gather(a, b, count, changes);
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
#if defined(__x86_64__)
  if (HasWideVectors()) return WriteWide(picture, InverseOf(matrix), rows);
#endif
  WritePlain(picture, InverseOf(matrix), rows);
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

bool SameRows(BgrRows a, BgrRows b, int width, int height) {
  const std::size_t bytes = static_cast<std::size_t>(width) * sizeof(std::uint32_t);
  for (int row = 0; row < height; ++row) {
    if (std::memcmp(a.top + row * a.stride, b.top + row * b.stride, bytes) != 0) return false;
  }
  return true;
}

void GatherChanges(const std::uint32_t* a, const std::uint32_t* b, int count, std::uint32_t* changes) {
#if defined(__x86_64__)
  if (HasWideVectors()) return GatherWide(a, b, count, changes);
#endif
  GatherPlain(a, b, count, changes);
}

}  // namespace vrx::engine
