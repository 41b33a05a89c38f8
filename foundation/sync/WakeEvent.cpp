#include "foundation/sync/WakeEvent.h"

#include <algorithm>
#include <chrono>

WakeEvent::Ticket WakeEvent::Draw() {
  const std::scoped_lock lock(m_mutex);
  return m_signals;
}

void WakeEvent::Signal() {
  const std::scoped_lock lock(m_mutex);
  ++m_signals;
  m_signalled.notify_all();
}

XpResult WakeEvent::Sleep(XpSyncObject& held, std::int64_t milliseconds) {
  const Ticket ticket = Draw();  // before the unlock, after which signals come
  held.Unlock();
  const XpResult result = Wait(ticket, milliseconds);
  held.Lock();
  return result;
}

XpResult WakeEvent::Wait(Ticket ticket, std::int64_t milliseconds) {
  // The clock counts nanoseconds in 64 bits, which longer waits would overflow.
  constexpr std::chrono::milliseconds kLongest = std::chrono::hours(24) * 36525;
  std::unique_lock lock(m_mutex);
  const auto signalled = [&] { return m_signals != ticket; };
  if (milliseconds < 0) {
    m_signalled.wait(lock, signalled);
    return XpOk;
  }
  const auto patience = std::min(std::chrono::milliseconds(milliseconds), kLongest);
  return m_signalled.wait_for(lock, patience, signalled) ? XpOk : XpErrTimeout;
}
