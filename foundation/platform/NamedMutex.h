// A mutex of the operating system that works between threads and, under a name, between the processes of one
// user. Used by XpMutex and the log.
#pragma once

#include <cstdint>
#include <memory>

#include "vrx/XpString.h"

namespace vrx::platform {

enum class MutexWait {
  Taken,
  Abandoned,  // taken, but its last owner ended without releasing it, or it had to be made again
  TimedOut,
  InvalidHandle,  // the mutex could not be made
  Failed,
};

/// Owned by threads, and recursive. Objects of one name share one mutex between all processes of the user
/// whose variable VRX_NAMED_OBJECT_PREFIX is the same. Any text is a name; the empty one gives a mutex that
/// this object alone has.
class NamedMutex {
 public:
  static constexpr std::int64_t kNoLimit = -1;

  explicit NamedMutex(const XpString& name);
  NamedMutex(const NamedMutex&) = delete;
  NamedMutex& operator=(const NamedMutex&) = delete;
  ~NamedMutex();

  bool IsValid() const { return m_block != nullptr; }
  /// Waits at most so many milliseconds, by the monotonic clock; kNoLimit waits without limit.
  MutexWait Wait(std::int64_t milliseconds);
  /// False when the caller is not the owner.
  bool Release();

  struct Block;

 private:
  std::shared_ptr<Block> m_block;
};

}  // namespace vrx::platform
