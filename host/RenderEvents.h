// Carries what happens on the threads of a render over to the main thread, which waits for it.
#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "foundation/platform/Signals.h"
#include "src/check/ProjectReport.h"
#include "vrx/VRXWrapper.h"

namespace vrx::host {

class RenderEvents final : public IVRXWrapperCallback {
 public:
  struct State {
    std::optional<std::uint32_t> percent;  // new since the last look
    std::vector<check::Problem> problems;  // likewise
    std::optional<std::uint32_t> error;
    bool ended = false;
  };

  explicit RenderEvents(platform::InterruptWaiter& waiter) : m_waiter(waiter) {}

  void OnRenderStart() override {}
  void OnRenderEnd() override {
    Change([](State& state) { state.ended = true; });
  }
  void OnRenderError(std::uint32_t code) override {
    Change([=](State& state) { state.error = code; });
  }
  void OnRenderProgress(std::uint32_t percentage) override {
    m_lastPercent = percentage;
    Change([=](State& state) { state.percent = percentage; });
  }
  /// From any thread.
  void Add(const check::Problem& problem) {
    Change([&](State& state) { state.problems.push_back(problem); });
  }

  State Take() {
    const std::scoped_lock lock(m_mutex);
    State taken = m_state;
    m_state.percent.reset();
    m_state.problems.clear();
    return taken;
  }
  /// All frames are in the movie, and it has been renamed into place. Only to be asked after the end.
  bool IsComplete() const {
    constexpr std::uint32_t kAll = 100;
    return m_lastPercent == kAll;
  }

 private:
  template <class Function>
  void Change(Function change) {
    {
      const std::scoped_lock lock(m_mutex);
      change(m_state);
    }
    m_waiter.Wake();
  }

  platform::InterruptWaiter& m_waiter;
  std::mutex m_mutex;
  State m_state;
  std::uint32_t m_lastPercent = 0;
};

}  // namespace vrx::host
