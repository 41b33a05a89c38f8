// Passes what happens in a render to the host's callback and keeps the host's exceptions away from the render
// thread. The wrapper owns one.
#pragma once

#include <atomic>
#include <cstdint>

#include "vrx/VRXWrapper.h"

namespace vrx::render {

class HostReporter {
 public:
  /// Not owned; null stops all calls.
  void SetCallback(IVRXWrapperCallback* callback) { m_callback = callback; }
  bool HasCallback() const { return m_callback.load() != nullptr; }

  // Each answers false when the host's callback threw.
  bool ReportStart() {
    return Call([](IVRXWrapperCallback& host) { host.OnRenderStart(); });
  }
  bool ReportProgress(std::uint32_t percentage) {
    return Call([=](IVRXWrapperCallback& host) { host.OnRenderProgress(percentage); });
  }
  bool ReportError(std::uint32_t code) {
    return Call([=](IVRXWrapperCallback& host) { host.OnRenderError(code); });
  }
  bool ReportEnd() {
    return Call([](IVRXWrapperCallback& host) { host.OnRenderEnd(); });
  }

 private:
  template <class Function>
  bool Call(Function function) {
    IVRXWrapperCallback* host = m_callback;
    if (host == nullptr) return true;
    try {
      function(*host);
      return true;
    } catch (...) {
      return false;
    }
  }

  std::atomic<IVRXWrapperCallback*> m_callback = nullptr;
};

}  // namespace vrx::render
