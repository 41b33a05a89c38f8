#include "engine/BgrConversion.h"

#include <cstring>

#include "engine/WideConversion.h"

namespace vrx::engine {
namespace {

constexpr std::uint32_t kOpaque = 0xFF000000;

std::uint8_t Luma(std::uint32_t pixel, const Coefficients& c) {
  const int b = static_cast<int>(pixel & 0xFF);
  const int g = static_cast<int>(pixel >> 8 & 0xFF);
  const int r = static_cast<int>(pixel >> 16 & 0xFF);
  return static_cast<std::uint8_t>((c.yr * r + c.yg * g + c.yb * b + kLumaBias) >> kFraction);
}

struct Chroma {
  std::uint8_t u, v;
};

/// Of the four pixels that share it.
Chroma ChromaOf(const std::uint32_t (&quad)[4], const Coefficients& c) {
  int b = 0, g = 0, r = 0;
  for (const std::uint32_t pixel : quad) {
    b += static_cast<int>(pixel & 0xFF);
    g += static_cast<int>(pixel >> 8 & 0xFF);
    r += static_cast<int>(pixel >> 16 & 0xFF);
  }
  constexpr int kShift = kFraction + kQuad;
  return {static_cast<std::uint8_t>((c.ur * r + c.ug * g + c.ub * b + kChromaBias) >> kShift),
          static_cast<std::uint8_t>((c.vr * r + c.vg * g + c.vb * b + kChromaBias) >> kShift)};
}

/// The columns from `first` on, which is even. Without `before` every sample is written.
void PlainToPlanar(const BgrRowPair& pixels, const BgrRowPair* before, const Coefficients& c, int first,
                   int width, const PlanarRowPair& samples) {
  const auto isChanged = [&](int x, bool second) {
    if (before == nullptr) return true;
    const std::uint32_t bits = second ? pixels.row1[x] ^ before->row1[x] : pixels.row0[x] ^ before->row0[x];
    return (bits & kColourMask) != 0;
  };
  for (int x = first; x < width; x += 2) {
    const int next = x + 1 < width ? x + 1 : x;
    bool any = false;
    for (int column = x; column <= next; ++column) {
      if (isChanged(column, false)) samples.y0[column] = Luma(pixels.row0[column], c), any = true;
      if (isChanged(column, true)) samples.y1[column] = Luma(pixels.row1[column], c), any = true;
    }
    if (!any) continue;
    const Chroma chroma = ChromaOf({pixels.row0[x], pixels.row0[next], pixels.row1[x], pixels.row1[next]}, c);
    samples.u[x / 2] = chroma.u;
    samples.v[x / 2] = chroma.v;
  }
}

/// The rounded product.
int Multiply(int a, int b) { return ((a * b >> (kProductShift - 1)) + 1) >> 1; }

std::uint32_t Colour(int luma, int chroma) {
  const int whole = (luma + chroma) >> kInverseFraction;
  return static_cast<std::uint32_t>(whole < 0 ? 0 : whole > 255 ? 255 : whole);
}

/// The columns from `first` on, which is even.
void PlainToBgr(const PlanarRowPair& samples, const InverseCoefficients& c, int first, int width,
                const BgrRowPair& pixels) {
  constexpr int kHalf = 1 << (kInverseFraction - 1);
  for (int x = first; x < width; ++x) {
    const int cb = (samples.u[x / 2] - kNeutral) * kChromaGain;
    const int cr = (samples.v[x / 2] - kNeutral) * kChromaGain;
    const int red = Multiply(cr, c.rv), blue = Multiply(cb, c.bu);
    const int green = -Multiply(cb, c.gu) - Multiply(cr, c.gv);
    const auto pixel = [&](std::uint8_t y) {
      const int luma = Multiply((y - kLumaFloor) * kLumaGain, c.y) + kHalf;
      return Colour(luma, blue) | Colour(luma, green) << 8 | Colour(luma, red) << 16 | kOpaque;
    };
    pixels.row0[x] = pixel(samples.y0[x]);
    pixels.row1[x] = pixel(samples.y1[x]);
  }
}

BgrRowPair PixelPair(BgrRows rows, int top, int second) {
  return {rows.top + top * rows.stride, rows.top + second * rows.stride};
}

/// Calls `convert` for every two rows, from the top.
template <typename Convert>
void ForEachRowPair(const PlanarPicture& picture, Convert convert) {
  for (int top = 0; top < picture.height; top += 2) {
    const int second = top + 1 < picture.height ? top + 1 : top;
    const std::ptrdiff_t chroma = top / 2 * picture.chromaStride;
    convert(top, second,
            PlanarRowPair{picture.y + top * picture.lumaStride, picture.y + second * picture.lumaStride,
                          picture.u + chroma, picture.v + chroma});
  }
}

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
  const InverseCoefficients& c = InverseOf(matrix);
  const bool isWide = HasWideVectors();
  ForEachRowPair(picture, [&](int top, int second, const PlanarRowPair& samples) {
    const BgrRowPair pixels = PixelPair(rows, top, second);
    const int done = isWide ? WideToBgr(samples, c, picture.width, pixels) : 0;
    PlainToBgr(samples, c, done, picture.width, pixels);
  });
}

void BgrToPlanar(BgrRows rows, OutputMatrix matrix, const PlanarPicture& picture) {
  const Coefficients& c = CoefficientsOf(matrix);
  const bool isWide = HasWideVectors();
  ForEachRowPair(picture, [&](int top, int second, const PlanarRowPair& samples) {
    const BgrRowPair pixels = PixelPair(rows, top, second);
    const int done = isWide ? WideToPlanar(pixels, c, picture.width, samples) : 0;
    PlainToPlanar(pixels, nullptr, c, done, picture.width, samples);
  });
}

void ChangedBgrToPlanar(BgrRows rows, BgrRows before, OutputMatrix matrix, const PlanarPicture& picture) {
  const Coefficients& c = CoefficientsOf(matrix);
  const bool isWide = HasWideVectors();
  ForEachRowPair(picture, [&](int top, int second, const PlanarRowPair& samples) {
    const BgrRowPair pixels = PixelPair(rows, top, second), old = PixelPair(before, top, second);
    const int done = isWide ? WideChangedToPlanar(pixels, old, c, picture.width, samples) : 0;
    PlainToPlanar(pixels, &old, c, done, picture.width, samples);
  });
}

bool SameRows(BgrRows a, BgrRows b, int width, int height) {
  const std::size_t bytes = static_cast<std::size_t>(width) * sizeof(std::uint32_t);
  for (int row = 0; row < height; ++row) {
    if (std::memcmp(a.top + row * a.stride, b.top + row * b.stride, bytes) != 0) return false;
  }
  return true;
}

}  // namespace vrx::engine
