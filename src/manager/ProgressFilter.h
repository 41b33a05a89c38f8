// Decides which progress is reported: every change at once, a repeat no more often than every 200 ms.
#pragma once

#include <cstdint>

#include "vrx/VRXEngine.h"

namespace vrx::render {

class ProgressFilter {
 public:
  static constexpr std::uint32_t kRepeatMs = 200;

  explicit ProgressFilter(std::uint32_t nowMs) : m_lastMs(nowMs) {}

  /// Processed in hundredths of the total; 0 for an engine that gives no total.
  static std::uint32_t Percentage(const VRXProgressInfo& progress) {
    constexpr std::uint64_t kHundred = 100;
    if (progress.total == 0) return 0;
    return static_cast<std::uint32_t>(progress.processed * kHundred / progress.total);
  }

  /// True when `percentage` must be reported now. The comparison of ticks is plain unsigned, so while the
  /// clock wraps a repeat is reported at once.
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
