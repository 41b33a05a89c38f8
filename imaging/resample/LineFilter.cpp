#include "imaging/resample/LineFilter.h"

#include <algorithm>
#include <cstring>

#include "imaging/resample/AreaFilter.h"
#include "imaging/resample/BlockMean.h"
#include "imaging/resample/CubicFilter.h"
#include "imaging/resample/PixelRun.h"

namespace vrx::resample {

namespace {

/// The mean of two samples.
class PairFilter final : public LineFilter {
 public:
  explicit PairFilter(std::int32_t target) : m_target(target) {}

  void FilterRow(const unsigned char* in, unsigned char* out) const override {
    MeanOfPairs(in, static_cast<std::size_t>(m_target), out);
  }
  LineRange RowsFor(std::int32_t target) const override { return {2 * target, 2}; }
  std::int32_t MostRows() const override { return 2; }
  void BlendRows(std::int32_t, const unsigned char* const* rows, std::size_t bytes,
                 unsigned char* out) const override {
    MeanOfTwoRows(rows[0], rows[1], bytes, out);
  }

 private:
  std::int32_t m_target;
};

/// The only sample, again and again.
class RepeatFilter final : public LineFilter {
 public:
  explicit RepeatFilter(std::int32_t target) : m_target(target) {}

  void FilterRow(const unsigned char* in, unsigned char* out) const override {
    for (std::int32_t i = 0; i < m_target; ++i, out += kBytesPerPixel) CopyPixel(out, in);
  }
  LineRange RowsFor(std::int32_t) const override { return {0, 1}; }
  std::int32_t MostRows() const override { return 1; }
  void BlendRows(std::int32_t, const unsigned char* const* rows, std::size_t bytes,
                 unsigned char* out) const override {
    std::memcpy(out, rows[0], bytes);
  }

 private:
  std::int32_t m_target;
};

}  // namespace

std::unique_ptr<LineFilter> MakeLineFilter(std::int32_t source, std::int32_t target) {
  if (source == 2 * target) return std::make_unique<PairFilter>(target);
  if (source > target) return MakeAreaFilter(source, target);
  if (source == 1) return std::make_unique<RepeatFilter>(target);
  return std::make_unique<CubicFilter>(source, target);
}

}  // namespace vrx::resample
