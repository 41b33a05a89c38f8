// A count of permits: a wait takes one, an unlock adds one.
#pragma once

#include "foundation/sync/XpComboSyncObject.h"

class XpSemaphore : public XpComboSyncObject {
 public:
  static constexpr std::int32_t kNoMaximum = -1;

  /// `maximum` permits at most; unlocking beyond it changes nothing and is no error.
  explicit XpSemaphore(std::int64_t count = 0, std::int32_t maximum = kNoMaximum)
      : m_count(count), m_maximum(maximum) {}

  XpResult Wait(std::int32_t seconds) override {
    return SleepUntil(
        [this] {
          if (m_count == 0) return false;
          --m_count;
          return true;
        },
        Milliseconds(seconds));
  }
  XpResult Unlock() override {
    XpSingleLock lock(&m_innerLock);
    if (m_maximum == kNoMaximum || m_count < m_maximum) ++m_count;
    if (m_count != 0) Wake();
    return XpOk;
  }

 private:
  std::int64_t m_count;
  std::int32_t m_maximum;
};
