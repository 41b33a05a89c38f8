#include "foundation/sync/XpComboSyncObject.h"

#include <algorithm>

#include "foundation/sync/XpMultiWaiter.h"

void XpComboSyncObject::Watch(XpMultiWaiterBase& waiter) {
  XpSingleLock lock(&m_innerLock);
  if (std::find(m_waiters.begin(), m_waiters.end(), &waiter) == m_waiters.end()) m_waiters.push_back(&waiter);
}

void XpComboSyncObject::Unwatch(XpMultiWaiterBase& waiter) {
  XpSingleLock lock(&m_innerLock);
  std::erase(m_waiters, &waiter);
}

std::int64_t XpComboSyncObject::Milliseconds(std::int32_t seconds) {
  constexpr std::int64_t kMillisecondsPerSecond = 1000;
  return seconds < 0 ? WakeEvent::kNoLimit : seconds * kMillisecondsPerSecond;
}

void XpComboSyncObject::Wake() {
  m_wakeEvent.Signal();
  for (XpMultiWaiterBase* waiter : m_waiters) waiter->GetSleepObject().Unlock();
}
