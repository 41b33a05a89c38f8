#include "imaging/resample/CubicFilter.h"

#include <algorithm>
#include <cstring>

#include "imaging/resample/PixelRun.h"

namespace vrx::resample {

namespace {

constexpr double kOne = 65536;
constexpr int kFineBits = 2;

using Weights = std::array<std::int32_t, CubicFilter::kTaps>;

/// For the samples at -1, 0, 1 and 2 around `fraction`. The order of the operations decides the last bit.
Weights LagrangeWeights(double fraction) {
  const double x = fraction + 1;
  return {static_cast<std::int32_t>(0.5 - (x - 3) * (x - 1) * kOne * (x - 2) / 6),
          static_cast<std::int32_t>((x * kOne * (x - 2) * (x - 3) + 1) * 0.5),
          static_cast<std::int32_t>(0.5 - x * kOne * (x - 1) * (x - 3) * 0.5),
          static_cast<std::int32_t>(x * kOne * (x - 1) * (x - 2) / 6 + 0.5)};
}

unsigned char Linear(unsigned char a, unsigned char b, double fraction) {
  return static_cast<unsigned char>(a * (1 - fraction) + b * fraction + 0.5);
}

struct SplitWeight {
  std::int16_t coarse, fine;
  explicit SplitWeight(std::int32_t weight)
      : coarse(static_cast<std::int16_t>(weight >> kFineBits)),
        fine(static_cast<std::int16_t>(weight & ((1 << kFineBits) - 1))) {}
};

inline std::int32_t Product(std::int16_t a, std::int16_t b) { return std::int32_t{a} * b; }

inline unsigned char ToByte(std::int32_t coarse, std::int16_t fine) {
  const auto value = static_cast<std::int16_t>(((coarse << kFineBits) + fine + 0x8000) >> 16);
  // Two instructions for eight numbers, other than with std::clamp.
  return static_cast<unsigned char>(std::min<std::int16_t>(std::max<std::int16_t>(value, 0), 255));
}

}  // namespace

CubicFilter::CubicFilter(std::int32_t source, std::int32_t target)
    : m_source(source), m_target(target), m_firstCubic(target - 1), m_endCubic(target - 1) {
  m_before.reserve(static_cast<std::size_t>(target));
  for (std::int32_t i = 0; i < target; ++i) {
    const auto before = static_cast<std::int32_t>(Position(i));
    m_before.push_back(before);
    if (before >= 1) m_firstCubic = std::min(m_firstCubic, i);
    if (before >= source - 2) m_endCubic = std::min(m_endCubic, i);
  }
  m_endCubic = std::max(m_endCubic, m_firstCubic);
  for (TapWeights& tap : m_weights) {
    const std::size_t bytes = static_cast<std::size_t>(m_endCubic - m_firstCubic) * kBytesPerPixel;
    tap.coarse.reserve(bytes);
    tap.fine.reserve(bytes);
  }
  for (std::int32_t i = m_firstCubic; i < m_endCubic; ++i) AddWeights(Fraction(i));
}

double CubicFilter::Position(std::int32_t target) const {
  return static_cast<double>(target) * (m_source - 1) / (m_target - 1);
}

void CubicFilter::AddWeights(double fraction) {
  const Weights weights = LagrangeWeights(fraction);
  for (std::size_t tap = 0; tap < kTaps; ++tap) {
    const SplitWeight split(weights[tap]);
    m_weights[tap].coarse.insert(m_weights[tap].coarse.end(), kBytesPerPixel, split.coarse);
    m_weights[tap].fine.insert(m_weights[tap].fine.end(), kBytesPerPixel, split.fine);
  }
}

void CubicFilter::FilterRow(const unsigned char* in, unsigned char* out) const {
  FilterEdge(in, 0, m_firstCubic, out);
  for (std::int32_t i = m_firstCubic; i < m_endCubic; i += static_cast<std::int32_t>(kStripPixels)) {
    FilterStrip(in, i, std::min(m_endCubic, i + static_cast<std::int32_t>(kStripPixels)), out);
  }
  FilterEdge(in, m_endCubic, m_target - 1, out);
  CopyPixel(out + std::int64_t{m_target - 1} * 3, in + std::int64_t{m_source - 1} * 3);
}

void CubicFilter::FilterEdge(const unsigned char* in, std::int32_t first, std::int32_t end,
                             unsigned char* out) const {
  for (std::int32_t i = first; i < end; ++i) {
    const unsigned char* at = in + std::int64_t{Before(i)} * 3;
    unsigned char* to = out + std::int64_t{i} * 3;
    for (std::size_t c = 0; c < kBytesPerPixel; ++c)
      to[c] = Linear(at[c], at[c + kBytesPerPixel], Fraction(i));
  }
}

void CubicFilter::FilterStrip(const unsigned char* in, std::int32_t first, std::int32_t end,
                              unsigned char* out) const {
  std::array<std::array<unsigned char, kStripBytes + kBytesPerPixel>, kTaps> taps;
  std::size_t bytes = 0;
  for (std::int32_t i = first; i < end; ++i, bytes += kBytesPerPixel) {
    const unsigned char* at = in + std::int64_t{Before(i) - 1} * 3;
    for (std::size_t tap = 0; tap + 1 < kTaps; ++tap) {
      CopyPixelAndNext(taps[tap].data() + bytes, at + tap * kBytesPerPixel);
    }
    CopyPixel(taps[kTaps - 1].data() + bytes, at + (kTaps - 1) * kBytesPerPixel);
  }
  const std::size_t offset = static_cast<std::size_t>(first - m_firstCubic) * kBytesPerPixel;
  const auto coarse = [&](std::size_t tap) { return m_weights[tap].coarse.data() + offset; };
  const auto fine = [&](std::size_t tap) { return m_weights[tap].fine.data() + offset; };
  const std::int16_t *c0 = coarse(0), *c1 = coarse(1), *c2 = coarse(2), *c3 = coarse(3);
  const std::int16_t *f0 = fine(0), *f1 = fine(1), *f2 = fine(2), *f3 = fine(3);
  std::array<unsigned char, kStripBytes> values;
  for (std::size_t x = 0; x < bytes; ++x) {
    const std::int16_t a = taps[0][x], b = taps[1][x], c = taps[2][x], e = taps[3][x];
    values[x] = ToByte(Product(c0[x], a) + Product(c1[x], b) + Product(c2[x], c) + Product(c3[x], e),
                       static_cast<std::int16_t>(f0[x] * a + f1[x] * b + f2[x] * c + f3[x] * e));
  }
  std::memcpy(out + std::int64_t{first} * 3, values.data(), bytes);
}

LineRange CubicFilter::RowsFor(std::int32_t target) const {
  if (target == m_target - 1) return {m_source - 1, 1};
  if (IsCubic(target)) return {Before(target) - 1, kTaps};
  return {Before(target), 2};
}

void CubicFilter::BlendRows(std::int32_t target, const unsigned char* const* rows, std::size_t bytes,
                            unsigned char* out) const {
  if (target == m_target - 1) {
    std::memcpy(out, rows[0], bytes);
    return;
  }
  if (!IsCubic(target)) {
    const double fraction = Fraction(target);
    for (std::size_t x = 0; x < bytes; ++x) out[x] = Linear(rows[0][x], rows[1][x], fraction);
    return;
  }
  const Weights weights = LagrangeWeights(Fraction(target));
  const SplitWeight w0(weights[0]), w1(weights[1]), w2(weights[2]), w3(weights[3]);
  const unsigned char *row0 = rows[0], *row1 = rows[1], *row2 = rows[2], *row3 = rows[3];
  for (std::size_t x = 0; x < bytes; ++x) {
    const std::int16_t a = row0[x], b = row1[x], c = row2[x], e = row3[x];
    out[x] =
        ToByte(Product(w0.coarse, a) + Product(w1.coarse, b) + Product(w2.coarse, c) + Product(w3.coarse, e),
               static_cast<std::int16_t>(w0.fine * a + w1.fine * b + w2.fine * c + w3.fine * e));
  }
}

}  // namespace vrx::resample
