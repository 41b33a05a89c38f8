// What the waiting threads of a wait object sleep on. Used by XpComboSyncObject.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "foundation/sync/XpCriticalSection.h"
#include "vrx/XpResult.h"

class WakeEvent {
 public:
  static constexpr std::int64_t kNoLimit = -1;

  /// Wakes all who sleep.
  void Signal();
  /// Unlocks `held`, sleeps until the next signal, and locks `held` again. A signal that comes between the
  /// unlock and the sleep counts. After so many milliseconds without one XpErrTimeout; a negative number
  /// waits without limit.
  XpResult Sleep(XpSyncObject& held, std::int64_t milliseconds);

 private:
  /// The number of the last signal before a sleep.
  using Ticket = std::uint64_t;

  Ticket Draw();
  XpResult Wait(Ticket ticket, std::int64_t milliseconds);

  std::mutex m_mutex;
  std::condition_variable m_signalled;
  Ticket m_signals = 0;
};
