// Waits for one or for all of several wait objects, and unlocks at the end of the scope what it got.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "foundation/sync/XpComboSyncObject.h"

/// While it waits it sleeps on an object of its caller's, a semaphore, so that each wake of a watched object
/// counts. The objects and the sleep object outlive it. One thread uses it.
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

/// Takes the first object of the list that can be had.
class XpMultiLockOne : public XpMultiWaiterBase {
 public:
  static constexpr std::int32_t kNone = -1;

  XpMultiLockOne(const std::vector<XpComboSyncObject*>& objects, XpComboSyncObject& sleepObject,
                 std::int32_t seconds);
  ~XpMultiLockOne() override;

  /// Of the object got; kNone without one.
  std::int32_t GetIndex() const { return m_index; }
  XpComboSyncObject* GetObject() const { return m_object; }

 private:
  bool TakeOne(const std::vector<XpComboSyncObject*>& objects);

  std::int32_t m_index = kNone;
  XpComboSyncObject* m_object = nullptr;
};

/// Takes all objects or none. It never holds some of them while it sleeps, so that two such waits with
/// objects in different orders don't block each other. An object that failed is the first to be tried again:
/// giving the others back then wakes nobody in vain.
class XpMultiLockAll : public XpMultiWaiterBase {
 public:
  XpMultiLockAll(std::vector<XpComboSyncObject*> objects, XpComboSyncObject& sleepObject,
                 std::int32_t seconds);
  ~XpMultiLockAll() override;

 private:
  /// Tries the objects round the list from `first`; the index of the one that could not be had, or their
  /// number when all are taken.
  std::size_t TakeFrom(std::size_t first);

  std::vector<XpComboSyncObject*> m_objects;
};
