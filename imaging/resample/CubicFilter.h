// Makes lines longer: four-point Lagrange interpolation in 16.16 fixed point, and linear interpolation where
// there are not two samples on both sides. First and last sample stay what they are.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "imaging/resample/LineFilter.h"

namespace vrx::resample {

/// For a `source` of at least 2 and a `target` above it.
class CubicFilter final : public LineFilter {
 public:
  static constexpr std::size_t kTaps = 4;

  CubicFilter(std::int32_t source, std::int32_t target);

  void FilterRow(const unsigned char* in, unsigned char* out) const override;
  LineRange RowsFor(std::int32_t target) const override;
  std::int32_t MostRows() const override { return kTaps; }
  void BlendRows(std::int32_t target, const unsigned char* const* rows, std::size_t bytes,
                 unsigned char* out) const override;

 private:
  /// A weight is four times its coarse part and its fine part, so that 16-bit factors do.
  struct TapWeights {
    std::vector<std::int16_t> coarse;
    std::vector<std::int16_t> fine;
  };

  bool IsCubic(std::int32_t target) const { return target >= m_firstCubic && target < m_endCubic; }
  std::int32_t Before(std::int32_t target) const { return m_before[static_cast<std::size_t>(target)]; }
  double Position(std::int32_t target) const;
  double Fraction(std::int32_t target) const { return Position(target) - Before(target); }
  void AddWeights(double fraction);
  void FilterEdge(const unsigned char* in, std::int32_t first, std::int32_t end, unsigned char* out) const;
  void FilterStrip(const unsigned char* in, std::int32_t first, std::int32_t end, unsigned char* out) const;

  std::int32_t m_source;
  std::int32_t m_target;
  std::int32_t m_firstCubic;
  std::int32_t m_endCubic;
  std::vector<std::int32_t> m_before;       // the source sample at or before each target sample
  std::array<TapWeights, kTaps> m_weights;  // from m_firstCubic on, one for each byte of a pixel
};

}  // namespace vrx::resample
