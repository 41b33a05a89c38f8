// A band of a picture's rows. Lets those who know what holds something spare others the looking.
#pragma once

#include <cstdint>
#include <limits>

/// Rows `first` to `last` - 1; all rows unless told.
struct XpRowRange {
  std::int32_t first = 0;
  std::int32_t last = std::numeric_limits<std::int32_t>::max();

  bool IsEmpty() const { return first >= last; }
};
