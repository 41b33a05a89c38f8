// Waits for one or for all of several wait objects, and unlocks what it took at the end of the scope.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "foundation/sync/XpComboSyncObject.h"

/// It sleeps on an object that the caller provides: a semaphore, so that no wake of a watched object is lost.
/// All these objects must outlive it. For one thread.
class XpMultiWaiterBase {
 public:
  XpMultiWaiterBase(const XpMultiWaiterBase&) = delete;
  XpMultiWaiterBase& operator=(const XpMultiWaiterBase&) = delete;
  virtual ~XpMultiWaiterBase() = default;

  XpComboSyncObject& GetSleepObject() const { return *m_sleepObject; }
  XpResult GetResult() const { return m_result; }
  bool IsLocked() const { return m_locked; }

 protected:
  explicit XpMultiWaiterBase(XpComboSyncObject& sleepObject) : m_sleepObject(&sleepObject) {}

  XpComboSyncObject* m_sleepObject;
  XpResult m_result = XpOk;
  bool m_locked = false;
};

/// Takes the first object of the list that is free.
class XpMultiLockOne : public XpMultiWaiterBase {
 public:
  static constexpr std::int32_t kNone = -1;

  XpMultiLockOne(const std::vector<XpComboSyncObject*>& objects, XpComboSyncObject& sleepObject,
                 std::int32_t seconds);
  ~XpMultiLockOne() override;

  /// Index of the object that was taken; kNone without one.
  std::int32_t GetIndex() const { return m_index; }
  XpComboSyncObject* GetObject() const { return m_object; }

 private:
  bool TakeOne(const std::vector<XpComboSyncObject*>& objects);

  std::int32_t m_index = kNone;
  XpComboSyncObject* m_object = nullptr;
};

/// Takes all objects or none. It never holds some of them while it sleeps, so that two such waits with
/// objects in different orders don't block each other. An object that was not free is the first to be tried
/// again, so that giving the others back does not wake this waiter.
class XpMultiLockAll : public XpMultiWaiterBase {
 public:
  XpMultiLockAll(std::vector<XpComboSyncObject*> objects, XpComboSyncObject& sleepObject,
                 std::int32_t seconds);
  ~XpMultiLockAll() override;

 private:
  /// Tries all objects, beginning with `first`. Returns the index of the one that was not free, or the number
  /// of objects when all are taken.
  std::size_t TakeFrom(std::size_t first);

  std::vector<XpComboSyncObject*> m_objects;
};
