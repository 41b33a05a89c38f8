// Where a block of one pixmap lands in another: clipping for plain and for scaled copies, one axis at a
// time. Used by the block and overlay operations.
#pragma once

#include <algorithm>
#include <cstdint>

/// The part of an axis that is copied 1 to 1; nothing when `count` is below 1.
struct XpAxisCopy {
  std::int64_t dest;
  std::int64_t source;
  std::int64_t count;
};

inline XpAxisCopy ClipAxisCopy(std::int64_t dest, std::int64_t source, std::int64_t count,
                               std::int64_t destSize, std::int64_t sourceSize) {
  const std::int64_t before = std::max<std::int64_t>({-dest, -source, 0});
  const std::int64_t behind =
      std::max<std::int64_t>({dest + count - destSize, source + count - sourceSize, 0});
  return {dest + before, source + before, count - before - behind};
}

/// One axis of a nearest-neighbour copy: destination positions `first` to `last` - 1 are written, each from
/// SourceAt. Nothing when `last` isn't above `first`.
struct XpAxisStretch {
  std::int64_t first;
  std::int64_t last;
  std::int64_t dest;        // where the unclipped block begins
  std::int64_t source;      // where the unclipped source block begins
  std::int64_t step;        // source pixels a destination pixel, 16.16 fixed point
  std::int64_t sourceSize;  // of the whole source pixmap

  bool IsEmpty() const { return last <= first; }
  std::int64_t SourceAt(std::int64_t position) const {
    const std::int64_t at = source + (((position - dest) * step) >> 16);
    return std::clamp<std::int64_t>(at, 0, sourceSize - 1);
  }
};

/// Both counts must be above 0. The arithmetic has room for every 32-bit argument.
inline XpAxisStretch ClipAxisStretch(std::int64_t dest, std::int64_t destCount, std::int64_t source,
                                     std::int64_t sourceCount, std::int64_t destSize,
                                     std::int64_t sourceSize) {
  XpAxisStretch axis{0, 0, dest, source, (sourceCount << 16) / destCount, sourceSize};
  const std::int64_t sourceFirst = std::max<std::int64_t>(source, 0);
  const std::int64_t sourceLast = std::min(source + sourceCount, sourceSize);
  const std::int64_t destFirst = std::max<std::int64_t>(dest, 0);
  const std::int64_t destLast = std::min(dest + destCount, destSize);
  if (sourceLast <= sourceFirst || destLast <= destFirst) return axis;
  const std::int64_t mappedFirst = dest + (sourceFirst - source) * destCount / sourceCount;
  const std::int64_t lostBehind = sourceLast - (source + sourceCount);
  const std::int64_t mappedLast = dest + destCount + lostBehind * destCount / sourceCount;
  axis.first = std::max(destFirst, mappedFirst);
  axis.last = std::min(destLast, mappedLast);
  return axis;
}
