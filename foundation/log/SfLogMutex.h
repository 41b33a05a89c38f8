// The lock that keeps log entries of several processes apart. Used by the logger; a base class leaves room
// for other kinds of locks.
#pragma once

#include <cstdint>

#include "foundation/platform/NamedMutex.h"
#include "vrx/XpResult.h"
#include "vrx/XpString.h"

class SfLogSyncObject {
 public:
  explicit SfLogSyncObject(const XpString& name) : m_handle(name), m_name(name) {}
  SfLogSyncObject(const SfLogSyncObject&) = delete;
  SfLogSyncObject& operator=(const SfLogSyncObject&) = delete;
  virtual ~SfLogSyncObject() = default;

  const XpString& GetName() const { return m_name; }

 protected:
  vrx::platform::NamedMutex m_handle;

 private:
  XpString m_name;
};

/// A mutex between the processes of one user.
class SfLogMutex final : public SfLogSyncObject {
 public:
  static constexpr std::int64_t kPatienceMs = 1000;

  using SfLogSyncObject::SfLogSyncObject;

  /// XpErrTimeout after so many milliseconds, XpErrFailed when there is no such mutex. A mutex whose owner
  /// has died is taken over.
  XpResult Lock(std::int64_t patienceMs = kPatienceMs);
  /// XpErrFailed when the caller is not the owner.
  XpResult Unlock();
};
