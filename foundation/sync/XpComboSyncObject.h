// The base of the wait objects: locks with a time-out that can also be waited on together with others,
// through XpMultiLockOne and XpMultiLockAll. They must outlive all threads that wait for them.
#pragma once

#include <cstdint>
#include <vector>

#include "foundation/sync/WakeEvent.h"
#include "foundation/sync/XpCriticalSection.h"

class XpMultiWaiterBase;

class XpComboSyncObject : public XpSyncObject {
 public:
  static constexpr std::int32_t kNoLimit = -1;

  XpComboSyncObject() = default;
  XpComboSyncObject(const XpComboSyncObject&) = delete;
  XpComboSyncObject& operator=(const XpComboSyncObject&) = delete;

  XpResult Lock() override { return Wait(kNoLimit); }
  XpResult TryLock() override { return Wait(0); }
  /// Takes the object. The time-out starts again when the waiter is woken and another thread was faster, so a
  /// wait can last longer than `seconds`. A negative number waits without limit. XpErrTimeout changes
  /// nothing.
  virtual XpResult Wait(std::int32_t seconds) = 0;
  /// Undoes a Wait that succeeded: for a caller that took one of several objects and cannot have the rest.
  virtual void GiveBack() { Unlock(); }

  /// From now on each wake of this object also unlocks what `waiter` sleeps on. Twice counts once.
  void Watch(XpMultiWaiterBase& waiter);
  void Unwatch(XpMultiWaiterBase& waiter);

 protected:
  static std::int64_t Milliseconds(std::int32_t seconds);

  /// Asks `take` under the inner lock until it is true, sleeping in between. `take` tests the object's
  /// condition and, where it holds, takes the object.
  template <class Take>
  XpResult SleepUntil(Take take, std::int64_t milliseconds) {
    XpSingleLock lock(&m_innerLock);
    while (!take()) {
      if (const XpResult result = m_wakeEvent.Sleep(m_innerLock, milliseconds)) return result;
    }
    return XpOk;
  }

  /// Called under the inner lock whenever a sleeper's condition may have come true.
  void Wake();

  XpCriticalSection m_innerLock;  // guards every other field, of the descendants too; never held in a sleep

 private:
  std::vector<XpMultiWaiterBase*> m_waiters;  // not owned
  WakeEvent m_wakeEvent;
};
