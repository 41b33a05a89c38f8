// What the waiting threads of a wait object sleep on. A thread draws a ticket while it still holds the
// object's lock. Every signal after that wakes it, so no signal is lost between the unlock and the sleep.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "vrx/XpResult.h"

class WakeEvent {
 public:
  using Ticket = std::uint64_t;
  static constexpr std::int64_t kNoLimit = -1;

  Ticket Draw();
  void Signal();
  /// Sleeps until the first signal after `ticket`, at most so many milliseconds: XpErrTimeout then. A
  /// negative number waits without limit.
  XpResult Wait(Ticket ticket, std::int64_t milliseconds);

 private:
  std::mutex m_mutex;
  std::condition_variable m_signalled;
  Ticket m_signals = 0;
};
