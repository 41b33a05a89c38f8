// Threads with an exit code, as the render thread and the decoder use them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "vrx/XpResult.h"

using XpThreadEntry = std::uint32_t (*)(void* argument);

/// The thread that joins owns the object. Deleting it without a join detaches the thread.
class XpThread {
 public:
  struct State;

  explicit XpThread(std::shared_ptr<State> state) : m_state(std::move(state)) {}
  XpThread(const XpThread&) = delete;
  XpThread& operator=(const XpThread&) = delete;
  virtual ~XpThread();

  const std::shared_ptr<State>& GetState() const { return m_state; }

 private:
  std::shared_ptr<State> m_state;
};

/// Starts a thread. `stackSize` in bytes, 0 for the default. Null when memory or the system fails; the caller
/// must do without the thread.
XpThread* XpThreadCreate(XpThreadEntry entry, void* argument, std::size_t stackSize);

/// Waits for the thread's end, deletes `thread` and returns the exit code. XpErrNoHandle for null;
/// XpErrSelfWait on the thread itself, and `thread` stays.
std::uint32_t XpThreadJoin(XpThread* thread);

/// As XpThreadJoin for a field that several threads may join through; clears the field.
std::uint32_t XpThreadJoinShared(XpThread** field);

/// True if the caller is that thread; false for null.
bool XpThreadIsCurrent(const XpThread* thread);

void XpSleep(std::uint32_t milliseconds);

/// Milliseconds of a clock that only runs forward; wraps after 49.7 days.
std::uint32_t XpTickCount();
