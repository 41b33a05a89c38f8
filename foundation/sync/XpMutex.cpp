#include "foundation/sync/XpMutex.h"

namespace {

XpResult ResultOf(vrx::platform::MutexWait wait) {
  using vrx::platform::MutexWait;
  switch (wait) {
    case MutexWait::Taken:
      return XpOk;
    case MutexWait::Abandoned:
      return XpErrAbandoned;
    case MutexWait::TimedOut:
      return XpErrTimeout;
    case MutexWait::InvalidHandle:
      return XpErrNoHandle;
    case MutexWait::Failed:
      break;
  }
  return XpErrThread;
}

}  // namespace

// Waits on the system's mutex and not on the wake event: the system also wakes a waiter when the owner dies.
// A failed wait leaves the count as it was.
XpResult XpMutex::Wait(std::int32_t seconds) {
  if (seconds != kNoLimit && seconds != 0) return XpErrNoHandle;
  const XpResult result = ResultOf(m_system.Wait(Milliseconds(seconds)));
  if (result != XpOk && result != XpErrAbandoned) return result;
  XpSingleLock lock(&m_innerLock);
  const bool isFurtherHold = result == XpOk && m_owner == std::this_thread::get_id();
  m_recursionCount = isFurtherHold ? m_recursionCount + 1 : 1;
  m_owner = std::this_thread::get_id();
  return result;
}

XpResult XpMutex::Unlock() {
  XpSingleLock lock(&m_innerLock);
  if (m_recursionCount == 0 || m_owner != std::this_thread::get_id()) return XpOk;
  if (--m_recursionCount == 0) m_owner = {};
  m_system.Release();
  if (m_recursionCount == 0) Wake();
  return XpOk;
}
