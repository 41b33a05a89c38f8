#include "foundation/file/XpFileTime.h"

#include <ctime>

namespace {

/// Every read and write stamps, so the calendar is asked only when the second has changed.
XpDateTime Now() {
  static thread_local std::time_t second = -1;
  static thread_local XpDateTime date;
  const std::time_t now = std::time(nullptr);
  if (now != second) {
    date = XpDateTime::GetCurrentTime();
    second = now;
  }
  return date;
}

}  // namespace

void XpFileTime::StampAll() { m_creation = m_modification = m_access = Now(); }
void XpFileTime::StampModification() { m_modification = m_access = Now(); }
void XpFileTime::StampAccess() { m_access = Now(); }
