#include "foundation/log/SfLogMutex.h"

using vrx::platform::MutexWait;

XpResult SfLogMutex::Lock(std::int64_t patienceMs) {
  switch (m_handle.Wait(patienceMs)) {
    case MutexWait::Taken:
    case MutexWait::Abandoned:
      return XpOk;
    case MutexWait::TimedOut:
      return XpErrTimeout;
    default:
      return XpErrFailed;
  }
}

XpResult SfLogMutex::Unlock() { return m_handle.Release() ? XpOk : XpErrFailed; }
