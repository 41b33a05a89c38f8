// How a command line program is asked to stop, without work inside a signal handler.
#pragma once

#include <cstdint>

namespace vrx::platform {

/// Makes a write past the file size limit fail with an error, as on a full disk, instead of killing the
/// process.
void SurviveFileSizeLimit();

/// Takes over the interrupt signals (Ctrl-C, termination, and hang-up unless the process ignores it, as under
/// nohup) for the process and lets a thread wait for them. Make one in main() before any other thread starts;
/// threads made later inherit the set-up. Also makes a write past the file size limit, or to a pipe without a
/// reader, fail with an error instead of killing the process.
class InterruptWaiter {
 public:
  enum class Event { Interrupt, Wake, Timeout };

  InterruptWaiter();
  InterruptWaiter(const InterruptWaiter&) = delete;
  InterruptWaiter& operator=(const InterruptWaiter&) = delete;
  ~InterruptWaiter();

  /// Waits for an interrupt or a Wake; an interrupt goes first.
  Event Wait(std::int32_t milliseconds);
  /// Ends the current or the next Wait; from any thread.
  void Wake();

 private:
  int m_signals = -1;
  int m_wake = -1;
};

/// Ends the process at once, as a second interrupt asks for.
[[noreturn]] void ExitNow(int status);

}  // namespace vrx::platform
