// Compiled for AVX2, which not every processor has. Include no header with inline functions that other files
// use: the linker keeps one copy of each, and it might be the one from here.
#include "engine/WideConversion.h"

#ifdef __AVX2__
#include <immintrin.h>
#endif

namespace vrx::engine {

#ifdef __AVX2__

namespace {

constexpr int kColumns = 32;  // pixels whose luma fills a vector
constexpr int kLane = 8;      // pixels that fill a vector

using Vector = __m256i;

Vector Load(const void* place) { return _mm256_loadu_si256(static_cast<const Vector*>(place)); }
void Store(void* place, Vector value) { _mm256_storeu_si256(static_cast<Vector*>(place), value); }

/// The colours of eight pixels, or sums of such, in fields of sixteen bits.
struct Colours {
  Vector redBlue;
  Vector green;  // and the fourth byte, whose weight is 0
};

/// Coefficients in the same places.
using Weights = Colours;

Weights MakeWeights(std::int16_t r, std::int16_t g, std::int16_t b) {
  constexpr int kField = 0xFFFF;
  return {_mm256_set1_epi32(r * (kField + 1) + (b & kField)), _mm256_set1_epi32(g & kField)};
}

Colours Split(Vector pixels) {
  return {_mm256_and_si256(pixels, _mm256_set1_epi32(0x00FF00FF)), _mm256_srli_epi16(pixels, 8)};
}

Colours Add(const Colours& a, const Colours& b) {
  return {_mm256_add_epi16(a.redBlue, b.redBlue), _mm256_add_epi16(a.green, b.green)};
}

Vector Mix(const Colours& colours, const Weights& w, Vector bias) {
  const Vector redBlue = _mm256_madd_epi16(colours.redBlue, w.redBlue);
  return _mm256_add_epi32(_mm256_add_epi32(redBlue, bias), _mm256_madd_epi16(colours.green, w.green));
}

/// The fields of 32 bits at even places: a0 a2 b0 b2, a4 a6 b4 b6.
Vector Evens(Vector a, Vector b) {
  return _mm256_castps_si256(_mm256_shuffle_ps(_mm256_castsi256_ps(a), _mm256_castsi256_ps(b), 0x88));
}

/// Those beside them, in the same order.
Vector Odds(Vector a, Vector b) {
  return _mm256_castps_si256(_mm256_shuffle_ps(_mm256_castsi256_ps(a), _mm256_castsi256_ps(b), 0xDD));
}

Colours AddNeighbours(const Colours& a, const Colours& b) {
  return Add({Evens(a.redBlue, b.redBlue), Evens(a.green, b.green)},
             {Odds(a.redBlue, b.redBlue), Odds(a.green, b.green)});
}

/// Restores the order of groups of 32 bits after two packings, or after Evens and one packing.
Vector InOrder(Vector groups) {
  return _mm256_permutevar8x32_epi32(groups, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7));
}

/// All ones in each field of 32 bits without a difference in a colour.
Vector SameColours(Vector difference) {
  const Vector colours = _mm256_and_si256(difference, _mm256_set1_epi32(0x00FFFFFF));
  return _mm256_cmpeq_epi32(colours, _mm256_setzero_si256());
}

/// Where nothing changed, the old samples stay: `same` has all ones there.
void StoreChanged(std::uint8_t* place, Vector samples, Vector same) {
  Store(place, _mm256_blendv_epi8(samples, Load(place), same));
}

/// 32 bytes.
[[gnu::always_inline]] inline Vector Luma(const std::uint32_t* row, const Weights& w) {
  const Vector bias = _mm256_set1_epi32(kLumaBias);
  const auto eight = [&](int i) {
    return _mm256_srli_epi32(Mix(Split(Load(row + i * kLane)), w, bias), kFraction);
  };
  return InOrder(
      _mm256_packus_epi16(_mm256_packs_epi32(eight(0), eight(1)), _mm256_packs_epi32(eight(2), eight(3))));
}

/// The sums of eight times four pixels, in the order of Evens.
Colours SumQuads(const std::uint32_t* row0, const std::uint32_t* row1) {
  return AddNeighbours(Add(Split(Load(row0)), Split(Load(row1))),
                       Add(Split(Load(row0 + kLane)), Split(Load(row1 + kLane))));
}

/// Sixteen samples in fields of sixteen bits.
Vector Chroma(const Colours& first, const Colours& second, const Weights& w) {
  const Vector bias = _mm256_set1_epi32(kChromaBias);
  constexpr int kShift = kFraction + kQuad;
  return InOrder(_mm256_packs_epi32(_mm256_srli_epi32(Mix(first, w, bias), kShift),
                                    _mm256_srli_epi32(Mix(second, w, bias), kShift)));
}

/// The low bytes of `a` and `b`, fields of sixteen bits, one after the other.
Vector PackBytes(Vector a, Vector b) {
  const Vector low = _mm256_set1_epi16(0xFF);
  const Vector bytes = _mm256_packus_epi16(_mm256_and_si256(a, low), _mm256_and_si256(b, low));
  return _mm256_permute4x64_epi64(bytes, _MM_SHUFFLE(3, 1, 2, 0));
}

/// All ones in each byte whose pixel, of 32, is as it was.
Vector SamePixels(const std::uint32_t* row, const std::uint32_t* before) {
  const auto eight = [&](int i) {
    return SameColours(_mm256_xor_si256(Load(row + i * kLane), Load(before + i * kLane)));
  };
  return InOrder(
      _mm256_packs_epi16(_mm256_packs_epi32(eight(0), eight(1)), _mm256_packs_epi32(eight(2), eight(3))));
}

/// The two halves of a vector, sixteen samples each.
void StoreHalves(std::uint8_t* u, std::uint8_t* v, Vector both) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(u), _mm256_castsi256_si128(both));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(v), _mm256_extracti128_si256(both, 1));
}

Vector LoadHalves(const std::uint8_t* u, const std::uint8_t* v) {
  return _mm256_loadu2_m128i(reinterpret_cast<const __m128i*>(v), reinterpret_cast<const __m128i*>(u));
}

template <bool kOnlyChanged>
int ToPlanar(const BgrRowPair& pixels, const BgrRowPair& before, const Coefficients& c, int width,
             const PlanarRowPair& samples) {
  const Weights y = MakeWeights(c.yr, c.yg, c.yb), u = MakeWeights(c.ur, c.ug, c.ub),
                v = MakeWeights(c.vr, c.vg, c.vb);
  int x = 0;
  for (; x + kColumns <= width; x += kColumns) {
    const std::uint32_t *row0 = pixels.row0 + x, *row1 = pixels.row1 + x;
    const Vector luma0 = Luma(row0, y), luma1 = Luma(row1, y);
    const Colours first = SumQuads(row0, row1), second = SumQuads(row0 + 2 * kLane, row1 + 2 * kLane);
    Vector chroma = PackBytes(Chroma(first, second, u), Chroma(first, second, v));
    std::uint8_t *placeU = samples.u + x / 2, *placeV = samples.v + x / 2;
    if constexpr (kOnlyChanged) {
      const Vector same0 = SamePixels(row0, before.row0 + x), same1 = SamePixels(row1, before.row1 + x);
      StoreChanged(samples.y0 + x, luma0, same0);
      StoreChanged(samples.y1 + x, luma1, same1);
      const Vector quads = _mm256_cmpeq_epi16(_mm256_and_si256(same0, same1), _mm256_set1_epi16(-1));
      chroma = _mm256_blendv_epi8(chroma, LoadHalves(placeU, placeV), PackBytes(quads, quads));
    } else {
      Store(samples.y0 + x, luma0);
      Store(samples.y1 + x, luma1);
    }
    StoreHalves(placeU, placeV, chroma);
  }
  return x;
}

/// What sixteen chroma samples add to the colours of their pixels.
struct ChromaTerms {
  Vector red, green, blue;
};

ChromaTerms MakeTerms(const PlanarRowPair& samples, int x, const InverseCoefficients& c) {
  const auto load = [&](const std::uint8_t* plane) {
    const auto* place = reinterpret_cast<const __m128i*>(plane + x / 2);
    const Vector bias = _mm256_set1_epi16(kNeutral);
    const Vector sample = _mm256_sub_epi16(_mm256_cvtepu8_epi16(_mm_loadu_si128(place)), bias);
    return _mm256_slli_epi16(sample, 8);  // times kChromaGain
  };
  const auto times = [](Vector a, std::int16_t b) { return _mm256_mulhrs_epi16(a, _mm256_set1_epi16(b)); };
  const Vector cb = load(samples.u), cr = load(samples.v);
  const Vector minusGreen = _mm256_add_epi16(times(cb, c.gu), times(cr, c.gv));
  return {times(cr, c.rv), _mm256_sub_epi16(_mm256_setzero_si256(), minusGreen), times(cb, c.bu)};
}

/// Sixteen of the 32 luma samples, in the order in which a vector's halves are unpacked.
Vector LumaTerm(Vector samples, const InverseCoefficients& c) {
  const Vector floor = _mm256_set1_epi16(kLumaFloor);
  const Vector gained = _mm256_slli_epi16(_mm256_sub_epi16(samples, floor), 7);  // times kLumaGain
  const Vector half = _mm256_set1_epi16(1 << (kInverseFraction - 1));
  return _mm256_add_epi16(_mm256_mulhrs_epi16(gained, _mm256_set1_epi16(c.y)), half);
}

void WriteRow(const std::uint8_t* y, const ChromaTerms& chroma, const InverseCoefficients& c,
              std::uint32_t* pixels) {
  const Vector samples = Load(y), zero = _mm256_setzero_si256();
  const Vector low = LumaTerm(_mm256_unpacklo_epi8(samples, zero), c);
  const Vector high = LumaTerm(_mm256_unpackhi_epi8(samples, zero), c);
  // A chroma sample stands beside itself for its two columns; packing clamps to a byte.
  const auto colour = [&](Vector term) {
    const Vector a = _mm256_add_epi16(low, _mm256_unpacklo_epi16(term, term));
    const Vector b = _mm256_add_epi16(high, _mm256_unpackhi_epi16(term, term));
    return _mm256_packus_epi16(_mm256_srai_epi16(a, kInverseFraction),
                               _mm256_srai_epi16(b, kInverseFraction));
  };
  const Vector red = colour(chroma.red), green = colour(chroma.green), blue = colour(chroma.blue);
  const Vector opaque = _mm256_set1_epi8(-1);
  const Vector blueGreenLow = _mm256_unpacklo_epi8(blue, green);
  const Vector blueGreenHigh = _mm256_unpackhi_epi8(blue, green);
  const Vector redLow = _mm256_unpacklo_epi8(red, opaque), redHigh = _mm256_unpackhi_epi8(red, opaque);
  // Each holds four pixels, and the four that are sixteen columns further right.
  const Vector p0 = _mm256_unpacklo_epi16(blueGreenLow, redLow);
  const Vector p4 = _mm256_unpackhi_epi16(blueGreenLow, redLow);
  const Vector p8 = _mm256_unpacklo_epi16(blueGreenHigh, redHigh);
  const Vector p12 = _mm256_unpackhi_epi16(blueGreenHigh, redHigh);
  Store(pixels, _mm256_permute2x128_si256(p0, p4, 0x20));
  Store(pixels + kLane, _mm256_permute2x128_si256(p8, p12, 0x20));
  Store(pixels + 2 * kLane, _mm256_permute2x128_si256(p0, p4, 0x31));
  Store(pixels + 3 * kLane, _mm256_permute2x128_si256(p8, p12, 0x31));
}

}  // namespace

bool HasWideVectors() {
  static const bool has = __builtin_cpu_supports("avx2") != 0;
  return has;
}

int WideToBgr(const PlanarRowPair& samples, const InverseCoefficients& c, int width,
              const BgrRowPair& pixels) {
  int x = 0;
  for (; x + kColumns <= width; x += kColumns) {
    const ChromaTerms chroma = MakeTerms(samples, x, c);
    WriteRow(samples.y0 + x, chroma, c, pixels.row0 + x);
    WriteRow(samples.y1 + x, chroma, c, pixels.row1 + x);
  }
  return x;
}

int WideToPlanar(const BgrRowPair& pixels, const Coefficients& c, int width, const PlanarRowPair& samples) {
  return ToPlanar<false>(pixels, {}, c, width, samples);
}

int WideChangedToPlanar(const BgrRowPair& pixels, const BgrRowPair& before, const Coefficients& c, int width,
                        const PlanarRowPair& samples) {
  return ToPlanar<true>(pixels, before, c, width, samples);
}

#else

bool HasWideVectors() { return false; }

int WideToBgr(const PlanarRowPair&, const InverseCoefficients&, int, const BgrRowPair&) { return 0; }

int WideToPlanar(const BgrRowPair&, const Coefficients&, int, const PlanarRowPair&) { return 0; }

int WideChangedToPlanar(const BgrRowPair&, const BgrRowPair&, const Coefficients&, int,
                        const PlanarRowPair&) {
  return 0;
}

#endif

}  // namespace vrx::engine
