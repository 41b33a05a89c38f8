#include "foundation/sync/XpRwLock.h"

#include <algorithm>

bool XpRwLockBase::TakeRead() {
  if (m_writerCount > 0 || m_waitingWriters > 0) return false;
  AddReader();
  return true;
}

bool XpRwLockBase::TakeWrite() {
  if (!MayWrite() || (m_writerCount > 0 && !IsWriter())) return false;
  ++m_writerCount;
  m_owner = std::this_thread::get_id();
  return true;
}

XpResult XpRwLockBase::WaitRead(std::int32_t seconds) {
  return SleepUntil([this] { return TakeRead(); }, Milliseconds(seconds));
}

XpResult XpRwLockBase::WaitWrite(std::int32_t seconds) {
  XpSingleLock counting(&m_innerLock);
  // A try does not count as waiting: it keeps no reader out, so when it fails no reader has to be woken.
  if (seconds == 0) return TakeWrite() ? XpOk : XpErrTimeout;
  ++m_waitingWriters;
  m_innerLock.Unlock();
  const XpResult result = SleepUntil([this] { return TakeWrite(); }, Milliseconds(seconds));
  m_innerLock.Lock();
  --m_waitingWriters;
  // Readers that slept because this writer waited must be woken.
  if (result != XpOk && m_waitingWriters == 0) Wake();
  return result;
}

XpResult XpRwLockBase::Unlock() {
  XpSingleLock lock(&m_innerLock);
  if (IsWriter()) {
    --m_writerCount;
  } else {
    RemoveReader();
  }
  if (!HasReaders() || m_writerCount == 0) Wake();
  return XpOk;
}

std::vector<XpRwLockEx::Reader>::iterator XpRwLockEx::FindCaller() {
  return std::find_if(m_readers.begin(), m_readers.end(),
                      [](const Reader& reader) { return reader.first == std::this_thread::get_id(); });
}

bool XpRwLockEx::TakeRead() {
  if (!IsWriter()) return XpRwLockBase::TakeRead();
  ++m_writerCount;
  return true;
}

bool XpRwLockEx::MayWrite() const {
  return std::all_of(m_readers.begin(), m_readers.end(),
                     [](const Reader& reader) { return reader.first == std::this_thread::get_id(); });
}

void XpRwLockEx::AddReader() {
  if (const auto found = FindCaller(); found != m_readers.end()) {
    ++found->second;
  } else {
    m_readers.emplace_back(std::this_thread::get_id(), 1);
  }
}

void XpRwLockEx::RemoveReader() {
  if (const auto found = FindCaller(); found != m_readers.end() && --found->second == 0) {
    m_readers.erase(found);
  }
}
