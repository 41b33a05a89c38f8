#include "foundation/sync/XpRwLockEx.h"

#include <algorithm>

std::vector<XpRwLockEx::Reader>::iterator XpRwLockEx::FindCaller() {
  return std::find_if(m_readers.begin(), m_readers.end(),
                      [](const Reader& reader) { return reader.first == std::this_thread::get_id(); });
}

bool XpRwLockEx::TakeRead() {
  if (m_writerCount > 0 && m_owner == std::this_thread::get_id()) {
    ++m_writerCount;
    return true;
  }
  if (m_writerCount > 0 || m_waitingWriters > 0) return false;
  if (const auto found = FindCaller(); found != m_readers.end()) {
    ++found->second;
  } else {
    m_readers.emplace_back(std::this_thread::get_id(), 1);
  }
  return true;
}

bool XpRwLockEx::TakeWrite() {
  const std::thread::id caller = std::this_thread::get_id();
  if (m_writerCount > 0 && m_owner != caller) return false;
  if (m_readers.size() > 1 || (m_readers.size() == 1 && m_readers.front().first != caller)) return false;
  ++m_writerCount;
  m_owner = caller;
  return true;
}

XpResult XpRwLockEx::WaitRead(std::int32_t seconds) {
  return SleepUntil([this] { return TakeRead(); }, Milliseconds(seconds));
}

XpResult XpRwLockEx::WaitWrite(std::int32_t seconds) {
  XpSingleLock counting(&m_innerLock);
  ++m_waitingWriters;
  m_innerLock.Unlock();
  const XpResult result = SleepUntil([this] { return TakeWrite(); }, Milliseconds(seconds));
  m_innerLock.Lock();
  --m_waitingWriters;
  // Readers that slept behind this writer would otherwise not hear that it gave up.
  if (result != XpOk) Wake();
  return result;
}

XpResult XpRwLockEx::Unlock() {
  XpSingleLock lock(&m_innerLock);
  if (m_owner == std::this_thread::get_id()) {
    if (m_writerCount > 0) --m_writerCount;
    if (m_writerCount == 0) m_owner = {};
  } else if (const auto found = FindCaller(); found != m_readers.end() && --found->second == 0) {
    m_readers.erase(found);
  }
  if (m_readers.empty() || m_writerCount == 0) Wake();
  return XpOk;
}
