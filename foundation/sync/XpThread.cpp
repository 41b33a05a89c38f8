#include "foundation/sync/XpThread.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <new>
#include <thread>

#include "foundation/platform/Threads.h"
#include "foundation/sync/XpCriticalSection.h"

/// Lives as long as the XpThread object, the thread or a waiter needs it.
struct XpThread::State {
  XpThreadEntry entry = nullptr;
  void* argument = nullptr;
  vrx::platform::ThreadHandle handle = 0;
  std::uint32_t exitCode = 0;  // written by the thread, read after the join

  std::mutex mutex;
  std::condition_variable changed;
  enum class Join { None, Running, Done } join = Join::None;

  /// The first waiter joins the system's thread, the others wait for it.
  std::uint32_t Wait() {
    std::unique_lock lock(mutex);
    if (join == Join::None) {
      join = Join::Running;
      lock.unlock();
      vrx::platform::JoinThread(handle);
      lock.lock();
      join = Join::Done;
      changed.notify_all();
    } else {
      changed.wait(lock, [this] { return join == Join::Done; });
    }
    return exitCode;
  }
};

namespace {

// The system reuses the handles of joined threads, so a handle does not identify the running thread.
thread_local const XpThread::State* currentThread = nullptr;

void RunEntry(void* pointer) {
  const std::unique_ptr<std::shared_ptr<XpThread::State>> state(
      static_cast<std::shared_ptr<XpThread::State>*>(pointer));
  currentThread = state->get();
  (*state)->exitCode = (*state)->entry((*state)->argument);
}

XpCriticalSection& JoinLock() {
  static XpCriticalSection lock;
  return lock;
}

}  // namespace

XpThread::~XpThread() {
  const std::scoped_lock lock(m_state->mutex);
  if (m_state->join == State::Join::None) {
    vrx::platform::DetachThread(m_state->handle);
    m_state->join = State::Join::Done;
  }
}

XpThread* XpThreadCreate(XpThreadEntry entry, void* argument, std::size_t stackSize) try {
  auto state = std::make_shared<XpThread::State>();
  state->entry = entry;
  state->argument = argument;
  auto share = std::make_unique<std::shared_ptr<XpThread::State>>(state);
  // Allocated first: nothing may fail after the thread runs.
  void* memory = ::operator new(sizeof(XpThread));
  if (!vrx::platform::StartThread(RunEntry, share.get(), stackSize, state->handle)) {
    ::operator delete(memory);
    return nullptr;
  }
  share.release();
  return new (memory) XpThread(std::move(state));
} catch (const std::bad_alloc&) {
  return nullptr;
}

std::uint32_t XpThreadJoin(XpThread* thread) {
  if (thread == nullptr) return XpErrNoHandle;
  if (XpThreadIsCurrent(thread)) return XpErrSelfWait;
  const std::uint32_t exitCode = thread->GetState()->Wait();
  delete thread;
  return exitCode;
}

std::uint32_t XpThreadJoinShared(XpThread** field) {
  std::shared_ptr<XpThread::State> state;
  {
    XpSingleLock lock(&JoinLock());
    if (*field == nullptr) return XpErrNoHandle;
    if (XpThreadIsCurrent(*field)) return XpErrSelfWait;
    state = (*field)->GetState();
  }
  const std::uint32_t exitCode = state->Wait();
  XpSingleLock lock(&JoinLock());
  if (*field != nullptr && (*field)->GetState() == state) {
    delete *field;
    *field = nullptr;
  }
  return exitCode;
}

bool XpThreadIsCurrent(const XpThread* thread) {
  return thread != nullptr && currentThread == thread->GetState().get();
}

void XpSleep(std::uint32_t milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

std::uint32_t XpTickCount() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<std::uint32_t>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}
