#include "imaging/resample/AreaFilter.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <numeric>
#include <vector>

#include "imaging/resample/PixelRun.h"

namespace vrx::resample {

namespace {

// Source lines and target lines are cut into units, of which every sample of either has a whole number. A
// target sample takes each source sample that begins in it whole, adds the part of the sample before that
// lies over its start, and takes away the part of its last sample that lies over its end.

/// As many samples as 16 bits can hold the sum of.
constexpr std::int32_t kMostSummed = 0xFFFF / 0xFF;

using Bytes16 = std::uint8_t __attribute__((vector_size(16)));
using Lanes16 = std::uint16_t __attribute__((vector_size(16)));
using Words64 = std::uint64_t __attribute__((vector_size(16)));
using Whole128 = unsigned __int128 __attribute__((vector_size(16)));

/// Up to eight bytes as 16-bit numbers. The shuffle is one instruction.
template <std::size_t Bytes>
inline Lanes16 LoadWidened(const unsigned char* at) {
  std::uint64_t word = 0;
  std::memcpy(&word, at, Bytes);
  const auto bytes = reinterpret_cast<Bytes16>(Words64{word, 0});
  return reinterpret_cast<Lanes16>(
      __builtin_shufflevector(bytes, Bytes16{}, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23));
}

/// The sums of pixels `first` to `last` - 1 of a row of `pixels`, at most kMostSummed of them. The first
/// three are written to `out`, and another number after them.
inline void SumPixels(const unsigned char* row, std::int32_t pixels, std::int32_t first, std::int32_t last,
                      std::uint16_t* out) {
  // Bytes of the next pixel are read along where there is one.
  const std::int32_t end = std::min(last, pixels - 1);
  Lanes16 sums = {};
  std::int32_t at = first;
  for (; at + 2 <= end; at += 2) sums += LoadWidened<8>(row + std::int64_t{at} * 3);
  sums += reinterpret_cast<Lanes16>(reinterpret_cast<Whole128>(sums) >> 48);  // the second pixels
  if (at < end) sums += LoadWidened<4>(row + std::int64_t{at++} * 3);
  if (at < last) sums += LoadWidened<3>(row + std::int64_t{at} * 3);
  std::memcpy(out, &sums, 8);
}

inline void SumPixels(const unsigned char* row, std::int32_t pixels, std::int32_t first, std::int32_t last,
                      std::uint32_t* out) {
  std::fill_n(out, kBytesPerPixel, 0u);
  for (std::int32_t at = first; at < last; at += kMostSummed) {
    std::uint16_t part[4];
    SumPixels(row, pixels, at, std::min(last, at + kMostSummed), part);
    for (std::size_t c = 0; c < kBytesPerPixel; ++c) out[c] += part[c];
  }
}

/// `Number` holds sums of samples, and weights: 16 bits are enough for all pictures but very long ones.
template <class Number>
class AreaFilter final : public LineFilter {
 public:
  AreaFilter(std::int32_t source, std::int32_t target, std::int32_t divisor);

  void FilterRow(const unsigned char* in, unsigned char* out) const override;
  LineRange RowsFor(std::int32_t target) const override;
  std::int32_t MostRows() const override { return (m_source + m_target - 1) / m_target + 1; }
  void BlendRows(std::int32_t target, const unsigned char* const* rows, std::size_t bytes,
                 unsigned char* out) const override;

 private:
  std::int32_t Start(std::int32_t target) const { return m_starts[static_cast<std::size_t>(target)]; }
  const Number* Over(std::int32_t target) const {
    return &m_over[static_cast<std::size_t>(target) * kBytesPerPixel];
  }
  unsigned char Mean(std::uint32_t weighted) const {
    return static_cast<unsigned char>((std::uint64_t{weighted} * m_reciprocal) >> 32);
  }

  std::int32_t m_source;
  std::int32_t m_target;
  Number m_weight;                     // of a whole source sample
  std::uint32_t m_reciprocal;          // 2^32 / units of a target sample
  std::vector<std::int32_t> m_starts;  // the first source sample that begins in each target sample
  std::vector<Number> m_over;  // units of the sample before that lie over the start, for each byte of a pixel
};

template <class Number>
AreaFilter<Number>::AreaFilter(std::int32_t source, std::int32_t target, std::int32_t divisor)
    : m_source(source),
      m_target(target),
      m_weight(static_cast<Number>(target / divisor)),
      m_reciprocal(static_cast<std::uint32_t>((std::uint64_t{1} << 32) /
                                              static_cast<std::uint64_t>(source / divisor))) {
  const std::int64_t sourceUnits = target / divisor;
  const std::int64_t targetUnits = source / divisor;
  const auto borders = static_cast<std::size_t>(target) + 1;
  m_starts.reserve(borders);
  m_over.reserve(borders * kBytesPerPixel);
  for (std::int64_t border = 0; border <= target; ++border) {
    const std::int64_t start = (border * targetUnits + sourceUnits - 1) / sourceUnits;
    m_starts.push_back(static_cast<std::int32_t>(start));
    m_over.insert(m_over.end(), kBytesPerPixel,
                  static_cast<Number>(start * sourceUnits - border * targetUnits));
  }
}

template <class Number>
void AreaFilter<Number>::FilterRow(const unsigned char* in, unsigned char* out) const {
  std::array<Number, kStripBytes + kBytesPerPixel> sums;
  std::array<unsigned char, kStripBytes + 2 * kBytesPerPixel> before{};
  for (std::int32_t strip = 0; strip < m_target; strip += static_cast<std::int32_t>(kStripPixels)) {
    const std::int32_t end = std::min(m_target, strip + static_cast<std::int32_t>(kStripPixels));
    unsigned char* last = before.data();
    Number* sum = sums.data();
    for (std::int32_t i = strip; i < end; ++i, last += kBytesPerPixel, sum += kBytesPerPixel) {
      CopyPixelAndNext(last, in + std::int64_t{std::max(Start(i) - 1, 0)} * 3);
      SumPixels(in, m_source, Start(i), Start(i + 1), sum);
    }
    CopyPixel(last, in + std::int64_t{Start(end) - 1} * 3);
    const Number* over = Over(strip);
    const std::size_t bytes = static_cast<std::size_t>(end - strip) * kBytesPerPixel;
    unsigned char* to = out + std::int64_t{strip} * 3;
    for (std::size_t x = 0; x < bytes; ++x) {
      const std::uint32_t weighted = std::uint32_t{sums[x]} * m_weight + std::uint32_t{over[x]} * before[x] -
                                     std::uint32_t{over[x + kBytesPerPixel]} * before[x + kBytesPerPixel];
      to[x] = Mean(weighted);
    }
  }
}

template <class Number>
LineRange AreaFilter<Number>::RowsFor(std::int32_t target) const {
  const std::int32_t first = std::max(Start(target) - 1, 0);
  return {first, Start(target + 1) - first};
}

template <class Number>
void AreaFilter<Number>::BlendRows(std::int32_t target, const unsigned char* const* rows, std::size_t bytes,
                                   unsigned char* out) const {
  const LineRange range = RowsFor(target);
  const Number over = *Over(target);
  const Number overEnd = *Over(target + 1);
  const Number weight = m_weight;
  const std::int32_t start = Start(target) - range.first;
  std::array<Number, kStripBytes> sums;
  for (std::size_t strip = 0; strip < bytes; strip += kStripBytes) {
    const std::size_t count = std::min(kStripBytes, bytes - strip);
    std::copy_n(rows[start] + strip, count, sums.begin());
    for (std::int32_t y = start + 1; y < range.count; ++y) {
      const unsigned char* row = rows[y] + strip;
      for (std::size_t x = 0; x < count; ++x) sums[x] = static_cast<Number>(sums[x] + row[x]);
    }
    const unsigned char* before = rows[0] + strip;
    const unsigned char* last = rows[range.count - 1] + strip;
    unsigned char* to = out + strip;
    for (std::size_t x = 0; x < count; ++x) {
      const std::uint32_t weighted = std::uint32_t{sums[x]} * weight + std::uint32_t{before[x]} * over -
                                     std::uint32_t{last[x]} * overEnd;
      to[x] = Mean(weighted);
    }
  }
}

}  // namespace

std::unique_ptr<LineFilter> MakeAreaFilter(std::int32_t source, std::int32_t target) {
  const std::int32_t divisor = std::gcd(source, target);
  const bool isShort = source / divisor <= 0xFFFF && (source + target - 1) / target <= kMostSummed;
  if (isShort) return std::make_unique<AreaFilter<std::uint16_t>>(source, target, divisor);
  return std::make_unique<AreaFilter<std::uint32_t>>(source, target, divisor);
}

}  // namespace vrx::resample
