// Decides which progress the host hears: every change at once, a repeat no more often than every 200 ms.
#pragma once

#include <cstdint>

#include "vrx/VRXEngine.h"

namespace vrx::render {

class ProgressFilter {
 public:
  static constexpr std::uint32_t kRepeatMs = 200;

  explicit ProgressFilter(std::uint32_t nowMs) : m_lastMs(nowMs) {}

  /// Processed in hundredths of the total; an engine without a total stands at 0.
  static std::uint32_t Percentage(const VRXProgressInfo& progress) {
    constexpr std::uint64_t kHundred = 100;
    if (progress.total == 0) return 0;
    return static_cast<std::uint32_t>(progress.processed * kHundred / progress.total);
  }

  /// True when the host is to hear `percentage` now. The comparison of ticks is plain unsigned, so while the
  /// clock wraps a repeat is passed on at once.
  bool Passes(std::uint32_t percentage, std::uint32_t nowMs) {
    if (percentage == m_lastPercentage && nowMs <= m_lastMs + kRepeatMs) return false;
    m_lastPercentage = percentage;
    m_lastMs = nowMs;
    return true;
  }

 private:
  std::uint32_t m_lastPercentage = 0;
  std::uint32_t m_lastMs;
};

}  // namespace vrx::render
