#include "src/manager/RenderThread.h"

#include <utility>

#include "vrx/XpResult.h"

namespace vrx::render {

RenderThread::~RenderThread() {
  // On the thread itself the join answers at once and leaves the thread object.
  if (XpThreadJoin(m_thread) == XpErrSelfWait) delete m_thread;
}

bool RenderThread::Start(Work work) {
  const std::scoped_lock lock(m_mutex);
  if (m_isRunning) return true;
  XpThreadJoin(m_thread);  // one that has ended
  m_work = std::move(work);
  m_isRunning = true;
  m_thread = XpThreadCreate(&Entry, this, 0);
  m_isRunning = m_thread != nullptr;
  return m_isRunning;
}

bool RenderThread::IsRunning() const {
  const std::scoped_lock lock(m_mutex);
  return m_isRunning;
}

bool RenderThread::RunAfterWork(std::function<void()> last) {
  const std::scoped_lock lock(m_mutex);
  if (!m_isRunning || !XpThreadIsCurrent(m_thread)) return false;
  m_last = std::move(last);
  return true;
}

std::uint32_t RenderThread::Entry(void* self) {
  auto* thread = static_cast<RenderThread*>(self);
  if (thread == nullptr) return XpErrThread;
  Work work;
  {
    const std::scoped_lock lock(thread->m_mutex);
    work = thread->m_work;
  }
  const std::uint32_t exitCode = work();
  std::function<void()> last;
  {
    const std::scoped_lock lock(thread->m_mutex);
    thread->m_isRunning = false;
    last = std::move(thread->m_last);
  }
  if (last) last();
  return exitCode;
}

}  // namespace vrx::render
