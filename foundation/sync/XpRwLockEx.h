// A read-write lock that knows its readers: the writer may also read, and a lone reader may rise to writer.
#pragma once

#include <thread>
#include <utility>
#include <vector>

#include "foundation/sync/XpComboSyncObject.h"

/// Lock, Wait and TryLock take it for writing. Waiting writers go before new readers. Two readers that both
/// want to write wait for each other; a time-out is their way out.
class XpRwLockEx : public XpComboSyncObject {
 public:
  XpResult Wait(std::int32_t seconds) override { return WaitWrite(seconds); }
  virtual XpResult WaitWrite(std::int32_t seconds);
  /// The writer's own read counts as a further hold for writing.
  virtual XpResult WaitRead(std::int32_t seconds);
  virtual XpResult TryRead() { return WaitRead(0); }
  /// Lowers the caller's hold for writing, or else the caller's hold for reading.
  XpResult Unlock() override;

 private:
  using Reader = std::pair<std::thread::id, std::int32_t>;

  bool TakeRead();
  bool TakeWrite();
  std::vector<Reader>::iterator FindCaller();

  std::int32_t m_waitingWriters = 0;
  std::vector<Reader> m_readers;  // each with the number of its holds
  std::thread::id m_owner;        // the writer
  std::int32_t m_writerCount = 0;
};
