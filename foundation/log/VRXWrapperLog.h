// A small file that says when the wrapper was started, for finding faults in a host. Written only when a
// setting asks for it.
#pragma once

#include "foundation/file/XpFile.h"
#include "foundation/memory/XpSharedPtr.h"
#include "foundation/sync/XpCriticalSection.h"
#include "vrx/XpString.h"

class VRXWrapperLog {
 public:
  VRXWrapperLog() = default;
  VRXWrapperLog(const VRXWrapperLog&) = delete;
  VRXWrapperLog& operator=(const VRXWrapperLog&) = delete;
  ~VRXWrapperLog();

  /// Replaces the file when the user's setting "Debug" of the key VRXWrapper is not 0. Nothing is written
  /// when its folder, LBR/KRVOOutput/TKLX in the temporary folder, is not there or could be another user's.
  void Open();

 private:
  XpSharedPtr<XpFile> m_file;  // open until the end
  XpString m_path;
  XpCriticalSection m_lock;
};
