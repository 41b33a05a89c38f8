// A recursive lock that, under a name, also excludes the other processes of the user.
#pragma once

#include <thread>

#include "foundation/platform/NamedMutex.h"
#include "foundation/sync/XpComboSyncObject.h"

class XpMutex : public XpComboSyncObject {
 public:
  /// Not owned at first. No name makes a mutex for this process alone.
  explicit XpMutex(const XpString& name = XpString()) : m_system(name) {}

  /// Accepts only kNoLimit and 0; XpErrNoHandle for any other time. XpErrAbandoned when the last owner, a
  /// thread or a process, ended without unlocking: the caller then owns the mutex all the same.
  XpResult Wait(std::int32_t seconds) override;
  /// Does nothing, and succeeds, when the caller isn't the owner.
  XpResult Unlock() override;

 private:
  std::thread::id m_owner;
  std::int32_t m_recursionCount = 0;
  vrx::platform::NamedMutex m_system;
};
