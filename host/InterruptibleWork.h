// Work that cannot be stopped by itself, on a thread of its own, while the main thread waits for interrupts.
#pragma once

#include <functional>

#include "foundation/platform/Signals.h"

namespace vrx::host {

/// Returns when `work` has ended, with what it threw. `onInterrupt` is called on this thread and ends the
/// program.
void DoUnlessInterrupted(platform::InterruptWaiter& waiter, const std::function<void()>& work,
                         const std::function<void()>& onInterrupt);

}  // namespace vrx::host
