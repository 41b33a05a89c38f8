// A lock between processes by means of a lock file. Used around changes of shared files.
#pragma once

#include <cstdint>

#include "vrx/XpString.h"

namespace vrx::platform {

/// Waits until no other process, and no other lock of this one, holds the file at `path`; makes the file.
class FileLock {
 public:
  explicit FileLock(const XpString& path);
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;
  ~FileLock();
  /// False when the file cannot be made or locked.
  bool IsHeld() const { return m_handle >= 0; }

 private:
  std::int64_t m_handle = -1;
};

}  // namespace vrx::platform
