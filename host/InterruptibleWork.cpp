#include "host/InterruptibleWork.h"

#include <atomic>
#include <cstdint>
#include <future>

namespace vrx::host {

void DoUnlessInterrupted(platform::InterruptWaiter& waiter, const std::function<void()>& work,
                         const std::function<void()>& onInterrupt) {
  constexpr std::int32_t kForever = -1;
  std::atomic<bool> isDone = false;
  auto done = std::async(std::launch::async, [&] {
    struct AtEnd {
      std::atomic<bool>& isDone;
      platform::InterruptWaiter& waiter;
      ~AtEnd() {
        isDone = true;
        waiter.Wake();
      }
    };
    const AtEnd atEnd{isDone, waiter};
    work();
  });
  while (!isDone) {
    if (waiter.Wait(kForever) == platform::InterruptWaiter::Event::Interrupt) onInterrupt();
  }
  done.get();
}

}  // namespace vrx::host
