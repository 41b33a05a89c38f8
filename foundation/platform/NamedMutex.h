// A mutex of the operating system that works between threads and, under a name, between the processes of one
// user. XpMutex and the log stand on it.
#pragma once

#include <cstdint>
#include <memory>

#include "vrx/XpString.h"

namespace vrx::platform {

enum class MutexWait {
  Taken,
  Abandoned,  // taken, but its last owner ended without releasing it
  TimedOut,
  InvalidHandle,  // the mutex could not be made
  Failed,
};

/// Owned by threads, and recursive. Objects of one name share one mutex. The name holds any text but the
/// empty one, which stands for a mutex of this object's own.
class NamedMutex {
 public:
  static constexpr std::int64_t kNoLimit = -1;

  explicit NamedMutex(const XpString& name);
  NamedMutex(const NamedMutex&) = delete;
  NamedMutex& operator=(const NamedMutex&) = delete;
  ~NamedMutex();

  bool IsValid() const { return m_block != nullptr; }
  /// Waits at most so many milliseconds, kNoLimit for as long as it takes.
  MutexWait Wait(std::int64_t milliseconds);
  /// False when the caller is not the owner.
  bool Release();

  struct Block;

 private:
  std::shared_ptr<Block> m_block;
};

/// Takes the name out of the system; who has the mutex open keeps it, and the next one makes a new one.
void RemoveNamedMutex(const XpString& name);

}  // namespace vrx::platform
