// The thread that a render runs on, one render at a time. The wrapper owns one.
#pragma once

#include <cstdint>
#include <functional>
#include <mutex>

#include "foundation/sync/XpThread.h"

namespace vrx::render {

class RenderThread {
 public:
  using Work = std::function<std::uint32_t()>;  // gives the thread's exit code

  RenderThread() = default;
  RenderThread(const RenderThread&) = delete;
  RenderThread& operator=(const RenderThread&) = delete;
  /// Waits for the work to end. May run on the thread itself, after its work.
  ~RenderThread();

  /// Runs `work`, which must not throw, on a new thread. Does nothing while earlier work runs; without a
  /// thread it answers false.
  bool Start(Work work);
  bool IsRunning() const;
  /// Called from inside the work: has `last` run on the thread after it, which may destroy this object, and
  /// answers true. On any other thread it does nothing and answers false.
  bool RunAfterWork(std::function<void()> last);

 private:
  static std::uint32_t Entry(void* self);

  mutable std::mutex m_mutex;  // guards all of these
  XpThread* m_thread = nullptr;
  Work m_work;
  std::function<void()> m_last;
  bool m_isRunning = false;
};

}  // namespace vrx::render
