#include "foundation/sync/XpMultiWaiter.h"

#include <utility>

namespace {

bool IsTaken(XpResult result) { return result == XpOk || result == XpErrAbandoned; }

}  // namespace

XpMultiLockOne::XpMultiLockOne(const std::vector<XpComboSyncObject*>& objects, XpComboSyncObject& sleepObject,
                               std::int32_t seconds)
    : XpMultiWaiterBase(sleepObject) {
  for (XpComboSyncObject* object : objects) object->Watch(*this);
  do {
    m_locked = TakeOne(objects);
    m_result = m_locked ? XpOk : m_sleepObject->Wait(seconds);
  } while (!m_locked && m_result == XpOk);
  for (XpComboSyncObject* object : objects) object->Unwatch(*this);
}

bool XpMultiLockOne::TakeOne(const std::vector<XpComboSyncObject*>& objects) {
  for (std::size_t i = 0; i < objects.size(); ++i) {
    if (!IsTaken(objects[i]->Wait(0))) continue;
    m_index = static_cast<std::int32_t>(i);
    m_object = objects[i];
    return true;
  }
  return false;
}

XpMultiLockOne::~XpMultiLockOne() {
  if (m_locked) m_object->Unlock();
}

XpMultiLockAll::XpMultiLockAll(std::vector<XpComboSyncObject*> objects, XpComboSyncObject& sleepObject,
                               std::int32_t seconds)
    : XpMultiWaiterBase(sleepObject), m_objects(std::move(objects)) {
  std::size_t first = 0;
  m_locked = m_objects.empty();
  while (!m_locked && m_result == XpOk) {
    m_objects[first]->Watch(*this);
    const std::size_t failed = TakeFrom(first);
    m_locked = failed == m_objects.size();
    if (failed == first) m_result = m_sleepObject->Wait(seconds);
    m_objects[first]->Unwatch(*this);
    if (!m_locked) first = failed;
  }
}

XpMultiLockAll::~XpMultiLockAll() {
  if (!m_locked) return;
  for (XpComboSyncObject* object : m_objects) object->Unlock();
}

std::size_t XpMultiLockAll::TakeFrom(std::size_t first) {
  const std::size_t count = m_objects.size();
  for (std::size_t taken = 0; taken < count; ++taken) {
    const std::size_t index = (first + taken) % count;
    if (IsTaken(m_objects[index]->Wait(0))) continue;
    while (taken > 0) m_objects[(first + --taken) % count]->GiveBack();
    return index;
  }
  return count;
}
