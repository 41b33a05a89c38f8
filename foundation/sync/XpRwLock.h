// Locks for many readers or one writer; waiting writers go first. XpRwLock counts its readers, XpRwLockEx
// knows them: there the writer may also read, and a lone reader may rise to writer.
#pragma once

#include <cstdint>
#include <thread>
#include <utility>
#include <vector>

#include "foundation/sync/XpComboSyncObject.h"

/// What both locks have in common. Lock, Wait and TryLock take the lock for writing; the writer may do so
/// again.
class XpRwLockBase : public XpComboSyncObject {
 public:
  XpResult Wait(std::int32_t seconds) override { return WaitWrite(seconds); }
  virtual XpResult WaitWrite(std::int32_t seconds);
  virtual XpResult WaitRead(std::int32_t seconds);
  virtual XpResult TryRead() { return WaitRead(0); }
  /// Lowers the caller's hold for writing, or else one for reading.
  XpResult Unlock() override;

 protected:
  // All are called under the inner lock.
  virtual bool TakeRead();
  virtual bool HasReaders() const = 0;
  /// True when there are no readers that a writer must wait for.
  virtual bool MayWrite() const = 0;
  virtual void AddReader() = 0;
  virtual void RemoveReader() = 0;

  bool IsWriter() const { return m_writerCount > 0 && m_owner == std::this_thread::get_id(); }

  std::int32_t m_writerCount = 0;  // holds of the one writer

 private:
  bool TakeWrite();

  std::int32_t m_waitingWriters = 0;
  std::thread::id m_owner;  // the writer
};

/// The writer gets no read. A reader that asks for another read while a writer waits can sleep for ever.
class XpRwLock : public XpRwLockBase {
 protected:
  bool HasReaders() const override { return m_readers > 0; }
  bool MayWrite() const override { return m_readers == 0; }
  void AddReader() override { ++m_readers; }
  void RemoveReader() override {
    if (m_readers > 0) --m_readers;
  }

 private:
  std::int32_t m_readers = 0;
};

/// The writer's own read counts as a further hold for writing. Two readers that both want to write wait for
/// each other; a time-out is their way out. Unlock lowers only holds of the caller.
class XpRwLockEx : public XpRwLockBase {
 protected:
  bool TakeRead() override;
  bool HasReaders() const override { return !m_readers.empty(); }
  bool MayWrite() const override;
  void AddReader() override;
  void RemoveReader() override;

 private:
  using Reader = std::pair<std::thread::id, std::int32_t>;

  std::vector<Reader>::iterator FindCaller();

  std::vector<Reader> m_readers;  // each with the number of its holds
};
