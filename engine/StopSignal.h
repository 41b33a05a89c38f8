// Ends long reads early, so that a cancel does not wait for a search through a long file. Used by whatever
// reads sources, and by the sequence.
#pragma once

#include <atomic>

namespace vrx::engine {

/// Once set it stays set.
class StopSignal {
 public:
  StopSignal() = default;
  StopSignal(const StopSignal&) = delete;
  StopSignal& operator=(const StopSignal&) = delete;

  /// Thread-safe.
  void Set() { m_isSet.store(true, std::memory_order_relaxed); }
  /// From now on the host's end flag sets the signal too; null ends that. Only where one thread watches and
  /// asks, since the flag lives no longer than the host's call.
  void Watch(const bool* hostFlag) { m_hostFlag = hostFlag; }
  bool IsSet() const {
    if (m_isSet.load(std::memory_order_relaxed)) return true;
    // The flag is in the host's memory, which has no other type than bool for it.
    if (m_hostFlag == nullptr ||
        !std::atomic_ref<bool>(const_cast<bool&>(*m_hostFlag)).load(std::memory_order_acquire)) {
      return false;
    }
    m_isSet.store(true, std::memory_order_relaxed);
    return true;
  }

 private:
  mutable std::atomic<bool> m_isSet = false;
  const bool* m_hostFlag = nullptr;
};

}  // namespace vrx::engine
