// The base of all locks, the recursive lock that guards shared state inside the process, and the guard that
// holds a lock for a scope.
#pragma once

#include <mutex>

#include "vrx/XpResult.h"

class XpSyncObject {
 public:
  virtual XpResult Lock() = 0;
  virtual XpResult Unlock() = 0;
  virtual XpResult TryLock() = 0;
  virtual ~XpSyncObject() = default;
};

class XpCriticalSection : public XpSyncObject {
 public:
  XpResult Lock() override {
    m_mutex.lock();
    return XpOk;
  }
  XpResult Unlock() override {
    m_mutex.unlock();
    return XpOk;
  }
  /// Always fails: this lock cannot be tried.
  XpResult TryLock() override { return XpErrLockNotSupported; }

 private:
  std::recursive_mutex m_mutex;
};

/// Locks in the constructor and, if that succeeded, unlocks in the destructor. A null lock is allowed.
class XpSingleLock {
 public:
  explicit XpSingleLock(XpSyncObject* object)
      : m_object(object), m_result(object == nullptr ? XpErrNoHandle : object->Lock()) {}
  XpSingleLock(const XpSingleLock&) = delete;
  XpSingleLock& operator=(const XpSingleLock&) = delete;
  virtual ~XpSingleLock() {
    if (m_object != nullptr && m_result == XpOk) m_object->Unlock();
  }
  XpResult GetResult() const { return m_result; }

 private:
  XpSyncObject* m_object;
  XpResult m_result;
};
