// A lock for many readers or one writer; waiting writers go first. Lock, Wait and TryLock take it for
// writing.
#pragma once

#include <thread>

#include "foundation/sync/XpComboSyncObject.h"

/// The writer may lock again for writing, but gets no read; a reader that asks for another read can sleep
/// behind a waiting writer for ever.
class XpRwLock : public XpComboSyncObject {
 public:
  XpResult Wait(std::int32_t seconds) override { return WaitWrite(seconds); }
  virtual XpResult WaitWrite(std::int32_t seconds);
  virtual XpResult WaitRead(std::int32_t seconds);
  virtual XpResult TryRead() { return WaitRead(0); }
  /// Lowers the caller's hold for writing, or else one for reading.
  XpResult Unlock() override;

 private:
  std::int32_t m_readers = 0;
  std::int32_t m_writerCount = 0;  // holds of the one writer
  std::int32_t m_waitingWriters = 0;
  std::thread::id m_owner;  // the writer
};
