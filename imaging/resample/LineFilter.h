// One direction of a resampling: how lines of one length become lines of another. ResamplePixmap runs one
// filter along the rows of a picture and another across them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace vrx::resample {

/// No line has more samples, so that 32 bits hold each weighted sum.
inline constexpr std::int32_t kMostSamples = 1 << 24;

/// Source lines, one after the other.
struct LineRange {
  std::int32_t first = 0;
  std::int32_t count = 1;
};

class LineFilter {
 public:
  virtual ~LineFilter() = default;

  /// Along a row: all target pixels from all source pixels, 24 bits each. The two do not overlap.
  virtual void FilterRow(const unsigned char* in, unsigned char* out) const = 0;

  /// Across the rows: which source rows make target row `target`. Neither end of the range goes back while
  /// the target goes forward.
  virtual LineRange RowsFor(std::int32_t target) const = 0;
  /// The largest count that RowsFor gives.
  virtual std::int32_t MostRows() const = 0;
  /// Makes target row `target` from the rows that RowsFor gives, of `bytes` bytes.
  virtual void BlendRows(std::int32_t target, const unsigned char* const* rows, std::size_t bytes,
                         unsigned char* out) const = 0;
};

/// The filter for lines of `source` samples that become `target`, both from 1 to kMostSamples and not the
/// same. Throws std::bad_alloc when there is no memory for its tables.
std::unique_ptr<LineFilter> MakeLineFilter(std::int32_t source, std::int32_t target);

}  // namespace vrx::resample
