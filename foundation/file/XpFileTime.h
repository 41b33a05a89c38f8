// The three times of a file that is kept in memory.
#pragma once

#include "foundation/time/XpDateTime.h"

class XpFileTime {
 public:
  const XpDateTime& GetCreation() const { return m_creation; }
  const XpDateTime& GetModification() const { return m_modification; }
  const XpDateTime& GetAccess() const { return m_access; }

 protected:
  XpFileTime() { StampAll(); }
  ~XpFileTime() = default;

  /// Set to the local time now: all three, the last two, the last.
  void StampAll();
  void StampModification();
  void StampAccess();

  XpDateTime m_creation;
  XpDateTime m_modification;
  XpDateTime m_access;
};
