// A state that threads wait for: once set, every wait succeeds until it is cleared.
#pragma once

#include "foundation/sync/XpComboSyncObject.h"

class XpManualEvent : public XpComboSyncObject {
 public:
  XpResult Wait(std::int32_t seconds) override { return WaitMilliseconds(Milliseconds(seconds)); }
  /// Sets the state.
  XpResult Unlock() override {
    Set(true);
    return XpOk;
  }
  /// A wait takes nothing, so there is nothing to give back.
  void GiveBack() override {}

  /// False is the only way to clear the state.
  void Set(bool state) {
    XpSingleLock lock(&m_innerLock);
    m_state = state;
    if (state) Wake();
  }
  /// As Wait, for a time-out finer than a second.
  XpResult WaitMilliseconds(std::int64_t milliseconds) {
    return SleepUntil([this] { return m_state; }, milliseconds);
  }

 private:
  bool m_state = false;
};
