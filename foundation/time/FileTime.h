// A point in time as 100 ns since 1601, which file objects and XpDateTime exchange.
#pragma once

#include <cstdint>

/// Units of 100 ns since 1 January 1601, UTC, in two halves.
struct FILETIME {
  std::uint32_t dwLowDateTime = 0;
  std::uint32_t dwHighDateTime = 0;

  static FILETIME FromTicks(std::uint64_t ticks) {
    return {static_cast<std::uint32_t>(ticks), static_cast<std::uint32_t>(ticks >> 32)};
  }
  std::uint64_t Ticks() const { return std::uint64_t{dwHighDateTime} << 32 | dwLowDateTime; }
};
