#include "foundation/sync/XpRwLock.h"

XpResult XpRwLock::WaitRead(std::int32_t seconds) {
  return SleepUntil(
      [this] {
        if (m_writerCount > 0 || m_waitingWriters > 0) return false;
        ++m_readers;
        return true;
      },
      Milliseconds(seconds));
}

XpResult XpRwLock::WaitWrite(std::int32_t seconds) {
  const std::thread::id caller = std::this_thread::get_id();
  XpSingleLock counting(&m_innerLock);
  ++m_waitingWriters;
  m_innerLock.Unlock();
  const XpResult result = SleepUntil(
      [&] {
        if (m_readers > 0 || (m_writerCount > 0 && m_owner != caller)) return false;
        ++m_writerCount;
        m_owner = caller;
        return true;
      },
      Milliseconds(seconds));
  m_innerLock.Lock();
  --m_waitingWriters;
  // Readers that slept behind this writer would otherwise not hear that it gave up.
  if (result != XpOk) Wake();
  return result;
}

XpResult XpRwLock::Unlock() {
  XpSingleLock lock(&m_innerLock);
  if (m_owner == std::this_thread::get_id()) {
    if (m_writerCount > 0) --m_writerCount;
    if (m_writerCount == 0) m_owner = {};
  } else if (m_readers > 0) {
    --m_readers;
  }
  if (m_readers == 0 || m_writerCount == 0) Wake();
  return XpOk;
}
