// A range of a picture's rows. A caller that knows which rows hold something passes it, so that the others
// are not searched.
#pragma once

#include <cstdint>
#include <limits>

/// Rows `first` to `last` - 1; by default all rows.
struct XpRowRange {
  std::int32_t first = 0;
  std::int32_t last = std::numeric_limits<std::int32_t>::max();

  bool IsEmpty() const { return first >= last; }
};
